#pragma once

#include <csignal>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "gui/platform/x11_library.h"

namespace norava::x11 {

// Held around calls that may write to the server. When the server has gone, writing raises a signal
// whose default ends the whole process; here it becomes an error of the connection. Nests.
class WritingScope {
  public:
    WritingScope();
    ~WritingScope();
    WritingScope(const WritingScope&) = delete;
    WritingScope& operator=(const WritingScope&) = delete;

  private:
    sigset_t before;
    bool wasPending;
};

// Names that are numbers on a server.
struct Atoms {
    xcb_atom_t wmProtocols, wmDeleteWindow, netWmPing, netWmName, netWmPid, utf8String;
    xcb_atom_t netWmWindowType, netWmWindowTypeNormal;
    xcb_atom_t xembedInfo;
    xcb_atom_t xdndAware, xdndEnter, xdndPosition, xdndStatus, xdndLeave, xdndDrop, xdndFinished;
    xcb_atom_t xdndSelection, xdndTypeList, xdndActionCopy, uriList, droppedFiles;
};

// How a pixel of a window is stored: 32 bits with eight for each colour.
struct PixelLayout {
    xcb_visualid_t visual = 0;
    uint8_t depth = 0;
    unsigned redShift = 0, greenShift = 0, blueShift = 0;
    uint32_t opaque = 0;  // bits of a depth of 32 that mean alpha
    bool swapBytes = false;
};

// A connection of our own to the display server, used by one window on one thread. Unlike the
// host's it survives the server: every call then does nothing.
class Connection {
  public:
    // Null where there is no display, or none that stores its pixels in a way known here.
    static std::unique_ptr<Connection> Open();
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const Library& call;
    xcb_connection_t* const raw;

    [[nodiscard]] const xcb_screen_t& GetScreen() const { return *screen; }
    [[nodiscard]] const Atoms& GetAtoms() const { return atoms; }
    [[nodiscard]] const PixelLayout& GetLayout() const { return layout; }
    [[nodiscard]] bool HasFailed() const { return call.connection_has_error(raw) != 0; }
    // On this machine: memory can be shared and file names mean the same.
    [[nodiscard]] bool IsLocal() const;
    void Flush() const;

    // At most `limit` bytes of a text property, empty without one.
    [[nodiscard]] std::string GetText(xcb_window_t window, xcb_atom_t property,
                                      xcb_atom_t type = XCB_ATOM_ANY,
                                      uint32_t limit = 1u << 18) const;
    // Whole 32-bit items of a property.
    [[nodiscard]] std::vector<uint32_t> GetWords(xcb_window_t window, xcb_atom_t property) const;
    void SetWords(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                  std::initializer_list<uint32_t> words) const;
    void SetText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                 std::string_view text) const;

    // How many stored pixels a logical one should have on this screen, 1 .. 3.
    [[nodiscard]] int GetScale() const;

  private:
    Connection(const Library& library, xcb_connection_t* connection, int screenNumber);
    void FindScreen(int number);
    void FindLayout();
    void InternAtoms();
    [[nodiscard]] Owned<xcb_get_property_reply_t> GetProperty(xcb_window_t window,
                                                              xcb_atom_t property, xcb_atom_t type,
                                                              uint32_t limitBytes) const;

    const xcb_screen_t* screen = nullptr;
    Atoms atoms{};
    PixelLayout layout;
};

// "Xft.dpi" of a server's resource text, 0 when it says nothing usable.
double FindDotsPerInch(std::string_view resources);

}  // namespace norava::x11
