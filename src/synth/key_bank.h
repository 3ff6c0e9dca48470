#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <optional>

#include "dsp/key_kernel.h"
#include "dsp/key_voice.h"
#include "dsp/sound_settings.h"

namespace norava {

// The instrument's keys, one voice a note from kFirstKeyNote up: no voice is ever taken from
// another note. Audio thread, construction apart.
class KeyBank {
  public:
    // `sound` outlives the keys.
    explicit KeyBank(SoundSettings& sound);

    void Reset();

    // Notes outside the keys are ignored; a sounding key is started again. velocity 0..1.
    void Start(int note, float velocity);
    void Release(int note);

    // Stores `count` frames at kInternalRate and returns true, or leaves the buffers alone and
    // returns false when no key sounds. The peaks are raised to the largest magnitude of string 1
    // and string 2.
    bool Render(float* left, float* right, int count, float* peak1, float* peak2);

    bool IsAnySounding() const { return (sound_.activeKeys[0] | sound_.activeKeys[1]) != 0; }

    // Calls report(note, sounds) for each key that has begun or ended since the last call.
    template <typename Report>
    void ReportChanges(Report report);

  private:
    CNoravaKey* Find(int note);

    SoundSettings& sound_;
    std::array<std::optional<CNoravaKey>, kNumKeys> keys_;
    std::array<CNoravaKey*, kNumKeys> pointers_{};  // as the kernel takes them
    std::array<std::uint64_t, 2> reported_{};
};

template <typename Report>
void KeyBank::ReportChanges(Report report) {
    for (std::size_t w = 0; w < reported_.size(); ++w) {
        const std::uint64_t sounding = sound_.activeKeys[w];
        std::uint64_t changed = sounding ^ reported_[w];
        reported_[w] = sounding;
        for (; changed != 0; changed &= changed - 1) {
            const int bit = std::countr_zero(changed);
            report(kFirstKeyNote + static_cast<int>(w) * 64 + bit, (sounding >> bit & 1) != 0);
        }
    }
}

}  // namespace norava
