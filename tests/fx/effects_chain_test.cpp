#include "fx/effects_chain.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <random>
#include <vector>

#include "reference/reference_chain.h"

namespace norava {
namespace {

using Buffer = std::vector<float>;

// Index of the first sample whose bits differ, -1 if there is none.
long firstDifference(const Buffer& a, const Buffer& b) {
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::bit_cast<std::uint32_t>(a[i]) != std::bit_cast<std::uint32_t>(b[i])) {
            return static_cast<long>(i);
        }
    }
    return -1;
}

// The library's chain and its twin, given the same settings and the same sound.
struct Pair {
    CNoravaFX chain;
    reference::Chain twin;
    std::minstd_rand random{7};
    int silentFrom = 1 << 30;  // block
    int block = 0;

    explicit Pair(double rate) { setSampleRate(rate); }
    void setSampleRate(double rate) {
        chain.setSampleRate(rate);
        twin.setSampleRate(rate);
    }
    float knob() { return std::uniform_real_distribution<float>(0.0f, 1.0f)(random); }

    void setBand(long band, float frequency, float feedback, bool on) {
        const auto k = static_cast<std::size_t>(band);
        const float switched = on ? 1.0f : 0.0f;
        chain.resonator().setBandFreq(band, frequency);
        chain.resonator().setBandFdbk(band, feedback);
        if (on != twin.resonator.bands[k].on) chain.resonator().setBandOn(band, switched);
        if (on != twin.resonator.bands[k].on) twin.resonator.setBandOn(k, switched);
        twin.resonator.setBandFreq(k, frequency);
        twin.resonator.setBandFdbk(k, feedback);
    }
    void setChorus(bool on, float rate, float depth, float wet) {
        twin.chorusOn = on;
        twin.setChorus(rate, depth, wet);
        chain.chorus().setEnable(on ? 1.0f : 0.0f);
        chain.chorus().setRate(rate);
        chain.chorus().setDelay(depth);
        chain.chorus().setWet(wet);
    }
    void setReverb(bool on, float mix, float decay, float color) {
        twin.reverbOn = on;
        chain.setReverbEnable(on);
        const std::pair<int, float> values[] = {
            {fxReverb::kReverb, mix}, {fxReverb::kDecay, decay}, {fxReverb::kHighCut, color}};
        for (auto [index, value] : values) {
            twin.reverb.setParameter(index, value);
            chain.reverb().setParameter(index, value);
        }
    }
    void setDelay(bool on, const DelaySettings& settings, double tempo) {
        twin.delayOn = on;
        twin.settings = settings;
        twin.tempo = tempo;
        chain.setDelayEnable(on);
        chain.delay = settings;
        chain.setTempo(tempo);
    }
    void setEverythingAtRandom() {
        for (long band = 0; band < 8; ++band)
            setBand(band, knob(), knob(), knob() < 0.8f);
        setChorus(knob() < 0.8f, knob(), knob(), knob());
        setReverb(knob() < 0.8f, knob(), 0.6f * knob(), knob());
        setDelay(knob() < 0.8f,
                 {knob(), std::floor(10.0f * knob()), knob(), knob(), knob(), knob(), knob()},
                 40.0 + 200.0 * static_cast<double>(knob()));
    }
    // Both process one block of noise, then of silence; false if a bit differs.
    [[nodiscard]] bool sameBlock(long frames) {
        Buffer left(static_cast<std::size_t>(frames));
        Buffer right(left.size());
        for (std::size_t i = 0; i < left.size() && block < silentFrom; ++i) {
            left[i] = knob() - 0.5f;
            right[i] = knob() - 0.5f;
        }
        Buffer twinLeft = left;
        Buffer twinRight = right;
        chain.process(left.data(), right.data(), left.data(), right.data(), frames);
        twin.process(twinLeft.data(), twinRight.data(), frames);
        ++block;
        return firstDifference(left, twinLeft) < 0 && firstDifference(right, twinRight) < 0;
    }
};

TEST(EffectsChain, GivesTheBitsOfItsPlainTwin) {
    for (const double rate : {1000.0, 8000.0, 44100.0, 48000.0, 192000.0}) {
        Pair pair(rate);
        for (const long frames : {1L, 7L, 48L, 64L, 511L, 512L, 1500L}) {
            pair.setEverythingAtRandom();
            pair.silentFrom = pair.block + 12;
            for (int i = 0; i < 16; ++i) {
                ASSERT_TRUE(pair.sameBlock(frames))
                    << rate << " Hz, " << frames << " frames, " << i;
                if (i == 5) pair.setEverythingAtRandom();
                if (i == 9) pair.chain.reset();
                if (i == 9) pair.twin.reset();
            }
        }
    }
}

