#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace norava {

// Tells when something in a set of folders is made, removed, renamed or written. Where the system
// cannot tell, or for a folder that it does not watch, NeedsPolling is true and the owner looks for
// itself from time to time. One thread owns a watch; Wake alone is for others.
class CFolderWatch {
  public:
    CFolderWatch();
    ~CFolderWatch();
    CFolderWatch(const CFolderWatch&) = delete;
    CFolderWatch& operator=(const CFolderWatch&) = delete;

    // Watches exactly these folders from now on; what was watched before goes on without a gap.
    void SetFolders(const std::vector<std::string>& folders);
    [[nodiscard]] bool NeedsPolling() const;

    struct Changes {
        std::vector<std::string> folders;  // those in which something happened
        bool everything = false;           // more happened than the system kept
        [[nodiscard]] bool Any() const { return everything || !folders.empty(); }
    };
    // Waits for changes, for Wake, or for the time to pass.
    [[nodiscard]] Changes Wait(std::chrono::milliseconds longest);

    // Ends the wait that goes on, or the next one. Any thread.
    void Wake();

  private:
    struct System;
    std::unique_ptr<System> system;
};

}  // namespace norava
