#pragma once

#include <array>
#include <atomic>

namespace norava {

// One parameter as the host and the panel see it. Any thread may set and read `value` and
// `needUpdate`; the words stand alone, so relaxed order does. `name` is written during construction
// of the renderer only.
struct CPluginParam {
    static constexpr int kNameCapacity = 128;  // bytes with the terminator

    std::atomic<bool> needUpdate = false;  // changed from outside the panel and not shown there yet
    std::atomic<float> value = 0.0f;       // as it was set: 0..1 by agreement, any bits in fact
    float auxValue = 0.0f;                 // free for derived renderers
    std::array<char, kNameCapacity> name{};

    void Init() noexcept {
        needUpdate.store(false, std::memory_order_relaxed);
        value.store(0.0f, std::memory_order_relaxed);
        auxValue = 0.0f;
        name.fill('\0');
    }
};

}  // namespace norava
