#include "dsp/key_kernel.h"

#include <bit>

#include "dsp/key_kernel_paths.h"

namespace norava {

namespace {

#if defined(__x86_64__)
constexpr bool kHasWidePath = true;
bool machineIsWide() {
    return __builtin_cpu_supports("avx2") != 0;
}
#else
constexpr bool kHasWidePath = false;
bool machineIsWide() {
    return false;
}
#endif

const KernelPath kFastest =
    kHasWidePath && machineIsWide() ? KernelPath::wide : KernelPath::baseline;

constexpr int kListEntries = (kNumKeys + kKeysPerVector - 1) / kKeysPerVector * kKeysPerVector;
static_assert(kNumKeys % 4 == 0, "the silent keys always complete the last group");

// The sounding keys in note order, then silent ones that fill the last vector. Those that complete
// the last group of four are the instrument's own, the first ones in note order: their noise runs
// too, and is where it got to when they start. What follows them is no group: `spare` stands in.
int listKeys(const SoundSettings& settings, CNoravaKey** keys, KeyKernelData* spare,
             KeyKernelData** list) {
    int count = 0;
    for (unsigned word = 0; word < settings.activeKeys.size(); ++word)
        for (std::uint64_t bits = settings.activeKeys[word]; bits != 0; bits &= bits - 1)
            list[count++] =
                &keys[64 * word + static_cast<unsigned>(std::countr_zero(bits))]->kernelData();
    const int sounding = count;
    for (int k = 0; k < kNumKeys && count % 4 != 0; ++k)
        if (!keys[k]->isActive()) list[count++] = &keys[k]->kernelData();
    while (count % kKeysPerVector != 0)
        list[count++] = spare;
    return sounding;
}

}  // namespace

bool kernelPathAvailable(KernelPath path) {
    return path == KernelPath::baseline || kFastest == KernelPath::wide;
}

KernelPath fastestKernelPath() {
    return kFastest;
}

void updateKeys(SoundSettings& settings, int frames, CNoravaKey** keys) {
    const double seconds = frames / static_cast<double>(kInternalRate);
    for (unsigned word = 0; word < settings.activeKeys.size(); ++word) {
        for (std::uint64_t bits = settings.activeKeys[word]; bits != 0; bits &= bits - 1) {
            CNoravaKey& key = *keys[64 * word + static_cast<unsigned>(std::countr_zero(bits))];
            if (key.hasSettled())
                key.letTimePass(frames, seconds);
            else
                key.updateParams(frames);
        }
    }
}

void processKeys([[maybe_unused]] KernelPath path, SoundSettings& settings, float* left,
                 float* right, int frames, CNoravaKey** keys, float* peak1, float* peak2) {
    updateKeys(settings, frames, keys);
    if ((settings.activeKeys[0] | settings.activeKeys[1]) == 0 || frames < 1) return;

    KeyKernelData* list[kListEntries];
    KeyKernelData spare;
    const double saturation = settings.stringSaturation;
    KernelJob job{.keys = list,
                  .numSounding = listKeys(settings, keys, &spare, list),
                  .frames = frames,
                  .saturation = static_cast<float>(saturation * saturation * saturation * 100.0),
                  .noiseSeed = settings.noiseSeed,
                  .left = left,
                  .right = right,
                  .peak1 = *peak1,
                  .peak2 = *peak2};
#if defined(__x86_64__)
    if (path == KernelPath::wide)
        renderKeysWide(job);
    else
#endif
        renderKeysBaseline(job);
    settings.noiseSeed = job.noiseSeed;
    *peak1 = job.peak1;
    *peak2 = job.peak2;
}

void processKeys(SoundSettings& settings, float* left, float* right, int frames, CNoravaKey** keys,
                 float* peak1, float* peak2) {
    processKeys(kFastest, settings, left, right, frames, keys, peak1, peak2);
}

}  // namespace norava
