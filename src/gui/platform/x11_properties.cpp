#ifdef __linux__

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "gui/platform/native_scale.h"
#include "gui/platform/x11_connection.h"

namespace norava::x11 {

namespace {

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const size_t begin = text.find_first_not_of(kBlanks);
    if (begin == text.npos) return {};
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

}  // namespace

Owned<xcb_get_property_reply_t> Connection::GetProperty(xcb_window_t window, xcb_atom_t property,
                                                        xcb_atom_t type,
                                                        uint32_t limitBytes) const {
    const WritingScope scope;
    const auto cookie = call.get_property(raw, 0, window, property, type, 0, (limitBytes + 3) / 4);
    return Owned<xcb_get_property_reply_t>(call.get_property_reply(raw, cookie, nullptr));
}

std::string Connection::GetText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                                uint32_t limit) const {
    const auto reply = GetProperty(window, property, type, limit);
    if (!reply || reply->format != 8) return {};
    const int length = call.get_property_value_length(reply.get());
    return {static_cast<const char*>(call.get_property_value(reply.get())),
            static_cast<size_t>(std::max(0, length))};
}

std::vector<uint32_t> Connection::GetWords(xcb_window_t window, xcb_atom_t property) const {
    const auto reply = GetProperty(window, property, XCB_ATOM_ANY, 4096);
    if (!reply || reply->format != 32) return {};
    const int length = std::max(0, call.get_property_value_length(reply.get()));
    std::vector<uint32_t> words(static_cast<size_t>(length) / sizeof(uint32_t));
    if (!words.empty())
        std::memcpy(words.data(), call.get_property_value(reply.get()),
                    words.size() * sizeof(uint32_t));
    return words;
}

void Connection::SetWords(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                          std::initializer_list<uint32_t> words) const {
    const WritingScope scope;
    call.change_property(raw, XCB_PROP_MODE_REPLACE, window, property, type, 32,
                         static_cast<uint32_t>(words.size()), words.begin());
}

void Connection::SetText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                         std::string_view text) const {
    const WritingScope scope;
    call.change_property(raw, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                         static_cast<uint32_t>(text.size()), text.data());
}

int Connection::GetScale() const {
    const std::string resources =
        GetText(screen->root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 1u << 20);
    return ChooseScale(FindDotsPerInch(resources), screen->height_in_pixels);
}

double FindDotsPerInch(std::string_view resources) {
    constexpr std::string_view kName = "Xft.dpi:";
    while (!resources.empty()) {
        const std::string_view line = resources.substr(0, resources.find('\n'));
        resources.remove_prefix(std::min(resources.size(), line.size() + 1));
        if (!line.starts_with(kName)) continue;
        const std::string_view number = Trim(line.substr(kName.size()));
        double value = 0.0;
        const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
        if (result.ec != std::errc() || !std::isfinite(value) || value <= 0.0) return 0.0;
        return value;
    }
    return 0.0;
}

}  // namespace norava::x11

#endif
