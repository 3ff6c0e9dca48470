#pragma once

#include <optional>
#include <string>

#include "gui/platform/platform_view.h"
#include "gui/platform/x11_connection.h"

namespace norava::x11 {

// The receiving side of a file that is dragged over a window and dropped (XDND, version 5). The
// file's name is fetched while it is still in the air, so that the window can say whether it wants
// it.
class DropTarget {
  public:
    DropTarget(const Connection& server, xcb_window_t target, PlatformEvents& listener)
        : connection(server), window(target), events(listener) {}

    void Announce() const;
    // False: not about dropping.
    bool Handle(const xcb_client_message_event_t& message);
    bool Handle(const xcb_selection_notify_event_t& notice);

  private:
    static constexpr uint32_t kVersion = 5;

    void Enter(const xcb_client_message_event_t& message);
    void Leave();
    void Drop();
    void AskForName(xcb_timestamp_t time);
    void Send(xcb_atom_t type, uint32_t word1, uint32_t word4) const;
    void SendStatus() const;

    const Connection& connection;
    const xcb_window_t window;
    PlatformEvents& events;
    xcb_window_t source = 0;
    enum class Name { unknown, asked, known } name = Name::unknown;
    std::string path;
    bool offersFiles = false;
    bool wanted = false;
    bool dropped = false;
};

}  // namespace norava::x11
