#pragma once

#include <thread>

namespace norava::test {

// Does `step`(0), (1), ... on a thread of its own until what is returned goes.
template <typename Step>
std::jthread Repeatedly(Step step) {
    return std::jthread([step](const std::stop_token& end) mutable {
        for (int i = 0; !end.stop_requested(); ++i)
            step(i);
    });
}

}  // namespace norava::test
