#include "render/progress.h"

#include <unistd.h>

#include <cstdio>
#include <numeric>

namespace norava {

namespace {

constexpr int kBarWidth = 40;
constexpr auto kDrawInterval = std::chrono::milliseconds(100);

void DrawBar(double part) {
    const int filled = int(part * kBarWidth);
    const std::string bar =
        std::string(std::size_t(filled), '#') + std::string(std::size_t(kBarWidth - filled), '-');
    std::fprintf(stderr, "\r[%s] %3.0f %%", bar.c_str(), 100.0 * part);
    std::fflush(stderr);
}

}  // namespace

Progress::Progress(std::size_t songs, bool silent)
    : parts_(songs, 0.0), silent_(silent), terminal_(isatty(STDERR_FILENO) != 0) {}

void Progress::Begin(const std::string& name) {
    if (silent_ || terminal_) return;
    const std::scoped_lock lock(mutex_);
    std::fprintf(stderr, "rendering %s\n", name.c_str());
}

void Progress::Update(std::size_t song, double part) {
    if (silent_ || !terminal_) return;
    const std::scoped_lock lock(mutex_);
    parts_[song] = part;
    const auto now = std::chrono::steady_clock::now();
    if (now - lastDrawn_ < kDrawInterval) return;
    lastDrawn_ = now;
    DrawBar(std::accumulate(parts_.begin(), parts_.end(), 0.0) / double(parts_.size()));
}

void Progress::End() const {
    if (silent_ || !terminal_) return;
    constexpr const char* kClearLine = "\r\033[K";
    std::fputs(kClearLine, stderr);
}

}  // namespace norava
