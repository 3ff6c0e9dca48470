#ifdef __linux__

#include "gui/platform/x11_drop.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "gui/platform/uri_list.h"

namespace norava::x11 {

void DropTarget::Announce() const {
    connection.SetWords(window, connection.GetAtoms().xdndAware, XCB_ATOM_ATOM, {kVersion});
}

bool DropTarget::Handle(const xcb_client_message_event_t& message) {
    const Atoms& atoms = connection.GetAtoms();
    const auto& words = message.data.data32;
    if (message.format != 32) return false;
    if (message.type == atoms.xdndEnter) {
        Enter(message);
        return true;
    }
    const bool isOurs = source != 0 && words[0] == source;
    if (message.type == atoms.xdndPosition) {
        if (!isOurs) return true;
        AskForName(words[3]);
        SendStatus();
    } else if (message.type == atoms.xdndLeave) {
        if (isOurs) Leave();
    } else if (message.type == atoms.xdndDrop) {
        if (!isOurs) return true;
        dropped = true;
        AskForName(words[2]);
        if (name == Name::known) Drop();
    } else {
        return false;
    }
    return true;
}

void DropTarget::Enter(const xcb_client_message_event_t& message) {
    Leave();  // a source that vanished has not said so
    const auto& words = message.data.data32;
    const uint32_t version = words[1] >> 24;
    if (version < 3 || version > kVersion) return;
    source = words[0];
    const xcb_atom_t files = connection.GetAtoms().uriList;
    const bool listsTypes = (words[1] & 1u) != 0;
    if (listsTypes) {
        const auto types = connection.GetWords(source, connection.GetAtoms().xdndTypeList);
        offersFiles = std::find(types.begin(), types.end(), files) != types.end();
    } else {
        offersFiles = std::find(words + 2, words + 5, files) != words + 5;
    }
    wanted = offersFiles;
}

void DropTarget::AskForName(xcb_timestamp_t time) {
    if (name != Name::unknown) return;
    name = Name::known;
    if (!offersFiles) return;
    name = Name::asked;
    const WritingScope scope;
    const Atoms& atoms = connection.GetAtoms();
    connection.call.convert_selection(connection.raw, window, atoms.xdndSelection, atoms.uriList,
                                      atoms.droppedFiles, time);
}

bool DropTarget::Handle(const xcb_selection_notify_event_t& notice) {
    const Atoms& atoms = connection.GetAtoms();
    if (notice.selection != atoms.xdndSelection) return false;
    if (name != Name::asked) return true;
    name = Name::known;
    wanted = false;
    path.clear();
    if (notice.property != XCB_NONE) {
        char host[256] = "";
        if (gethostname(host, sizeof host - 1) != 0) host[0] = '\0';
        path = FirstFileOfUriList(connection.GetText(window, notice.property), host);
        const WritingScope scope;
        connection.call.delete_property(connection.raw, window, notice.property);
    }
    if (!path.empty()) wanted = events.FileEntered(path.c_str());
    if (dropped)
        Drop();
    else
        SendStatus();
    return true;
}

void DropTarget::Leave() {
    const std::string left = std::exchange(path, {});
    source = 0;
    name = Name::unknown;
    offersFiles = wanted = dropped = false;
    if (!left.empty()) events.FileLeft(left.c_str());
}

void DropTarget::Drop() {
    const bool take = wanted && !path.empty();
    // Before the file is used: opening it may take longer than the source waits.
    Send(connection.GetAtoms().xdndFinished, take ? 1u : 0u, 0);
    if (!take) {
        Leave();
        return;
    }
    const std::string file = std::exchange(path, {});
    Leave();
    events.FileDropped(file.c_str());
}

void DropTarget::SendStatus() const {
    constexpr uint32_t kAccept = 1;
    constexpr uint32_t kTellMoves = 2;
    Send(connection.GetAtoms().xdndStatus, kTellMoves | (wanted ? kAccept : 0u),
         wanted ? connection.GetAtoms().xdndActionCopy : 0);
}

// Both answers have the action at their end: the status in word 4, the end in word 2.
void DropTarget::Send(xcb_atom_t type, uint32_t word1, uint32_t word4) const {
    const WritingScope scope;
    const Atoms& atoms = connection.GetAtoms();
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = source;
    message.type = type;
    auto& words = message.data.data32;
    words[0] = window;
    words[1] = word1;
    if (type == atoms.xdndFinished) words[2] = word1 ? atoms.xdndActionCopy : 0;
    words[4] = word4;
    connection.call.send_event(connection.raw, 0, source, XCB_EVENT_MASK_NO_EVENT,
                               reinterpret_cast<const char*>(&message));
}

}  // namespace norava::x11

#endif
