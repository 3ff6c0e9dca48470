// The key voices, in core cycles a frame and key at their internal rate: as the product renders
// them on each path, and as the plain twin does.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "benchmarks/cycles.h"
#include "dsp/key_kernel.h"
#include "framework/denormal_guard.h"
#include "reference/reference_key.h"

namespace norava::bench {
namespace {

// A host block of 64 frames at 48 kHz reaches the voices as 48 and 16 frames.
constexpr std::array<int, 2> kChunks = {48, 16};
constexpr int kBlockFrames = 64;
constexpr int kSettleBlocks = 800;

// Both strings, both combs and the filters at work, velocity and pitch wheel routed.
void makeSound(SoundSettings& s) {
    s.string1.decay = s.string2.decay = 0.9f;
    s.stringMix = 0.5f;
    s.combFeedback = 0.3f;
    s.combLevel = 0.5f;
    s.hiCutCutoff = 0.9f;
    s.hiCutSustain = 0.5f;
    s.noiseRate = 0.5f;
    s.matrix[0] = {.source = 6, .amount = 1.0f, .destination = 1};
    s.matrix[1] = {.source = 4, .amount = 1.0f, .destination = 3};
}

struct Keys {
    explicit Keys(int sounding) {
        makeSound(settings);
        std::size_t bytes = 0;
        for (int k = 0; k < kNumKeys; ++k)
            bytes += CNoravaKey::bytesFor(kFirstKeyNote + k);
        LineMemory lines(bytes);
        for (std::size_t k = 0; k < kNumKeys; ++k)
            keys.push_back(&own[k].emplace(kFirstKeyNote + static_cast<int>(k), settings, lines));
        for (int k = 0; k < sounding; ++k)
            keys[static_cast<std::size_t>(k)]->start(0.8f);
    }
    void block(KernelPath path) {
        for (const int count : kChunks)
            frames(path, count);
    }
    void frames(KernelPath path, int count) {
        processKeys(path, settings, left, right, count, keys.data(), &peak1, &peak2);
    }

    SoundSettings settings;
    std::array<std::optional<CNoravaKey>, kNumKeys> own;
    std::vector<CNoravaKey*> keys;
    float left[kBlockFrames] = {}, right[kBlockFrames] = {};
    float peak1 = 0, peak2 = 0;
};

void report(benchmark::State& state, const Measurements& measured, int keys) {
    const double cycles = measured.undisturbed();
    state.counters["cycles/frame"] = cycles / kBlockFrames;
    state.counters["cycles/frame/key"] = cycles / kBlockFrames / keys;
}

void soundingKeys(benchmark::State& state, KernelPath path) {
    if (!kernelPathAvailable(path)) return state.SkipWithError("not on this machine");
    const CDenormalGuard guard;
    const int sounding = static_cast<int>(state.range(0));
    Keys keys(sounding);
    for (int i = 0; i < kSettleBlocks; ++i)
        keys.block(path);
    Measurements measured;
    for (auto _ : state)
        measured.take([&] { keys.block(path); });
    report(state, measured, sounding);
}
BENCHMARK_CAPTURE(soundingKeys, baseline, KernelPath::baseline)->Arg(1)->Arg(4)->Arg(16)->Arg(84);
BENCHMARK_CAPTURE(soundingKeys, wide, KernelPath::wide)->Arg(1)->Arg(4)->Arg(16)->Arg(84);

// Hosts that cut at every frame.
void soundingKeysFramesOf1(benchmark::State& state, KernelPath path) {
    if (!kernelPathAvailable(path)) return state.SkipWithError("not on this machine");
    const CDenormalGuard guard;
    const int sounding = static_cast<int>(state.range(0));
    Keys keys(sounding);
    for (int i = 0; i < kSettleBlocks; ++i)
        keys.block(path);
    Measurements measured;
    for (auto _ : state)
        measured.take([&] {
            for (int i = 0; i < kBlockFrames; ++i)
                keys.frames(path, 1);
        });
    report(state, measured, sounding);
}
BENCHMARK_CAPTURE(soundingKeysFramesOf1, baseline, KernelPath::baseline)->Arg(1)->Arg(84);
BENCHMARK_CAPTURE(soundingKeysFramesOf1, wide, KernelPath::wide)->Arg(1)->Arg(8)->Arg(83)->Arg(84);

void soundingKeysPlainTwin(benchmark::State& state) {
    const CDenormalGuard guard;
    SoundSettings settings;
    makeSound(settings);
    std::vector<reference::Key> keys;
    keys.reserve(kNumKeys);
    for (int k = 0; k < kNumKeys; ++k) {
        keys.emplace_back(kFirstKeyNote + k, settings);
        keys.back().start(0.8f);
    }
    std::uint32_t seed = 0;
    float left[kBlockFrames], right[kBlockFrames], peak1 = 0, peak2 = 0;
    Measurements measured;
    for (auto _ : state)
        measured.take([&] {
            for (const int frames : kChunks)
                reference::processKeys(keys, seed, left, right, frames, &peak1, &peak2);
        });
    report(state, measured, kNumKeys);
}
BENCHMARK(soundingKeysPlainTwin);

// What a key's control block costs while nothing changes, spread over a block's frames.
void controlBlock(benchmark::State& state) {
    Keys keys(kNumKeys);
    Measurements measured;
    for (auto _ : state)
        measured.take([&] {
            for (const int frames : kChunks)
                updateKeys(keys.settings, frames, keys.keys.data());
        });
    report(state, measured, kNumKeys);
}
BENCHMARK(controlBlock);

void idleKeys(benchmark::State& state) {
    Keys keys(0);
    constexpr int kBlocks = 64;
    Measurements measured;
    for (auto _ : state)
        measured.take([&] {
            for (int i = 0; i < kBlocks; ++i)
                keys.block(fastestKernelPath());
        });
    state.counters["cycles/frame"] = measured.undisturbed() / kBlockFrames / kBlocks;
}
BENCHMARK(idleKeys);

}  // namespace
}  // namespace norava::bench
