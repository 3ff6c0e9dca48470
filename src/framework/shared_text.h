#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "framework/text_copy.h"

namespace norava {

// A text that any thread may set and any thread may read, without a lock and never torn: a reader
// gets one text that somebody set, whole. A writer fills a slot that no reader is sent to and then
// publishes it; so a thread that is stopped in the middle of setting holds nobody up. Writers are
// bounded in time (the audio thread may set), up to kSlots - 2 of them at once; readers begin again
// only while writers keep overtaking them. kCapacity counts bytes with the terminator.
template <std::size_t kCapacity, std::size_t kSlots = 8>
class CSharedText {
  public:
    CSharedText() = default;
    explicit CSharedText(std::string_view text) noexcept { Set(text); }
    CSharedText(const CSharedText&) = delete;
    CSharedText& operator=(const CSharedText&) = delete;

    void Set(std::string_view text) noexcept;
    // Copies the text into `to` by the rules of CopyText and returns its length there.
    std::size_t Get(std::span<char> to) const noexcept;

  private:
    using Word = std::uint64_t;
    static constexpr std::size_t kWords = (kCapacity + sizeof(Word) - 1) / sizeof(Word);

    // `state` is twice the ticket of the text that the slot holds, plus 1 while it is being
    // written.
    struct Slot {
        std::atomic<std::uint64_t> state{0};
        std::array<std::atomic<Word>, kWords> words{};
    };

    static bool HasTerminator(Word word) noexcept;

    std::array<Slot, kSlots> slots{};
    std::atomic<std::uint64_t> lastTicket{0};
    std::atomic<std::uint64_t> latest{
        0};  // ticket of the newest complete text; slot 0 starts as the empty text 0
};

template <std::size_t kCapacity, std::size_t kSlots>
bool CSharedText<kCapacity, kSlots>::HasTerminator(Word word) noexcept {
    std::array<char, sizeof(Word)> bytes;
    std::memcpy(bytes.data(), &word, sizeof(Word));
    return std::memchr(bytes.data(), 0, bytes.size()) != nullptr;
}

template <std::size_t kCapacity, std::size_t kSlots>
void CSharedText<kCapacity, kSlots>::Set(std::string_view text) noexcept {
    std::array<char, kWords * sizeof(Word)> bytes;
    const std::size_t length = CopyText(std::span(bytes).first(kCapacity), text);
    const std::size_t numWords = length / sizeof(Word) + 1;
    std::memset(bytes.data() + length, 0, numWords * sizeof(Word) - length);

    for (std::size_t attempt = 0; attempt < 4 * kSlots; ++attempt) {
        const std::uint64_t ticket = lastTicket.fetch_add(1, std::memory_order_relaxed) + 1;
        const std::uint64_t newest = latest.load(std::memory_order_acquire);
        Slot& slot = slots[ticket % kSlots];
        std::uint64_t state = slot.state.load(std::memory_order_relaxed);
        const bool taken = (state & 1u) != 0 || state / 2 >= ticket;
        if (taken || newest % kSlots == ticket % kSlots ||
            !slot.state.compare_exchange_strong(state, 2 * ticket + 1, std::memory_order_acq_rel))
            continue;

        for (std::size_t i = 0; i < numWords; ++i) {
            Word word;
            std::memcpy(&word, bytes.data() + i * sizeof(Word), sizeof(Word));
            // Release: a reader that sees this word also sees that the slot is being written.
            slot.words[i].store(word, std::memory_order_release);
        }
        slot.state.store(2 * ticket, std::memory_order_release);

        std::uint64_t published = newest;
        while (published < ticket && !latest.compare_exchange_weak(published, ticket)) {
        }
        return;
    }
}

template <std::size_t kCapacity, std::size_t kSlots>
std::size_t CSharedText<kCapacity, kSlots>::Get(std::span<char> to) const noexcept {
    std::array<char, kWords * sizeof(Word)> bytes;
    for (;;) {
        const std::uint64_t ticket = latest.load(std::memory_order_acquire);
        const Slot& slot = slots[ticket % kSlots];
        if (slot.state.load(std::memory_order_acquire) != 2 * ticket) continue;
        for (std::size_t i = 0; i < kWords; ++i) {
            const Word word = slot.words[i].load(std::memory_order_acquire);
            std::memcpy(bytes.data() + i * sizeof(Word), &word, sizeof(Word));
            if (HasTerminator(word)) break;
        }
        if (slot.state.load(std::memory_order_relaxed) != 2 * ticket) continue;
        return CopyText(to, {bytes.data(), kCapacity});
    }
}

}  // namespace norava
