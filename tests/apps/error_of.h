#pragma once

#include <exception>
#include <string>

namespace norava::test {

// What a refused call says, "" for one that is not refused.
template <typename Call>
std::string ErrorOf(Call call) {
    try {
        call();
    } catch (const std::exception& error) {
        return error.what();
    }
    return "";
}

}  // namespace norava::test
