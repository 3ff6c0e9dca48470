#include "presets/library_search.h"

#include <algorithm>
#include <string>

#include "files/natural_order.h"

namespace norava {

namespace {

// As lists show names, which have no accents: what is read can be typed.
std::u32string Plain(std::string_view text) {
    std::u32string plain = FoldCase(text);
    std::ranges::transform(plain, plain.begin(), WithoutAccent);
    return plain;
}

std::vector<std::u32string> WordsOf(std::string_view text) {
    std::vector<std::u32string> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end > 0) words.push_back(Plain(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

}  // namespace

std::vector<FoundProgram> SearchLibrary(const LibrarySnapshot& library, std::string_view text) {
    const std::vector<std::u32string> words = WordsOf(text);
    if (words.empty()) return {};
    std::vector<FoundProgram> found;
    std::vector<FoundProgram> others;
    const auto& categories = library.Categories();
    for (std::size_t c = 0; c < categories.size(); ++c) {
        const std::u32string category = Plain(categories[c].Name());
        for (std::size_t p = 0; p < categories[c].programs.size(); ++p) {
            const std::u32string program = Plain(categories[c].programs[p].Name());
            const bool holdsAll = std::ranges::all_of(words, [&](const std::u32string& word) {
                return program.find(word) != program.npos || category.find(word) != category.npos;
            });
            if (!holdsAll) continue;
            auto& list = program.starts_with(words.front()) ? found : others;
            list.push_back({static_cast<int>(c), static_cast<int>(p)});
        }
    }
    found.insert(found.end(), others.begin(), others.end());
    return found;
}

}  // namespace norava
