#ifdef __linux__

#include "gui/platform/x11_picture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

namespace norava::x11 {

namespace {

constexpr uint8_t kEventKind = 0x7F;  // the highest bit says who sent it

const uint32_t* RowAt(const uint32_t* words, CSize size, int x, int y) {
    return words + static_cast<size_t>(size.cy - 1 - y) * static_cast<size_t>(size.cx) +
           static_cast<size_t>(x);
}

}  // namespace

Picture::Picture(const Connection& server, xcb_window_t target)
    : connection(server), window(target), context(server.call.generate_id(server.raw)) {
    const WritingScope scope;
    const Library& call = connection.call;
    constexpr uint32_t kNoExposures = 0;
    call.create_gc(connection.raw, context, window, XCB_GC_GRAPHICS_EXPOSURES, &kNoExposures);
    // On another machine the same descriptor would be another memory.
    if (!call.shm.extension || !connection.IsLocal()) return;
    const auto* found = call.get_extension_data(connection.raw, call.shm.extension);
    if (!found || !found->present) return;
    const Owned<xcb_shm_query_version_reply_t> version(
        call.shm.queryVersionReply(connection.raw, call.shm.queryVersion(connection.raw), nullptr));
    const bool takesDescriptors =
        version &&
        (version->major_version > 1 || (version->major_version == 1 && version->minor_version > 1));
    if (takesDescriptors) sharing = found;
}

Picture::~Picture() {
    StopSharing();
}

void Picture::Resize(CSize newSize) {
    StopSharing();
    size = newSize;
    if (sharing) Share();
}

void Picture::Share() {
    const WritingScope scope;
    const size_t bytes =
        static_cast<size_t>(size.cx) * static_cast<size_t>(size.cy) * sizeof(uint32_t);
    const int file = memfd_create("norava-window", MFD_CLOEXEC);
    if (file < 0) return;
    if (ftruncate(file, static_cast<off_t>(bytes)) == 0)
        memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (!memory || memory == MAP_FAILED) {
        memory = nullptr;
        close(file);
        return;
    }
    memoryBytes = bytes;
    segment = connection.call.generate_id(connection.raw);
    // The call takes the descriptor over.
    const auto cookie = connection.call.shm.attach(connection.raw, segment, file, 1);
    const Owned<xcb_generic_error_t> error(connection.call.request_check(connection.raw, cookie));
    if (!error && !connection.HasFailed()) return;
    segment = 0;
    sharing = nullptr;
    StopSharing();
}

void Picture::StopSharing() {
    if (!memory) return;
    const WritingScope scope;
    // The server keeps its own view of the memory until it comes to this.
    if (segment) connection.call.shm.detach(connection.raw, segment);
    munmap(memory, memoryBytes);
    memory = nullptr;
    segment = 0;
    unfinished = 0;
}

void Picture::Convert(std::span<const uint32_t> row, uint32_t* target) const {
    // A copy: what is written could otherwise change it, and no vector loop would be made.
    const PixelLayout layout = connection.GetLayout();
    const auto convert = [layout](uint32_t word) {
        return (word & 0xFFu) << layout.redShift | (word >> 8 & 0xFFu) << layout.greenShift |
               (word >> 16 & 0xFFu) << layout.blueShift | layout.opaque;
    };
    std::transform(row.begin(), row.end(), target, convert);
    if (layout.swapBytes)
        std::transform(target, target + row.size(), target,
                       [](uint32_t word) { return __builtin_bswap32(word); });
}

void Picture::Show(const uint32_t* words, CSize wordsSize, CRect clip) {
    const CRect part =
        clip.GetIntersection(CRect({0, 0}, wordsSize)).GetIntersection(CRect({0, 0}, size));
    if (part.IsEmpty()) return;
    const WritingScope scope;
    if (memory)
        ShowShared(words, wordsSize, part);
    else
        ShowInRequests(words, wordsSize, part);
}

void Picture::ShowShared(const uint32_t* words, CSize wordsSize, CRect clip) {
    const auto width = static_cast<size_t>(clip.width);
    for (int y = clip.top; y < clip.GetBottom(); ++y) {
        const size_t start =
            static_cast<size_t>(y) * static_cast<size_t>(size.cx) + static_cast<size_t>(clip.left);
        Convert({RowAt(words, wordsSize, clip.left, y), width},
                static_cast<uint32_t*>(memory) + start);
    }
    const auto x = static_cast<int16_t>(clip.left);
    const auto y = static_cast<int16_t>(clip.top);
    connection.call.shm.putImage(
        connection.raw, window, context, static_cast<uint16_t>(size.cx),
        static_cast<uint16_t>(size.cy), static_cast<uint16_t>(x), static_cast<uint16_t>(y),
        static_cast<uint16_t>(clip.width), static_cast<uint16_t>(clip.height), x, y,
        connection.GetLayout().depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 1, segment, 0);
    ++unfinished;
}

void Picture::ShowInRequests(const uint32_t* words, CSize wordsSize, CRect clip) {
    constexpr size_t kHeaderWords = 8;
    const size_t most = connection.call.get_maximum_request_length(connection.raw);
    const auto width = static_cast<size_t>(clip.width);
    if (most < kHeaderWords + width) return;  // the connection has failed
    constexpr size_t kEnoughWords = size_t{1} << 16;
    const size_t wordsAtOnce = std::min(most - kHeaderWords, std::max(kEnoughWords, width));
    const auto rowsAtOnce = static_cast<int>(wordsAtOnce / width);
    for (int top = clip.top; top < clip.GetBottom(); top += rowsAtOnce) {
        const int count = std::min(rowsAtOnce, clip.GetBottom() - top);
        rows.resize(static_cast<size_t>(count) * width);
        for (int i = 0; i < count; ++i)
            Convert({RowAt(words, wordsSize, clip.left, top + i), width},
                    rows.data() + static_cast<size_t>(i) * width);
        connection.call.put_image(connection.raw, XCB_IMAGE_FORMAT_Z_PIXMAP, window, context,
                                  static_cast<uint16_t>(width), static_cast<uint16_t>(count),
                                  static_cast<int16_t>(clip.left), static_cast<int16_t>(top), 0,
                                  connection.GetLayout().depth,
                                  static_cast<uint32_t>(rows.size() * sizeof(uint32_t)),
                                  reinterpret_cast<const uint8_t*>(rows.data()));
    }
}

Picture::Event Picture::Handle(const xcb_generic_event_t& event) {
    if (!sharing) return Event::other;
    if (event.response_type == 0) {
        const auto& error = reinterpret_cast<const xcb_generic_error_t&>(event);
        if (error.major_code != sharing->major_opcode) return Event::other;
        StopSharing();
        sharing = nullptr;
        return Event::failed;
    }
    if ((event.response_type & kEventKind) != sharing->first_event + XCB_SHM_COMPLETION)
        return Event::other;
    // One for memory that is no longer in use may still be under way.
    const auto& completion = reinterpret_cast<const xcb_shm_completion_event_t&>(event);
    if (completion.shmseg == segment && unfinished > 0) --unfinished;
    return Event::ours;
}

}  // namespace norava::x11

#endif
