#include "parameters/parameter_table.h"

#include <algorithm>

namespace norava {

namespace {

char LowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

int FindParameter(std::string_view name) {
    const auto row = std::ranges::find_if(kParameters, [name](const Parameter& parameter) {
        return std::ranges::equal(std::string_view(parameter.name), name, {}, LowerCase, LowerCase);
    });
    return row == kParameters.end() ? -1 : row->index;
}

}  // namespace norava
