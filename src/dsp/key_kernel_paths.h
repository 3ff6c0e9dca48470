#pragma once

#include <cstdint>

#include "dsp/key_kernel_data.h"

namespace norava {

// What the kernel needs of the instrument for one block.
struct KernelJob {
    KeyKernelData* const*
        keys;  // sounding keys in note order, then silent ones up to a multiple of four
    int numSounding;
    int frames;
    float saturation;  // amount of the strings' soft clipper, 0..100
    std::uint32_t
        noiseSeed;  // in: the seed as it stands; out: four steps on for every frame of every group
    float* left;
    float* right;
    float peak1;  // in and out
    float peak2;
};

// One function an instruction set; the wide one exists on x86 only.
void renderKeysBaseline(KernelJob& job);
void renderKeysWide(KernelJob& job);

}  // namespace norava
