#include "presets/preset_library.h"

#include <algorithm>
#include <map>

#include "files/file_manager.h"
#include "files/text_buffer.h"
#include "presets/first_start.h"
#include "presets/quiet_thread.h"

namespace norava {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int kBatch = 200;             // programs read while others wait for the scanner
constexpr milliseconds kProgress(500);  // between snapshots of a library being read
constexpr int kPublishingShare = 10;    // at most a tenth of the time goes into them
constexpr milliseconds kSettling(30);   // after a change, for those that come with it
constexpr milliseconds kLongestSettling(300);
constexpr milliseconds kPolling(2000);         // between looks where the system cannot tell
constexpr int kPollingShare = 20;              // at most a twentieth of the time is spent looking
constexpr milliseconds kLongestListing(5000);  // a drive that does not answer
constexpr milliseconds kResting(3'600'000);

std::mutex& RegistryMutex() {
    static std::mutex mutex;
    return mutex;
}

milliseconds Since(Clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

}  // namespace

std::shared_ptr<PresetLibrary> PresetLibrary::Open(const LibraryPlace& place) {
    static std::map<std::string, std::weak_ptr<PresetLibrary>> libraries;
    if (place.root.empty() || place.root.size() >= kPathBufferBytes) return nullptr;
    const std::lock_guard lock(RegistryMutex());
    std::erase_if(libraries, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<PresetLibrary>& entry = libraries[place.root];
    std::shared_ptr<PresetLibrary> library = entry.lock();
    if (!library) entry = library = std::make_shared<PresetLibrary>(place);
    return library;
}

PresetLibrary::PresetLibrary(const LibraryPlace& libraryPlace)
    : place(libraryPlace),
      scanner(place.root, place.extension),
      newest(std::make_shared<const LibrarySnapshot>()),
      current(newest.get()),
      thread(StartQuietThread([this] { Run(); })) {}

PresetLibrary::~PresetLibrary() {
    ending = true;
    watch.Wake();
    thread.join();
}

// Readers

// Both the count and the pointer are sequentially consistent: a reader that the publisher does not
// see counted afterwards finds the new pointer.
PresetLibrary::Reader::Reader(const PresetLibrary& source) NORAVA_NONBLOCKING : library(source) {
    library.numReaders.fetch_add(1);
    snapshot = library.current.load();
}

PresetLibrary::Reader::~Reader() {
    library.numReaders.fetch_sub(1);
}

void PresetLibrary::FreeRetired() {
    std::vector<std::shared_ptr<const LibrarySnapshot>> free;
    const std::lock_guard lock(publishMutex);
    if (numReaders.load() == 0) free.swap(retired);
}

std::shared_ptr<const LibrarySnapshot> PresetLibrary::Get() const {
    const std::lock_guard lock(publishMutex);
    return newest;
}

void PresetLibrary::WaitUntilRead(milliseconds longest) {
    std::unique_lock lock(publishMutex);
    published.wait_for(lock, kLongestListing, [this] { return isListed.load(); });
    published.wait_for(lock, longest, [this] { return newest->IsComplete(); });
}

void PresetLibrary::Publish() {
    if (!scanner.TakeChanged() && isListed) return;
    auto snapshot = scanner.MakeSnapshot();
    {
        const std::lock_guard lock(publishMutex);
        retired.push_back(std::move(newest));
        newest = std::move(snapshot);
        current.store(newest.get());
        isListed = true;
        revision.fetch_add(1, std::memory_order_release);
    }
    published.notify_all();
    FreeRetired();
}

// Other threads

void PresetLibrary::Refresh(const std::string& folder) {
    ++refreshesWaiting;
    const std::lock_guard lock(scanMutex);
    --refreshesWaiting;
    if (!scanner.ListRoot() && isFromBank) {
        scanner.TakeFactoryBank(place.bank);
    } else {
        isFromBank = false;
        if (folder.empty())
            scanner.ListAllCategories();
        else
            scanner.ListCategory(scanner.CategoryOf(folder));
    }
    scanner.ReadSome(kBatch);
    Publish();
    watch.Wake();  // what is left is read, and new folders are watched, over there
}

void PresetLibrary::PrepareForSaving() {
    if (!isFromBank || !WriteFactoryBank(place.root, place.extension, place.bank)) return;
    Refresh({});
}

// The library's thread

void PresetLibrary::Run() {
    Begin();
    while (!ending) {
        ReadRest();
        WaitForChanges();
    }
}

// An instance that waits for its first programs gets them from the bank while that is being
// written.
void PresetLibrary::Begin() {
    const auto start = Clock::now();
    {
        const std::lock_guard lock(scanMutex);
        if (!scanner.ListRoot()) {
            isFromBank = true;
            scanner.TakeFactoryBank(place.bank);
        }
        lastScanMilliseconds = Since(start).count();
        Publish();
    }
    PrepareForSaving();
    if (!isFromBank) file_system::RemoveLeftovers(place.root.c_str());
    WatchFolders();
    // What happened between listing and watching.
    CFolderWatch::Changes all;
    all.everything = true;
    LookAgain(all);
}

void PresetLibrary::ReadRest() {
    auto lastProgress = Clock::now();
    milliseconds progress = kProgress;
    for (bool more = true; more && !ending;) {
        while (refreshesWaiting > 0)
            std::this_thread::sleep_for(milliseconds(1));
        const std::lock_guard lock(scanMutex);
        if (!scanner.HasUnread()) return;
        more = scanner.ReadSome(kBatch);
        if (more && Since(lastProgress) < progress) continue;
        const auto start = Clock::now();
        Publish();
        progress = std::max(kProgress, kPublishingShare * Since(start));
        lastProgress = Clock::now();
    }
}

void PresetLibrary::WatchFolders() {
    std::vector<std::string> folders;
    {
        const std::lock_guard lock(scanMutex);
        folders = scanner.Folders();
    }
    watch.SetFolders(folders);
}

milliseconds PresetLibrary::PollingInterval() const {
    if (!watch.NeedsPolling()) return kResting;
    return std::max(kPolling, milliseconds(kPollingShare * lastScanMilliseconds));
}

void PresetLibrary::WaitForChanges() {
    CFolderWatch::Changes changes = watch.Wait(PollingInterval());
    if (ending) return;
    FreeRetired();
    changes.everything = changes.everything || watch.NeedsPolling();
    // Files come in groups (a copied folder), and one save is several changes.
    const auto start = Clock::now();
    while (changes.Any() && !ending && Since(start) < kLongestSettling) {
        const CFolderWatch::Changes more = watch.Wait(kSettling);
        if (!more.Any()) break;
        changes.everything = changes.everything || more.everything;
        changes.folders.insert(changes.folders.end(), more.folders.begin(), more.folders.end());
    }
    if (changes.Any()) LookAgain(changes);
    WatchFolders();
}

void PresetLibrary::LookAgain(const CFolderWatch::Changes& changes) {
    const auto start = Clock::now();
    const std::lock_guard lock(scanMutex);
    const bool hadRoot = !isFromBank;
    if (!scanner.ListRoot()) {
        // A root that was there and is gone was taken away on purpose.
        if (!hadRoot) scanner.TakeFactoryBank(place.bank);
    } else if (changes.everything || !hadRoot) {
        isFromBank = false;
        scanner.ListAllCategories();
    } else {
        for (const std::string& folder : changes.folders)
            scanner.ListCategory(scanner.CategoryOf(folder));
    }
    lastScanMilliseconds = Since(start).count();
    scanner.ReadSome(kBatch);
    Publish();
}

}  // namespace norava
