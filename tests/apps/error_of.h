#pragma once

#include <exception>
#include <string>

namespace norava::test {

// What a call says that is refused, "" for one that is not.
template <typename Function, typename... Arguments>
std::string ErrorOf(Function function, const Arguments&... arguments) {
    try {
        function(arguments...);
    } catch (const std::exception& error) {
        return error.what();
    }
    return "";
}

}  // namespace norava::test
