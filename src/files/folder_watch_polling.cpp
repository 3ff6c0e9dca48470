#ifndef __linux__

#include <condition_variable>
#include <mutex>

#include "files/folder_watch.h"

// Systems for which nobody has written a watch yet: the owner looks for itself.

namespace norava {

struct CFolderWatch::System {
    std::mutex mutex;
    std::condition_variable woken;
    bool wake = false;
};

CFolderWatch::CFolderWatch() : system(std::make_unique<System>()) {}
CFolderWatch::~CFolderWatch() = default;

void CFolderWatch::SetFolders(const std::vector<std::string>&) {}

bool CFolderWatch::NeedsPolling() const {
    return true;
}

CFolderWatch::Changes CFolderWatch::Wait(std::chrono::milliseconds longest) {
    std::unique_lock lock(system->mutex);
    system->woken.wait_for(lock, longest, [this] { return system->wake; });
    system->wake = false;
    return {};
}

void CFolderWatch::Wake() {
    const std::lock_guard lock(system->mutex);
    system->wake = true;
    system->woken.notify_one();
}

}  // namespace norava

#endif
