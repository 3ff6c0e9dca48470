#ifdef __linux__

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>

#include "files/folder_watch.h"

namespace norava {

namespace {

// Both are negative in a process that has used up its handles.
int NewEvents() {
    return inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
}
int NewWake() {
    return eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
}

}  // namespace

struct CFolderWatch::System {
    ~System() {
        if (events >= 0) close(events);
        if (wake >= 0) close(wake);
    }
    Changes Read();

    int events = NewEvents();
    std::atomic<int> wake = NewWake();
    std::atomic<bool> woken = false;
    std::map<int, std::set<std::string>> folders;  // watch -> its folders: links may share one
    bool incomplete = false;
};

CFolderWatch::CFolderWatch() : system(std::make_unique<System>()) {}
CFolderWatch::~CFolderWatch() = default;

void CFolderWatch::SetFolders(const std::vector<std::string>& wanted) {
    constexpr std::uint32_t kMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                    IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF |
                                    IN_ONLYDIR;
    std::map<int, std::set<std::string>> folders;
    if (system->events < 0) system->events = NewEvents();
    system->incomplete = false;
    for (const std::string& folder : wanted) {
        // Asking again for a folder that is watched gives its old number; for another folder that
        // took the old one's name, a new one.
        const int number = inotify_add_watch(system->events, folder.c_str(), kMask);
        if (number < 0) {
            system->incomplete = true;
            continue;
        }
        folders[number].insert(folder);
    }
    for (const auto& [number, names] : system->folders) {
        if (!folders.contains(number)) inotify_rm_watch(system->events, number);
    }
    system->folders = std::move(folders);
}

bool CFolderWatch::NeedsPolling() const {
    return system->incomplete || system->events < 0;
}

CFolderWatch::Changes CFolderWatch::System::Read() {
    Changes changes;
    std::set<std::string> changed;
    alignas(inotify_event) std::array<char, 16384> buffer;
    for (;;) {
        const ssize_t length = read(events, buffer.data(), buffer.size());
        if (length <= 0) break;
        for (const char* at = buffer.data(); at < buffer.data() + length;) {
            const auto* const event = reinterpret_cast<const inotify_event*>(at);
            at += sizeof(inotify_event) + event->len;
            if ((event->mask & IN_Q_OVERFLOW) != 0) changes.everything = true;
            const auto found = folders.find(event->wd);
            if (found != folders.end()) changed.insert(found->second.begin(), found->second.end());
        }
    }
    changes.folders.assign(changed.begin(), changed.end());
    return changes;
}

// While there is no handle for `wake`, the flag is looked at from time to time. Wake sets it before
// it looks for the handle, and here they come the other way round: one of them is always seen.
CFolderWatch::Changes CFolderWatch::Wait(std::chrono::milliseconds longest) {
    constexpr std::chrono::milliseconds kWithoutWake(50);
    std::array<pollfd, 2> sources{};
    do {
        if (system->wake < 0) system->wake = NewWake();
        if (system->woken.exchange(false)) longest = {};
        const auto step = system->wake < 0 ? std::min(longest, kWithoutWake) : longest;
        sources = {{{system->wake, POLLIN, 0}, {system->events, POLLIN, 0}}};
        poll(sources.data(), sources.size(), static_cast<int>(step.count()));
        longest -= step;
    } while (longest.count() > 0 && sources[1].revents == 0);
    if ((sources[0].revents & POLLIN) != 0) {
        std::uint64_t count = 0;
        (void)!read(system->wake, &count, sizeof count);
    }
    return (sources[1].revents & POLLIN) != 0 ? system->Read() : Changes{};
}

void CFolderWatch::Wake() {
    system->woken = true;
    const std::uint64_t one = 1;
    if (system->wake >= 0) (void)!write(system->wake, &one, sizeof one);
}

}  // namespace norava

#endif
