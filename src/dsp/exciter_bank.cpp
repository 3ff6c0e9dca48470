#include "dsp/exciter_bank.h"

#include <bit>

#include "dsp/key_voice.h"

namespace norava {

namespace {

using Fields = std::array<float, ExciterBank::kFields>;

constexpr int kAmp = 13;
constexpr int kLoCutX1 = 16;
constexpr int kLoCutY2 = 19;
static_assert(offsetof(KeyExciter, amp) == kAmp * sizeof(float));
static_assert(offsetof(KeyExciter, loCutX1) == kLoCutX1 * sizeof(float));
static_assert(offsetof(KeyExciter, loCutY2) == kLoCutY2 * sizeof(float));

}  // namespace

void ExciterBank::seatAnew(const KeyMask& sounding, CNoravaKey** keys, int lanes) {
    returnStates();
    sounding_ = sounding;
    seated_ = {};
    lanes_ = lanes;
    numSeated_ = 0;
    for (unsigned w = 0; w < sounding.size(); ++w)
        for (std::uint64_t bits = sounding[w]; bits != 0; bits &= bits - 1) {
            const int key = static_cast<int>(64 * w) + std::countr_zero(bits);
            seatNext(*keys[key], key);
        }
    numSounding_ = numSeated_;
    // The silent keys of the last group of four are the instrument's own, the first ones in note
    // order: their noise runs too, and is where it got to when they start.
    for (int k = 0; k < kMostKeys && numSeated_ % 4 != 0; ++k)
        if (!keys[k]->isActive()) seatNext(*keys[k], k);
    wanted_ = seated_;
    for (int seat = numSeated_; seat % kMostLanes != 0; ++seat) {
        list_[static_cast<std::size_t>(seat)] = &nobody_;
        copyIn(seat, kFields);
    }
}

void ExciterBank::seatNext(CNoravaKey& key, int index) {
    const auto seat = static_cast<std::size_t>(numSeated_);
    list_[seat] = &key.kernelData();
    keys_[seat] = static_cast<std::uint8_t>(index);
    seats_[static_cast<std::size_t>(index)] = static_cast<std::uint8_t>(seat);
    seated_[word(index)] |= bit(index);
    copyIn(numSeated_++, kFields);
}

void ExciterBank::returnStates() {
    for (int seat = 0; seat < numSeated_; ++seat) {
        const auto i = static_cast<std::size_t>(seat);
        if (!isSeated(keys_[i])) continue;
        KeyExciter& exciter = list_[i]->exciter;
        auto fields = std::bit_cast<Fields>(exciter);
        for (int f = kCoefficients; f < kFields; ++f)
            fields[static_cast<std::size_t>(f)] = values_[at(seat, f)];
        exciter = std::bit_cast<KeyExciter>(fields);
    }
}

void ExciterBank::copyIn(int seat, int fields) {
    const auto from = std::bit_cast<Fields>(list_[static_cast<std::size_t>(seat)]->exciter);
    for (int f = 0; f < fields; ++f)
        values_[at(seat, f)] = from[static_cast<std::size_t>(f)];
}

void ExciterBank::refresh(int key) {
    if (isSeated(key)) copyIn(seats_[static_cast<std::size_t>(key)], kCoefficients);
}

void ExciterBank::clearLoCut(int key) {
    if (!isSeated(key)) return;
    for (int f = kLoCutX1; f <= kLoCutY2; ++f)
        values_[at(seats_[static_cast<std::size_t>(key)], f)] = 0.0f;
}

float ExciterBank::amplitude(int key) const {
    return isSeated(key) ? values_[at(seats_[static_cast<std::size_t>(key)], kAmp)] : 0.0f;
}

}  // namespace norava