TEST(EffectsChain, KeepsTheTwinsBitsThroughSecondsOfSoundAndTail) {
    Pair pair(8000.0);
    for (long band = 0; band < 8; ++band) {
        pair.setBand(band, 0.1f * static_cast<float>(band), 0.9f, true);
    }
    pair.setChorus(true, 0.5f, 0.5f, 0.4f);
    pair.setReverb(true, 0.5f, 0.075f, 0.125f);
    pair.setDelay(true, {0.3f, 0.0f, 0.6f, 0.24f, 0.2f, 0.5f, 0.35f}, 120.0);
    pair.silentFrom = 400;
    for (int i = 0; i < 3000; ++i) {
        ASSERT_TRUE(pair.sameBlock(64)) << i;
        if (i == 300) pair.setSampleRate(11025.0);
    }
}

// What one impulse on the left gives on the left.
Buffer impulseResponse(CNoravaFX& chain, std::size_t frames) {
    Buffer left(frames);
    Buffer right(frames);
    left[0] = 1.0f;
    chain.process(left.data(), right.data(), left.data(), right.data(), static_cast<long>(frames));
    return left;
}

std::size_t loudest(const Buffer& buffer, std::size_t from, std::size_t to) {
    const auto louder = [](float a, float b) { return std::fabs(a) < std::fabs(b); };
    const auto first = buffer.begin() + static_cast<long>(from);
    return static_cast<std::size_t>(
        std::max_element(first, buffer.begin() + static_cast<long>(to), louder) - buffer.begin());
}

TEST(EffectsChain, DelaysByTheTempoMenu) {
    CNoravaFX chain;
    chain.setSampleRate(8000.0);
    chain.setDelayEnable(true);
    chain.delay.wet = 1.0f;
    // From "1/16" on, each at a tempo that makes it half a second.
    for (const double beats : {0.25, 0.5, 0.75, 1.0, 2.0, 3.0, 4.0, 8.0, 16.0}) {
        chain.delay.tempoSelector += 1.0f;
        chain.setTempo(120.0 * beats);
        // What is no tempo leaves the last one in force.
        for (const double bad : {0.0, -60.0, std::nan(""), HUGE_VAL})
            chain.setTempo(bad);
        impulseResponse(chain, 16000);  // wet gain and speed glide to their places
        const Buffer echo = impulseResponse(chain, 8000);
        EXPECT_NEAR(static_cast<double>(loudest(echo, 200, 8000)), 4000.0, 3.0) << beats;
    }
}

TEST(EffectsChain, IsSilentWithoutInput) {
    CNoravaFX chain;
    chain.setSampleRate(48000.0);
    chain.setDelayEnable(true);
    for (long band = 0; band < 8; ++band)
        chain.resonator().setBandOn(band, 1.0f);
    chain.chorus().setEnable(1.0f);
    Buffer left(4096);
    Buffer right(4096);
    chain.process(left.data(), right.data(), left.data(), right.data(), 4096);
    EXPECT_EQ(left, Buffer(4096));
    EXPECT_EQ(right, Buffer(4096));
}

TEST(EffectsChain, SoundsAsNewAfterReset) {
    const auto prepared = [] {
        auto chain = std::make_unique<CNoravaFX>();
        chain->setSampleRate(8000.0);
        chain->chorus().setEnable(1.0f);
        chain->chorus().setWet(0.5f);
        chain->setReverbEnable(true);
        chain->setDelayEnable(true);
        chain->delay = {0.1f, 0.0f, 0.8f, 0.5f, 0.5f, 0.5f, 0.5f};
        for (long band = 0; band < 8; ++band)
            chain->resonator().setBandOn(band, 1.0f);
        return chain;
    };
    const auto fresh = prepared();
    const auto used = prepared();
    impulseResponse(*fresh, 1);  // settings are applied with the first block
    fresh->reset();
    impulseResponse(*used, 30001);
    used->reset();
    EXPECT_EQ(firstDifference(impulseResponse(*fresh, 30000), impulseResponse(*used, 30000)), -1);
}

TEST(EffectsChain, StaysFiniteWithHostileSettings) {
    const float values[] = {NAN, INFINITY, -INFINITY, -1.0f, 1e30f, -0.0f, 1e-40f};
    for (const double rate : {0.0, -1.0, 1e9, static_cast<double>(NAN), 48000.0}) {
        CNoravaFX chain;
        chain.setSampleRate(rate);
        for (const float v : values) {
            for (long band = -1; band < 9; ++band) {
                chain.resonator().setBandFreq(band, v);
                chain.resonator().setBandFdbk(band, v);
                chain.resonator().setBandOn(band, v);
            }
            chain.chorus().setEnable(1.0f);
            chain.chorus().setRate(v);
            chain.chorus().setDelay(v);
            chain.chorus().setWet(0.5f);
            chain.setReverbEnable(true);
            for (int i = -1; i < 19; ++i)
                chain.reverb().setParameter(i, v);
            chain.setDelayEnable(true);
            chain.delay = {v, v, v, v, v, v, v};
            chain.setTempo(static_cast<double>(v));
            for (const float sample : impulseResponse(chain, 3000))
                ASSERT_TRUE(std::isfinite(sample));
        }
    }
}

}  // namespace
}  // namespace norava
