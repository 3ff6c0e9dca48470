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

    // Each waits for one stage of reading the library, and gives up a fixed time after it was made,
    // when a drive does not answer. Any thread that may wait.
    void WaitForFirst() const;     // the first program of the first category: 2 s
    void WaitUntilListed() const;  // the names of all categories and programs: 5 s
    void WaitUntilRead() const;    // all programs, unless they are very many: 0.2 s

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
    using Clock = std::chrono::steady_clock;

    template <typename Condition>
    void WaitFor(std::chrono::milliseconds longest, Condition condition) const;
    void Run();
    void Begin();
    void ReadRest();
    void ClearUp();
    void WaitForChanges();
    void LookAgain(const CFolderWatch::Changes& changes);
    void Publish();  // scan lock held
    void FreeRetired();
    std::chrono::milliseconds PollingInterval() const;

    const LibraryPlace place;
    const Clock::time_point made = Clock::now();

    std::mutex scanMutex;
    LibraryScanner scanner;
    std::atomic<int> refreshesWaiting = 0;
    std::atomic<bool> isFromBank = false;
    std::atomic<std::int64_t> lastScanMilliseconds = 0;

    mutable std::mutex publishMutex;
    mutable std::condition_variable published;
    std::shared_ptr<const LibrarySnapshot> newest;
    std::vector<std::shared_ptr<const LibrarySnapshot>> retired;
    bool isPublished = false;

    std::atomic<const LibrarySnapshot*> current;
    mutable std::atomic<int> numReaders = 0;
    std::atomic<std::uint32_t> revision = 0;

    CFolderWatch watch;
    std::atomic<bool> ending = false;
    std::thread thread;
};

}  // namespace norava
