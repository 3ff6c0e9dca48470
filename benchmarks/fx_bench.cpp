// The effects after the voices, in core cycles a frame at 48 kHz, and how many times longer their
// plain scalar twin takes in the same minute.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "benchmarks/cycles.h"
#include "framework/denormal_guard.h"
#include "fx/effects_chain.h"
#include "reference/reference_chain.h"

namespace norava::bench {
namespace {

constexpr double kSampleRate = 48000.0;
constexpr int kBlockFrames = 64;
constexpr DelaySettings kDelay = {0.5f, 0.0f, 0.6f, 0.24f, 0.2f, 0.5f, 0.35f};

// What sounds in a chain, one bit each.
enum Effects : unsigned { none = 0, resonator = 1, chorus = 2, reverb = 4, delay = 8, all = 15 };

// The panel's default settings, the bands spread over the keyboard.
template <class Bank>
void tuneBands(Bank& bank, bool on) {
    for (long band = 0; band < CResonator::kBands; ++band) {
        bank.setBandFreq(band, 0.2f + 0.09f * static_cast<float>(band));
        bank.setBandFdbk(band, 0.9f);
        bank.setBandOn(band, on ? 1.0f : 0.0f);
    }
}

struct Product {
    explicit Product(unsigned effects) {
        chain.setSampleRate(kSampleRate);
        tuneBands(chain.resonator(), (effects & resonator) != 0);
        chain.chorus().setRate(0.5f);
        chain.chorus().setDelay(0.5f);
        chain.chorus().setWet(0.4f);
        chain.chorus().setEnable((effects & chorus) != 0 ? 1.0f : 0.0f);
        chain.setReverbEnable((effects & reverb) != 0);
        chain.setDelayEnable((effects & delay) != 0);
        chain.delay = kDelay;
    }
    void process(float* left, float* right, int frames) {
        chain.process(left, right, left, right, frames);
    }
    CNoravaFX chain;
};

struct PlainTwin {
    explicit PlainTwin(unsigned effects) {
        chain.setSampleRate(kSampleRate);
        tuneBands(chain.resonator, (effects & resonator) != 0);
        chain.setChorus(0.5f, 0.5f, 0.4f);
        chain.chorusOn = (effects & chorus) != 0;
        chain.reverbOn = (effects & reverb) != 0;
        chain.delayOn = (effects & delay) != 0;
        chain.settings = kDelay;
    }
    void process(float* left, float* right, int frames) { chain.process(left, right, frames); }
    reference::Chain chain;
};

// One chain and the sound that goes through it.
template <class Chain>
class Rig {
  public:
    Rig(unsigned effects, int blockFrames)
        : chain_(std::make_unique<Chain>(effects)),
          left_(static_cast<std::size_t>(blockFrames)),
          right_(left_.size()) {
        std::minstd_rand random(1);
        std::uniform_real_distribution<float> noise(-0.1f, 0.1f);
        for (float& sample : source_)
            sample = noise(random);
    }
    void play(double seconds) {
        const int blocks = static_cast<int>(seconds * kSampleRate) / static_cast<int>(left_.size());
        for (int i = 0; i < blocks; ++i)
            block();
    }
    void fallSilent() { std::fill(source_.begin(), source_.end(), 0.0f); }
    // A thousand frames at least, so that the clock's own cost does not count.
    int measuredBlocks() const { return std::max(1024 / static_cast<int>(left_.size()), 1); }
    double measuredFrames() const { return measuredBlocks() * static_cast<double>(left_.size()); }
    void measure(Measurements& measured) {
        measured.take([&] {
            for (int i = 0; i < measuredBlocks(); ++i)
                block();
        });
    }

  private:
    void block() {
        if (at_ + left_.size() > source_.size()) at_ = 0;
        std::copy_n(source_.begin() + static_cast<long>(at_), left_.size(), left_.begin());
        std::copy_n(source_.begin() + static_cast<long>(at_), left_.size(), right_.begin());
        at_ += left_.size();
        chain_->process(left_.data(), right_.data(), static_cast<int>(left_.size()));
    }

    std::unique_ptr<Chain> chain_;
    std::vector<float> left_, right_;
    std::vector<float> source_ = std::vector<float>(static_cast<std::size_t>(kSampleRate));
    std::size_t at_ = 0;
};

// Silence from the start, sound all the time, or the tail of sound long gone.
enum class Input { silence, sound, tail };

void effects(benchmark::State& state, unsigned on, int blockFrames, Input input) {
    const CDenormalGuard guard;
    Rig<Product> product(on, blockFrames);
    Rig<PlainTwin> twin(on, blockFrames);
    if (input == Input::silence) product.fallSilent();
    if (input == Input::silence) twin.fallSilent();
    product.play(3.0);
    twin.play(3.0);
    if (input == Input::tail) {
        product.fallSilent();
        twin.fallSilent();
        product.play(20.0);
        twin.play(20.0);
    }
    Measurements ofProduct;
    Measurements ofTwin;
    for (auto _ : state) {
        product.measure(ofProduct);
        twin.measure(ofTwin);
    }
    state.counters["cycles/frame"] = ofProduct.undisturbed() / product.measuredFrames();
    state.counters["twin/product"] = ofTwin.timesLongerThan(ofProduct);
}
BENCHMARK_CAPTURE(effects, idle, none, kBlockFrames, Input::silence);
BENCHMARK_CAPTURE(effects, highPass, none, kBlockFrames, Input::sound);
BENCHMARK_CAPTURE(effects, resonator, resonator, kBlockFrames, Input::sound);
BENCHMARK_CAPTURE(effects, chorus, chorus, kBlockFrames, Input::sound);
BENCHMARK_CAPTURE(effects, reverb, reverb, kBlockFrames, Input::sound);
BENCHMARK_CAPTURE(effects, delay, delay, kBlockFrames, Input::sound);
BENCHMARK_CAPTURE(effects, all, all, kBlockFrames, Input::sound);
BENCHMARK_CAPTURE(effects, allTails, all, kBlockFrames, Input::tail);
BENCHMARK_CAPTURE(effects, allFramesOf1, all, 1, Input::sound);
BENCHMARK_CAPTURE(effects, allFramesOf512, all, 512, Input::sound);

// Milliseconds that a chain takes to be made for 44.1 kHz and go on to 48 kHz.
void effectsMade(benchmark::State& state) {
    for (auto _ : state) {
        auto chain = std::make_unique<CNoravaFX>();
        chain->setSampleRate(44100.0);
        chain->setSampleRate(kSampleRate);
        benchmark::DoNotOptimize(chain);
    }
}
BENCHMARK(effectsMade)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace norava::bench
