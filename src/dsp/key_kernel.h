#pragma once

#include "dsp/kernel_path.h"
#include "dsp/key_voice.h"
#include "dsp/sound_settings.h"

namespace norava {

// The control block of every sounding key, which may end its note.
void updateKeys(SoundSettings& settings, int frames, CNoravaKey** keys);

// Renders `frames` frames of every sounding key at kInternalRate. `keys` holds the instrument's
// kNumKeys keys in note order. Stores the keys' sum into `left` and `right` when any key sounds,
// and leaves both alone when none does. `peak1` and `peak2` are raised to the largest magnitude of
// string 1's and string 2's output. Audio thread; allocates nothing; the time is bounded by frames
// x keys x 16 string steps.
void processKeys(SoundSettings& settings, float* left, float* right, int frames, CNoravaKey** keys,
                 float* peak1, float* peak2);
void processKeys(KernelPath path, SoundSettings& settings, float* left, float* right, int frames,
                 CNoravaKey** keys, float* peak1, float* peak2);

}  // namespace norava
