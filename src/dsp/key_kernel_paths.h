#pragma once

#include <cstdint>

#include "dsp/key_kernel_data.h"

namespace norava {

// What the kernel needs of the instrument for one block.
struct KernelJob {
    // The sounding keys in note order, then silent ones up to a whole vector; see ExciterBank.
    KeyKernelData* const* keys;
    int numSounding;
    float* exciterLanes;
    int frames;
    float saturation;  // amount of the strings' soft clipper, 0..100
    // In: the seed as it stands; out: four steps on for every frame of every group of four keys.
    std::uint32_t noiseSeed;
    float* left;
    float* right;
    float peak1;  // in and out
    float peak2;
};

inline constexpr int kBaselineLanes = 4;
inline constexpr int kWideLanes = 8;

// One function an instruction set; the wide one exists on x86 only.
void renderKeysBaseline(KernelJob& job);
void renderKeysWide(KernelJob& job);

}  // namespace norava
