#pragma once

#include <array>
#include <cstdint>

#include "dsp/key_kernel_data.h"

namespace norava {

class CNoravaKey;

// One bit a key: bit k % 64 of word k / 64.
using KeyMask = std::array<std::uint64_t, 2>;

// The sounding keys' exciters side by side, as the kernel's vectors take them: nobody has to turn
// them over as long as the same keys sound. While a key is seated here, so are its states; its
// coefficients are copied from the key whenever that has changed them. Audio thread.
class ExciterBank {
  public:
    static constexpr int kFields = sizeof(KeyExciter) / sizeof(float);
    static constexpr int kMostKeys = 84;
    static constexpr int kMostLanes = 8;  // of the widest vector
    static constexpr int kSeats = (kMostKeys + kMostLanes - 1) / kMostLanes * kMostLanes;

    ExciterBank() = default;
    // What is seated belongs to one instrument; a copy of its settings does not take it along.
    ExciterBank(const ExciterBank&) {}
    ExciterBank& operator=(const ExciterBank&) { return *this; }

    // Seats the keys that sound, in note order, for vectors of `lanes` lanes, and silent ones
    // behind them that complete the last group of four and the last vector. Does nothing if they
    // are seated. `keys` holds all keys of the instrument.
    void seat(const KeyMask& sounding, CNoravaKey** keys, int lanes) {
        if (sounding != sounding_ || seated_ != wanted_ || lanes != lanes_)
            seatAnew(sounding, keys, lanes);
    }
    // The key's coefficients have changed.
    void refresh(int key);
    // The key has forgotten its sound: what is here counts no more.
    void leave(int key) { seated_[word(key)] &= ~bit(key); }
    // Forgets what the key's lo-cut has heard.
    void clearLoCut(int key);
    // The amplitude of a key that sounds.
    float amplitude(int key) const;

    // The seated keys; KeyKernelData of silent keys, or of none, stands behind those that sound.
    KeyKernelData* const* list() const { return list_.data(); }
    int numSounding() const { return numSounding_; }
    // kFields vectors of `lanes` floats for every `lanes` keys.
    float* lanes() { return values_.data(); }

  private:
    static constexpr int kCoefficients = 13;  // of the fields; states follow

    static unsigned word(int key) { return static_cast<unsigned>(key) / 64 % 2; }
    static std::uint64_t bit(int key) {
        return std::uint64_t{1} << (static_cast<unsigned>(key) % 64);
    }
    bool isSeated(int key) const { return (seated_[word(key)] & bit(key)) != 0; }
    std::size_t at(int seat, int field) const {
        return static_cast<std::size_t>(kFields * (seat - seat % lanes_) + lanes_ * field +
                                        seat % lanes_);
    }
    void seatAnew(const KeyMask& sounding, CNoravaKey** keys, int lanes);
    void returnStates();
    void seatNext(CNoravaKey& key, int index);
    void copyIn(int seat, int fields);

    alignas(32) std::array<float, kSeats * kFields> values_{};
    std::array<KeyKernelData*, kSeats> list_{};
    std::array<std::uint8_t, kMostKeys> seats_{};
    std::array<std::uint8_t, kSeats> keys_{};
    KeyKernelData nobody_;
    KeyMask sounding_{};
    KeyMask wanted_{};  // the keys that were seated
    KeyMask seated_{};  // those that have not left since
    int numSeated_ = 0;
    int numSounding_ = 0;
    int lanes_ = 1;
};

}  // namespace norava
