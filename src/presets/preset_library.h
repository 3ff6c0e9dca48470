#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "files/folder_watch.h"
#include "framework/nonblocking.h"
#include "presets/factory_bank.h"
#include "presets/library_scanner.h"

namespace norava {

// Where a library's programs lie and what stands in for them at the first start.
struct LibraryPlace {
    std::string root{};                      // full path, no '/' at its end; empty: no library
    std::string extension = "norava";        // of program files, without '.'
    std::span<const FactoryProgram> bank{};  // written when there is no root; outlives the library
};

// The programs of one root folder in memory, shared by all instances of the process. A thread of
// its own reads the folders, watches them, and publishes each new state as a snapshot; it ends with
// the last owner. The audio thread reads the newest snapshot without waiting for anything, and
// never is the one that frees an old one.
class PresetLibrary {
  public:
    // The library of `place.root`, made when nobody has it yet. Null for an empty or too long root.
    static std::shared_ptr<PresetLibrary> Open(const LibraryPlace& place);

    explicit PresetLibrary(const LibraryPlace& place);
    ~PresetLibrary();  // waits for the thread
    PresetLibrary(const PresetLibrary&) = delete;
    PresetLibrary& operator=(const PresetLibrary&) = delete;

    // Waits until the folders are listed, and then up to `longest` until the programs are read too.
    void WaitUntilRead(std::chrono::milliseconds longest);

    // The newest snapshot, never null. Any thread but the audio thread.
    std::shared_ptr<const LibrarySnapshot> Get() const;
    // Moves with every new snapshot. Any thread.
    std::uint32_t Revision() const { return revision.load(std::memory_order_acquire); }

    // Looks at the root and at one category (its folder's full path; all of them for an empty one)
    // at once. Any thread that may wait.
    void Refresh(const std::string& folder);
    // Gives the built-in bank another chance to become files before something is saved beside it.
    void PrepareForSaving();

    // Holds the newest snapshot for the time of a few look-ups. Any thread, the audio thread above
    // all: neither waits nor takes memory. Short-lived: old snapshots wait for all readers.
    class Reader {
      public:
        explicit Reader(const PresetLibrary& source) NORAVA_NONBLOCKING;
        ~Reader();
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;
        const LibrarySnapshot& operator*() const { return *snapshot; }
        const LibrarySnapshot* operator->() const { return snapshot; }

      private:
        const PresetLibrary& library;
        const LibrarySnapshot* snapshot;
    };

  private:
    void Run();
    void Begin();
    void ReadRest();
    void LookAgain(const CFolderWatch::Changes& changes);
    void WaitForChanges();
    void Publish();       // scan lock held
    void WatchFolders();  // the thread's own
    void FreeRetired();
    std::chrono::milliseconds PollingInterval() const;

    const LibraryPlace place;

    std::mutex scanMutex;
    LibraryScanner scanner;
    std::atomic<int> refreshesWaiting = 0;
    std::atomic<bool> isFromBank = false;
    std::atomic<std::int64_t> lastScanMilliseconds = 0;

    mutable std::mutex publishMutex;
    std::condition_variable published;
    std::shared_ptr<const LibrarySnapshot> newest;
    std::vector<std::shared_ptr<const LibrarySnapshot>> retired;
    std::atomic<bool> isListed = false;

    std::atomic<const LibrarySnapshot*> current;
    mutable std::atomic<int> numReaders = 0;
    std::atomic<std::uint32_t> revision = 0;

    CFolderWatch watch;
    std::atomic<bool> ending = false;
    std::thread thread;
};

}  // namespace norava
