// The panel of the built module in a window on a display server of its own: how long it takes to
// open, and what it costs while it is open. Usage: norava_panel_bench [SCALE], 1 to 3.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>

#include "gui/x11_server.h"
#include "host/vst_host.h"

namespace norava {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kOpenings = 30;
constexpr int kRate = 48000;
constexpr int kBlock = 512;
constexpr auto kIdlePeriod = std::chrono::milliseconds(16);
constexpr auto kWatched = std::chrono::seconds(10);
constexpr CPoint kInTheLowerRight{850, 525};  // the last rows that are copied to the screen

double Milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// A host with a window; its screen says that it is so many times as fine.
class Host {
  public:
    explicit Host(int fineness) : scale(fineness) {
        const std::string resources = "Xft.dpi: " + std::to_string(96 * scale) + "\n";
        xcb_change_property(desktop.raw, XCB_PROP_MODE_REPLACE, desktop.root,
                            XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 8,
                            static_cast<uint32_t>(resources.size()), resources.data());
        parent = desktop.MakeWindow({0, 0, 855 * scale, 532 * scale});
        instance.Start(kRate);
    }

    // Until the server holds the whole picture.
    Clock::duration Open() {
        const auto start = Clock::now();
        if (instance.Dispatch(vst::effEditOpen, 0, 0,
                              reinterpret_cast<void*>(std::uintptr_t{parent})) != 1)
            std::abort();
        do
            instance.Dispatch(vst::effEditIdle);
        while (!IsPainted() && Clock::now() - start < std::chrono::seconds(5));
        return Clock::now() - start;
    }
    void Close() {
        instance.Dispatch(vst::effEditClose);
        const uint32_t black = 0;
        xcb_change_window_attributes(desktop.raw, parent, XCB_CW_BACK_PIXEL, &black);
        do {
            xcb_clear_area(desktop.raw, 0, parent, 0, 0, 0, 0);
            desktop.Synchronise();
        } while (IsPainted());
    }

    // Share of a core that the user interface's thread takes while another one plays.
    double ShareWhile(bool playing) {
        std::atomic<bool> ends = false;
        std::thread audio([&] { Play(playing, ends); });
        Idle(std::chrono::seconds(2));  // lamps light up, strings begin to move
        const double before = ThreadSeconds();
        const auto start = Clock::now();
        Idle(kWatched);
        const double share = (ThreadSeconds() - before) * 1e3 / Milliseconds(Clock::now() - start);
        ends = true;
        audio.join();
        return share;
    }

  private:
    bool IsPainted() {
        const CPoint at{kInTheLowerRight.x * scale, kInTheLowerRight.y * scale};
        return (desktop.Picture({at.x, at.y, 1, 1}).at(0) & 0xFFFFFFu) != 0;
    }
    void Idle(Clock::duration time) {
        for (const auto end = Clock::now() + time; Clock::now() < end;) {
            instance.Dispatch(vst::effEditIdle);
            std::this_thread::sleep_for(kIdlePeriod);
        }
    }
    // A chord of four, struck again twice a second: the strings never rest.
    void Play(bool notes, const std::atomic<bool>& ends) {
        std::vector<float> left(kBlock), right(kBlock);
        auto due = Clock::now();
        for (int block = 0; !ends; ++block) {
            if (notes && block % (kRate / kBlock / 2) == 0)
                instance.Send({{0, {0x90, 45, 110}},
                               {0, {0x90, 52, 110}},
                               {0, {0x90, 57, 110}},
                               {0, {0x90, 61, 110}}});
            instance.Process(left.data(), right.data(), kBlock);
            due += std::chrono::microseconds(1'000'000LL * kBlock / kRate);
            std::this_thread::sleep_until(due);
        }
    }

    int scale;
    test::Desktop desktop;
    VstInstance instance;
    xcb_window_t parent = 0;
};

int Run(int scale) {
    const test::Server server("-screen 0 5130x3192x24");
    if (!server.IsRunning()) {
        std::fputs("norava_panel_bench: Xvfb is not installed\n", stderr);
        return 2;
    }
    Host host(scale);
    const double first = Milliseconds(host.Open());
    std::vector<double> later;
    for (int i = 0; i < kOpenings; ++i) {
        host.Close();
        later.push_back(Milliseconds(host.Open()));
    }
    std::sort(later.begin(), later.end());
    std::printf(
        "%d %%: opens in %.0f ms for the first time, then %.1f ms (median of %d, worst %.1f)\n",
        100 * scale, first, later[kOpenings / 2], kOpenings, later.back());
    const double silent = host.ShareWhile(false);
    const double moving = host.ShareWhile(true);
    host.Close();
    const double loop = host.ShareWhile(false);
    std::printf(
        "%d %%: open and silent %.2f %% of a core, with moving strings %.2f %%; the host's loop "
        "alone %.2f %%\n",
        100 * scale, 100.0 * silent, 100.0 * moving, 100.0 * loop);
    return 0;
}

}  // namespace
}  // namespace norava

int main(int count, char** words) {
    const int scale = count > 1 ? std::clamp(words[1][0] - '0', 1, 3) : 1;
    return norava::Run(scale);
}
