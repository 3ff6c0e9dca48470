#include "presets/preset_library.h"

#include <algorithm>
#include <map>
#include <set>

#include "files/file_manager.h"
#include "files/text_buffer.h"
#include "presets/first_start.h"
#include "presets/quiet_thread.h"

namespace norava {

namespace {

using std::chrono::milliseconds;

constexpr int kBatch = 200;             // programs read while others wait for the scanner
constexpr milliseconds kProgress(500);  // between snapshots of a library being read
constexpr int kPublishingShare = 10;    // at most a tenth of the time goes into them
constexpr milliseconds kSettling(30);   // after a change, for those that come with it
constexpr milliseconds kLongestSettling(300);
constexpr milliseconds kPolling(2000);  // between looks where the system cannot tell what happens
constexpr int kPollingShare = 20;       // at most a twentieth of the time is spent looking
constexpr milliseconds kResting(3'600'000);

std::mutex& RegistryMutex() {
    static std::mutex mutex;
    return mutex;
}

milliseconds Since(std::chrono::steady_clock::time_point start) {
    const auto elapsed = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<milliseconds>(elapsed);
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

template <typename Condition>
void PresetLibrary::WaitFor(milliseconds longest, Condition condition) const {
    std::unique_lock lock(publishMutex);
    published.wait_until(lock, made + longest, [&] { return isPublished && condition(); });
}

void PresetLibrary::WaitForFirst() const {
    WaitFor(milliseconds(2000), [] { return true; });
}

void PresetLibrary::WaitUntilListed() const {
    WaitFor(milliseconds(5000), [this] { return newest->IsListed(); });
}

void PresetLibrary::WaitUntilRead() const {
    WaitFor(milliseconds(200), [this] { return newest->IsComplete(); });
}

void PresetLibrary::Publish() {
    const bool changed = scanner.TakeChanged() || scanner.IsComplete() != Get()->IsComplete();
    if (!changed && isPublished) return;
    auto snapshot = scanner.MakeSnapshot();
    {
        const std::lock_guard lock(publishMutex);
        retired.push_back(std::move(newest));
        newest = std::move(snapshot);
        current.store(newest.get());
        isPublished = true;
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
    if (scanner.ListRoot() || !isFromBank) {
        const bool wasFromBank = isFromBank.exchange(false);
        scanner.ListAhead();
        if (folder.empty() || wasFromBank)
            scanner.ListAllCategories();
        else
            scanner.ListCategory(scanner.CategoryOf(folder));
    }
    scanner.ReadSome(kBatch);
    Publish();
    watch.Wake();  // what is left is read, and new folders are watched, over there
}

void PresetLibrary::PrepareForSaving() {
    if (!isFromBank || !WriteFactoryBank(place.root, place.extension, place.bank, &ending)) return;
    Refresh({});
}

// The library's thread

void PresetLibrary::Run() {
    Begin();
    while (!ending) {
        ReadRest();
        ClearUp();
        WaitForChanges();
    }
}

// An instance waits for the first program here. Without files it gets it from the bank, which is
// written meanwhile.
void PresetLibrary::Begin() {
    watch.SetFolders({place.root});
    {
        const std::lock_guard lock(scanMutex);
        if (scanner.ListRoot()) {
            scanner.ReadFirst();
        } else {
            isFromBank = true;
            scanner.TakeFactoryBank(place.bank);
        }
        Publish();
    }
    CFolderWatch::Changes changes;
    changes.everything = isFromBank;
    if (isFromBank)
        PrepareForSaving();
    else
        file_system::RemoveLeftovers(place.root.substr(0, place.root.rfind('/')).c_str());
    LookAgain(changes);
}

void PresetLibrary::ReadRest() {
    auto lastProgress = Clock::now();
    milliseconds progress = kProgress;
    while (!ending) {
        while (refreshesWaiting > 0)
            std::this_thread::sleep_for(milliseconds(1));
        const std::lock_guard lock(scanMutex);
        if (scanner.IsComplete()) return;
        const bool listed = scanner.HasUnlisted() && !scanner.ListNext();
        if (!scanner.HasUnlisted() && !listed) scanner.ReadSome(kBatch);
        if (!listed && !scanner.IsComplete() && Since(lastProgress) < progress) continue;
        const auto start = Clock::now();
        Publish();
        progress = std::max(kProgress, kPublishingShare * Since(start));
        lastProgress = Clock::now();
    }
}

// What processes left unfinished that were killed here.
void PresetLibrary::ClearUp() {
    std::set<std::string> folders;
    {
        const std::lock_guard lock(scanMutex);
        folders = scanner.TakeLittered();
    }
    for (const std::string& folder : folders)
        file_system::RemoveLeftovers(folder.c_str());
}

milliseconds PresetLibrary::PollingInterval() const {
    return std::max(kPolling, milliseconds(kPollingShare * lastScanMilliseconds));
}

void PresetLibrary::WaitForChanges() {
    std::set<std::string> failed;
    {
        const std::lock_guard lock(scanMutex);
        failed = scanner.TakeFailed();
    }
    const bool polls = watch.NeedsPolling() || !failed.empty();
    CFolderWatch::Changes changes = watch.Wait(polls ? PollingInterval() : kResting);
    if (ending) return;
    FreeRetired();
    changes.everything = changes.everything || watch.NeedsPolling() || failed.contains(place.root);
    changes.folders.insert(changes.folders.end(), failed.begin(), failed.end());
    // Files come in groups (a copied folder), and one save is several changes.
    const auto start = Clock::now();
    while (changes.Any() && !ending && Since(start) < kLongestSettling) {
        const CFolderWatch::Changes more = watch.Wait(kSettling);
        if (!more.Any()) break;
        changes.everything = changes.everything || more.everything;
        changes.folders.insert(changes.folders.end(), more.folders.begin(), more.folders.end());
    }
    LookAgain(changes);
}

// A folder is listed after it is watched, so that nothing happens in between unseen; new ones are
// left to ReadRest.
void PresetLibrary::LookAgain(const CFolderWatch::Changes& changes) {
    const auto start = Clock::now();
    const std::lock_guard lock(scanMutex);
    // A root that was there and is gone was taken away on purpose: the bank does not come back.
    const bool hasRoot = scanner.ListRoot();
    watch.SetFolders(scanner.Folders());
    if (hasRoot && (isFromBank.exchange(false) || changes.everything)) {
        scanner.ListAllCategories();
    } else if (hasRoot) {
        for (const std::string& folder : changes.folders)
            scanner.ListCategory(scanner.CategoryOf(folder));
    }
    lastScanMilliseconds = Since(start).count();
    scanner.ReadSome(kBatch);
    Publish();
}

}  // namespace norava
