#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "dsp/key_kernel.h"
#include "reference/reference_key.h"

// All keys of an instrument, as the product plays them and as the plain reference does.

namespace norava {

inline constexpr int kMaxBlock = 400;

struct Instrument {
    explicit Instrument(KernelPath kernelPath) : path(kernelPath) {
        for (int k = 0; k < kNumKeys; ++k) {
            own.push_back(std::make_unique<CNoravaKey>(kFirstKeyNote + k, settings));
            keys.push_back(own.back().get());
        }
    }
    void render(int frames) {
        left.assign(kMaxBlock, 0.0f);
        right.assign(kMaxBlock, 0.0f);
        processKeys(path, settings, left.data(), right.data(), frames, keys.data(), &peak1, &peak2);
    }

    KernelPath path;
    SoundSettings settings;
    std::vector<std::unique_ptr<CNoravaKey>> own;
    std::vector<CNoravaKey*> keys;
    std::vector<float> left, right;
    float peak1 = 0, peak2 = 0;
};

struct Twin {
    Twin() {
        keys.reserve(kNumKeys);
        for (int k = 0; k < kNumKeys; ++k)
            keys.emplace_back(kFirstKeyNote + k, settings);
    }
    void render(int frames) {
        left.assign(kMaxBlock, 0.0f);
        right.assign(kMaxBlock, 0.0f);
        reference::processKeys(keys, seed, left.data(), right.data(), frames, &peak1, &peak2);
    }

    SoundSettings settings;
    std::vector<reference::Key> keys;
    std::uint32_t seed = 0;
    std::vector<float> left, right;
    float peak1 = 0, peak2 = 0;
};

// Copies the sound, not what an instrument keeps for itself.
inline void copySound(const SoundSettings& from, SoundSettings& to) {
    const auto seed = to.noiseSeed;
    const auto sounding = to.activeKeys;
    to = from;
    to.noiseSeed = seed;
    to.activeKeys = sounding;
    to.plan = ModulationPlan{};
}

}  // namespace norava
