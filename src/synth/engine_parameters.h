#pragma once

#include <array>

#include "dsp/sound_settings.h"
#include "fx/effects_chain.h"
#include "parameters/parameter_index.h"

namespace norava {

// Tells the voices that the settings have changed: they keep what they computed while the number
// stands still.
inline void RaiseRevision(SoundSettings& sound) {
    if (++sound.revision == 0) sound.revision = 1;  // 0 is "never seen" to the voices
}

// Where each parameter leads: a field of the voices' or the delay's settings, a setter of an
// effect, or one of the two quantities that the renderer itself uses. Audio thread, or the only
// thread there is.
class EngineParameters {
  public:
    // Both outlive this object.
    EngineParameters(SoundSettings& sound, CNoravaFX& effects);

    // Applies the stored value of parameter `index` (0..kNumParameters - 1), whatever it is. An
    // equal value is applied too: a resonator band that is switched on again starts from silence.
    void Apply(int index, float raw);

    float GetMasterGain() const { return masterGain_; }  // 0.0158..1000
    float GetLfoRate() const { return lfoRateHz_; }      // 0.01..10.01 Hz

  private:
    // Amount and inversion arrive one by one and meet in one factor.
    struct RoutingKnobs {
        float amount = 0.0f;
        bool inverted = false;
    };

    void BindVoices();
    void BindEffects();
    void ApplyToMatrix(int slot, int part, double value);
    void ApplyToEffects(int index, float value);

    SoundSettings& sound_;
    CNoravaFX& effects_;
    float masterGain_ = 0.0f;
    float lfoRateHz_ = 0.0f;
    std::array<RoutingKnobs, kMatrixSlots> knobs_{};
    // The plain fields among the targets, null for parameters that need more than a store.
    std::array<float*, kNumParameters> values_{};
    std::array<bool*, kNumParameters> switches_{};
};

}  // namespace norava
