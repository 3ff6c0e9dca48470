// The effects after the voices, in core cycles a frame at 48 kHz.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "benchmarks/cycles.h"
#include "fx/effects_chain.h"

namespace norava::bench {
namespace {

constexpr double kSampleRate = 48000.0;
constexpr int kBlockFrames = 64;

// Everything that sounds in a chain, one bit each.
enum Effects : unsigned { none = 0, resonator = 1, chorus = 2, reverb = 4, delay = 8, all = 15 };

// A chain with the given effects at the panel's default settings, the bands spread over the
// keyboard.
std::unique_ptr<CNoravaFX> makeChain(unsigned effects) {
    auto chain = std::make_unique<CNoravaFX>();
    chain->setSampleRate(kSampleRate);
    for (long band = 0; band < CResonator::kBands; ++band) {
        chain->resonator().setBandFreq(band, 0.2f + 0.09f * static_cast<float>(band));
        chain->resonator().setBandFdbk(band, 0.9f);
        chain->resonator().setBandOn(band, (effects & resonator) != 0 ? 1.0f : 0.0f);
    }
    chain->chorus().setRate(0.5f);
    chain->chorus().setDelay(0.5f);
    chain->chorus().setWet(0.4f);
    chain->chorus().setEnable((effects & chorus) != 0 ? 1.0f : 0.0f);
    chain->setReverbEnable((effects & reverb) != 0);
    chain->setDelayEnable((effects & delay) != 0);
    chain->delay = {0.5f, 0.0f, 0.6f, 0.24f, 0.2f, 0.5f, 0.35f};
    return chain;
}

void chainBlocks(benchmark::State& state, unsigned effects, int blockFrames, float level) {
    const auto chain = makeChain(effects);
    std::minstd_rand random(1);
    std::uniform_real_distribution<float> noise(-level, level);
    std::vector<float> source(kSampleRate);
    for (float& sample : source)
        sample = noise(random);
    std::vector<float> left(static_cast<std::size_t>(blockFrames));
    std::vector<float> right(static_cast<std::size_t>(blockFrames));
    std::size_t at = 0;
    const auto block = [&] {
        if (at + left.size() > source.size()) at = 0;
        std::copy_n(source.begin() + static_cast<long>(at), left.size(), left.begin());
        std::copy_n(source.begin() + static_cast<long>(at), right.size(), right.begin());
        at += left.size();
        chain->process(left.data(), right.data(), left.data(), right.data(), blockFrames);
    };
    const int settleBlocks = static_cast<int>(3.0 * kSampleRate) / blockFrames;
    for (int i = 0; i < settleBlocks; ++i)
        block();

    // A few hundred frames a measurement, so that the clock's own cost does not count.
    const int blocks = std::max(1024 / blockFrames, 1);
    double least = std::numeric_limits<double>::infinity();
    for (auto _ : state) {
        least = std::min(least, coreCyclesOnce([&] {
                             for (int i = 0; i < blocks; ++i)
                                 block();
                         }));
    }
    state.counters["cycles/frame"] = least / (blocks * blockFrames);
}

BENCHMARK_CAPTURE(chainBlocks, idle, none, kBlockFrames, 0.0f);
BENCHMARK_CAPTURE(chainBlocks, highPassOnly, none, kBlockFrames, 0.1f);
BENCHMARK_CAPTURE(chainBlocks, resonator, resonator, kBlockFrames, 0.1f);
BENCHMARK_CAPTURE(chainBlocks, chorus, chorus, kBlockFrames, 0.1f);
BENCHMARK_CAPTURE(chainBlocks, reverb, reverb, kBlockFrames, 0.1f);
BENCHMARK_CAPTURE(chainBlocks, delay, delay, kBlockFrames, 0.1f);
BENCHMARK_CAPTURE(chainBlocks, all, all, kBlockFrames, 0.1f);
BENCHMARK_CAPTURE(chainBlocks, allFramesOf1, all, 1, 0.1f);
BENCHMARK_CAPTURE(chainBlocks, allFramesOf512, all, 512, 0.1f);

}  // namespace
}  // namespace norava::bench
