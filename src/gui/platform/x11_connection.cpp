#ifdef __linux__

#include "gui/platform/x11_connection.h"

#include <sys/socket.h>

#include <array>
#include <bit>
#include <ctime>

namespace norava::x11 {

WritingScope::WritingScope() {
    sigset_t pending;
    sigset_t pipe;
    sigemptyset(&pending);
    sigpending(&pending);
    wasPending = sigismember(&pending, SIGPIPE) == 1;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, &before);
}

WritingScope::~WritingScope() {
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    constexpr timespec kNoWait{};
    if (!wasPending) sigtimedwait(&pipe, nullptr, &kNoWait);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

std::unique_ptr<Connection> Connection::Open() {
    const Library* library = GetLibrary();
    if (!library) return nullptr;
    const WritingScope scope;
    int screenNumber = 0;
    xcb_connection_t* raw = library->connect(nullptr, &screenNumber);
    std::unique_ptr<Connection> made(new Connection(*library, raw, screenNumber));
    return made->layout.visual == 0 || made->HasFailed() ? nullptr : std::move(made);
}

Connection::Connection(const Library& library, xcb_connection_t* connection, int screenNumber)
    : call(library), raw(connection) {
    if (HasFailed()) return;
    FindScreen(screenNumber);
    if (!screen) return;
    FindLayout();
    InternAtoms();
}

// A connection that ends with events unread takes along what the server has not read of ours, and
// the pointer would stay where a drag had taken it: one question, and all before it is done.
Connection::~Connection() {
    const WritingScope scope;
    const Owned<xcb_get_input_focus_reply_t> reply(
        call.get_input_focus_reply(raw, call.get_input_focus(raw), nullptr));
    call.disconnect(raw);
}

void Connection::FindScreen(int number) {
    xcb_screen_iterator_t screens = call.setup_roots_iterator(call.get_setup(raw));
    for (; screens.rem > 0; call.screen_next(&screens), --number) {
        if (!screen || number == 0) screen = screens.data;
    }
}

// Screens with ten bits a colour, or windows of the host with alpha, have a plain layout too; a
// window that uses it inside another kind brings its own colour map.
void Connection::FindLayout() {
    const xcb_setup_t* setup = call.get_setup(raw);
    const auto isStoredIn32Bits = [&](uint8_t depth) {
        for (auto format = call.setup_pixmap_formats_iterator(setup); format.rem > 0;
             call.format_next(&format))
            if (format.data->depth == depth) return format.data->bits_per_pixel == 32;
        return false;
    };
    const auto isByte = [](uint32_t mask) { return std::popcount(mask) == 8; };
    for (auto depth = call.screen_allowed_depths_iterator(screen); depth.rem > 0;
         call.depth_next(&depth)) {
        const uint8_t bits = depth.data->depth;
        if ((bits != 24 && bits != 32) || !isStoredIn32Bits(bits)) continue;
        for (auto visual = call.depth_visuals_iterator(depth.data); visual.rem > 0;
             call.visualtype_next(&visual)) {
            const xcb_visualtype_t& kind = *visual.data;
            const uint32_t colours = kind.red_mask | kind.green_mask | kind.blue_mask;
            if (kind._class != XCB_VISUAL_CLASS_TRUE_COLOR || !isByte(kind.red_mask) ||
                !isByte(kind.green_mask) || !isByte(kind.blue_mask))
                continue;
            const bool better =
                layout.visual == 0 || kind.visual_id == screen->root_visual || bits < layout.depth;
            if (!better || layout.visual == screen->root_visual) continue;
            layout = {.visual = kind.visual_id,
                      .depth = bits,
                      .redShift = static_cast<unsigned>(std::countr_zero(kind.red_mask)),
                      .greenShift = static_cast<unsigned>(std::countr_zero(kind.green_mask)),
                      .blueShift = static_cast<unsigned>(std::countr_zero(kind.blue_mask)),
                      .opaque = bits == 32 ? ~colours : 0u,
                      .swapBytes = setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST};
        }
    }
}

void Connection::InternAtoms() {
    struct Entry {
        std::string_view name;
        xcb_atom_t Atoms::*atom;
        xcb_intern_atom_cookie_t cookie{};
    };
    std::array entries{
        Entry{"WM_PROTOCOLS", &Atoms::wmProtocols},
        Entry{"WM_DELETE_WINDOW", &Atoms::wmDeleteWindow},
        Entry{"_NET_WM_PING", &Atoms::netWmPing},
        Entry{"_NET_WM_NAME", &Atoms::netWmName},
        Entry{"_NET_WM_PID", &Atoms::netWmPid},
        Entry{"UTF8_STRING", &Atoms::utf8String},
        Entry{"_NET_WM_WINDOW_TYPE", &Atoms::netWmWindowType},
        Entry{"_NET_WM_WINDOW_TYPE_NORMAL", &Atoms::netWmWindowTypeNormal},
        Entry{"_XEMBED_INFO", &Atoms::xembedInfo},
        Entry{"XdndAware", &Atoms::xdndAware},
        Entry{"XdndEnter", &Atoms::xdndEnter},
        Entry{"XdndPosition", &Atoms::xdndPosition},
        Entry{"XdndStatus", &Atoms::xdndStatus},
        Entry{"XdndLeave", &Atoms::xdndLeave},
        Entry{"XdndDrop", &Atoms::xdndDrop},
        Entry{"XdndFinished", &Atoms::xdndFinished},
        Entry{"XdndSelection", &Atoms::xdndSelection},
        Entry{"XdndTypeList", &Atoms::xdndTypeList},
        Entry{"XdndActionCopy", &Atoms::xdndActionCopy},
        Entry{"text/uri-list", &Atoms::uriList},
        Entry{"NORAVA_DROPPED_FILES", &Atoms::droppedFiles},
    };
    // All questions first, then all answers: one turn instead of twenty.
    for (Entry& entry : entries)
        entry.cookie =
            call.intern_atom(raw, 0, static_cast<uint16_t>(entry.name.size()), entry.name.data());
    for (const Entry& entry : entries) {
        const Owned<xcb_intern_atom_reply_t> reply(
            call.intern_atom_reply(raw, entry.cookie, nullptr));
        if (reply) atoms.*entry.atom = reply->atom;
    }
}

bool Connection::IsLocal() const {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    return getsockname(call.get_file_descriptor(raw), reinterpret_cast<sockaddr*>(&address),
                       &length) == 0 &&
           address.ss_family == AF_UNIX;
}

void Connection::Flush() const {
    const WritingScope scope;
    call.flush(raw);
}

}  // namespace norava::x11

#endif
