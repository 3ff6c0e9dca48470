#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <thread>

#include "parameters/parameter_index.h"

namespace norava {

// Carries changes of the stored values to the audio thread, which never waits, and keeps loaded
// states whole.
//
// The values themselves are atomic words of the renderer. Here is one bit for each that the engine
// has yet to apply (an equal value sets its bit too: switching on a band that is on restarts it),
// and a counter that is odd while a state is being stored. A reader that saw the counter stand
// still and even has read one state and not a mix of two: a sequence lock, as in H.-J. Boehm, "Can
// seqlocks get along with programming language memory models?", 2012.
class ParameterExchange {
  public:
    // Asks the audio thread to apply parameter `index`, whose value has just been stored. Any
    // thread.
    void Mark(int index) { pending_[Word(index)].fetch_or(Bit(index), std::memory_order_release); }

    // Asks the audio thread to clear the sound before it applies anything that is marked by then.
    // Any thread.
    void MarkReset() { Mark(kReset); }

    // Runs `store`, which stores values and marks them, so that others see all of it or nothing.
    // Threads that store at once take turns. Any thread that may wait.
    template <typename Store>
    void StoreWhole(Store store) {
        while (!TryStoreWhole(store))
            std::this_thread::yield();
    }

    // The same for a thread that may not wait: false, with nothing done, while another thread is
    // storing.
    template <typename Store>
    [[nodiscard]] bool TryStoreWhole(Store store);

    // Runs `read` until it has read one state with nothing stored in between. Any thread that may
    // wait.
    template <typename Read>
    void ReadWhole(Read read);

    // Calls reset() when that is asked for, and then apply(index, value) for each marked parameter
    // in ascending order, value = read(index).
    // Does nothing while a state is being stored: its parameters stay marked for the next call.
    // Audio thread, or the only thread there is.
    template <typename ReadValue, typename Reset, typename Apply>
    void TakePending(ReadValue readValue, Reset reset, Apply apply);

  private:
    static constexpr int kBits = 64;
    static constexpr int kReset = kNumParameters;  // its bit stands behind the parameters'
    static constexpr int kWords = kReset / kBits + 1;
    static constexpr int kHopefulReads = 64;
    using Words = std::array<std::uint64_t, kWords>;

    static constexpr std::size_t Word(int index) { return static_cast<std::size_t>(index / kBits); }
    static constexpr std::uint64_t Bit(int index) { return std::uint64_t{1} << (index % kBits); }

    template <typename Visit>
    static void ForEach(const Words& words, Visit visit) {
        for (int w = 0; w < kWords; ++w) {
            for (std::uint64_t rest = words[Word(w * kBits)]; rest != 0; rest &= rest - 1) {
                visit(w * kBits + std::countr_zero(rest));
            }
        }
    }
    bool HasPending() const {
        std::uint64_t any = 0;
        for (const auto& word : pending_)
            any |= word.load(std::memory_order_relaxed);
        return any != 0;
    }
    static bool IsStoring(std::uint32_t sequence) { return (sequence & 1) != 0; }
    bool StoodStill(std::uint32_t sequence) const {
        std::atomic_thread_fence(std::memory_order_acquire);
        return sequence_.load(std::memory_order_relaxed) == sequence;
    }

    std::array<std::atomic<std::uint64_t>, kWords> pending_{};
    std::atomic<std::uint32_t> sequence_{0};
};

template <typename Store>
bool ParameterExchange::TryStoreWhole(Store store) {
    std::uint32_t sequence = sequence_.load(std::memory_order_relaxed);
    if (IsStoring(sequence)) return false;
    if (!sequence_.compare_exchange_strong(sequence, sequence + 1, std::memory_order_acquire,
                                           std::memory_order_relaxed)) {
        return false;
    }
    // Whoever reads a value stored below also sees the odd count above.
    std::atomic_thread_fence(std::memory_order_release);
    store();
    sequence_.store(sequence + 2, std::memory_order_release);
    return true;
}

template <typename Read>
void ParameterExchange::ReadWhole(Read read) {
    for (int i = 0; i < kHopefulReads; ++i) {
        const std::uint32_t sequence = sequence_.load(std::memory_order_acquire);
        if (!IsStoring(sequence)) {
            read();
            if (StoodStill(sequence)) return;
        }
        std::this_thread::yield();
    }
    // One state follows on another: take a turn among the threads that store them.
    StoreWhole(read);
}

template <typename ReadValue, typename Reset, typename Apply>
void ParameterExchange::TakePending(ReadValue readValue, Reset reset, Apply apply) {
    if (!HasPending()) return;
    const std::uint32_t sequence = sequence_.load(std::memory_order_acquire);
    if (IsStoring(sequence)) return;

    Words taken;
    for (std::size_t w = 0; w < taken.size(); ++w) {
        taken[w] = pending_[w].exchange(0, std::memory_order_acquire);
    }
    const bool resets = (taken[Word(kReset)] & Bit(kReset)) != 0;
    Words marked = taken;
    marked[Word(kReset)] &= ~Bit(kReset);
    std::array<float, kNumParameters> values;
    ForEach(marked, [&](int i) { values[static_cast<std::size_t>(i)] = readValue(i); });
    if (!StoodStill(sequence)) {
        for (std::size_t w = 0; w < taken.size(); ++w) {
            pending_[w].fetch_or(taken[w], std::memory_order_release);
        }
        return;
    }
    if (resets) reset();
    ForEach(marked, [&](int i) { apply(i, values[static_cast<std::size_t>(i)]); });
}

}  // namespace norava
