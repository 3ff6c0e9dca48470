#include "dsp/key_kernel.h"

#include <bit>

#include "dsp/key_kernel_paths.h"

namespace norava {

void updateKeys(SoundSettings& settings, int frames, CNoravaKey** keys) {
    const double seconds = frames / static_cast<double>(kInternalRate);
    for (unsigned word = 0; word < settings.activeKeys.size(); ++word) {
        for (std::uint64_t bits = settings.activeKeys[word]; bits != 0; bits &= bits - 1) {
            const int k = static_cast<int>(64 * word) + std::countr_zero(bits);
            if (keys[k]->hasSettled()) {
                keys[k]->letTimePass(frames, seconds);
            } else {
                keys[k]->updateParams(frames);
                settings.exciters.refresh(k);
            }
        }
    }
}

void processKeys(KernelPath path, SoundSettings& settings, float* left, float* right, int frames,
                 CNoravaKey** keys, float* peak1, float* peak2) {
    updateKeys(settings, frames, keys);
    if ((settings.activeKeys[0] | settings.activeKeys[1]) == 0 || frames < 1) return;

    const bool isWide = path == KernelPath::wide && kernelPathAvailable(path);
    ExciterBank& exciters = settings.exciters;
    exciters.seat(settings.activeKeys, keys, isWide ? kWideLanes : kBaselineLanes);
    const double saturation = settings.stringSaturation;
    KernelJob job{.keys = exciters.list(),
                  .numSounding = exciters.numSounding(),
                  .exciterLanes = exciters.lanes(),
                  .frames = frames,
                  .saturation = static_cast<float>(saturation * saturation * saturation * 100.0),
                  .noiseSeed = settings.noiseSeed,
                  .left = left,
                  .right = right,
                  .peak1 = *peak1,
                  .peak2 = *peak2};
#if defined(__x86_64__)
    if (isWide)
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
    processKeys(fastestKernelPath(), settings, left, right, frames, keys, peak1, peak2);
}

}  // namespace norava
