#include "gui/platform/uri_list.h"

#include <algorithm>
#include <optional>

namespace norava {

namespace {

int DigitOf(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::optional<std::string> Decode(std::string_view text) {
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        if (text.size() - i < 3) return std::nullopt;
        const int high = DigitOf(text[i + 1]);
        const int low = DigitOf(text[i + 2]);
        if (high < 0 || low < 0 || high + low == 0) return std::nullopt;
        decoded += static_cast<char>(16 * high + low);
        i += 2;
    }
    return decoded;
}

// "file:///path", "file://host/path" and the short "file:/path".
std::string PathOf(std::string_view uri, std::string_view hostName) {
    constexpr std::string_view kScheme = "file:";
    if (!uri.starts_with(kScheme)) return {};
    uri.remove_prefix(kScheme.size());
    if (uri.starts_with("//")) {
        uri.remove_prefix(2);
        const std::string_view host = uri.substr(0, uri.find('/'));
        if (!host.empty() && host != "localhost" && host != hostName) return {};
        uri.remove_prefix(host.size());
    }
    const std::optional<std::string> path = Decode(uri);
    return path && path->starts_with('/') ? *path : std::string();
}

}  // namespace

std::string FirstFileOfUriList(std::string_view list, std::string_view hostName) {
    while (!list.empty()) {
        const std::string_view line = list.substr(0, list.find_first_of("\r\n"));
        list.remove_prefix(std::min(list.size(), line.size() + 1));
        if (std::string path = PathOf(line, hostName); !path.empty()) return path;
    }
    return {};
}

}  // namespace norava
