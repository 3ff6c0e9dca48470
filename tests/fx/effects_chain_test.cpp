#include "fx/effects_chain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "reference/reference_chain.h"

namespace norava {
namespace {

using Buffer = std::vector<float>;

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

    // Each effect is on with this chance.
    void setEverythingAtRandom(float on) {
        for (long band = 0; band < 8; ++band) {
            const float frequency = knob(), feedback = knob(), now = knob() < on ? 1.0f : 0.0f;
            const bool switches = (now != 0.0f) != twin.resonator.band(band).on;
            const auto set = [&](auto& bank) {
                bank.setBandFreq(band, frequency);
                bank.setBandFdbk(band, feedback);
                if (switches) bank.setBandOn(band, now);
            };
            set(chain.resonator());
            set(twin.resonator);
        }
        const float rate = knob(), depth = knob(), wet = knob();
        twin.setChorus(rate, depth, wet);
        chain.chorus().setRate(rate);
        chain.chorus().setDelay(depth);
        chain.chorus().setWet(wet);
        for (int index : {fxReverb::kReverb, fxReverb::kDecay, fxReverb::kHighCut}) {
            const float value = 0.6f * knob();
            chain.reverb().setParameter(index, value);
            twin.reverb.setParameter(index, value);
        }
        chain.delay = {knob(), std::floor(10.0f * knob()), knob(), knob(), knob(), knob(), knob()};
        twin.settings = chain.delay;
        twin.tempo = 40.0 + 200.0 * static_cast<double>(knob());
        chain.setTempo(twin.tempo);
        twin.chorusOn = knob() < on;
        twin.reverbOn = knob() < on;
        twin.delayOn = knob() < on;
        chain.chorus().setEnable(twin.chorusOn ? 1.0f : 0.0f);
        chain.setReverbEnable(twin.reverbOn);
        chain.setDelayEnable(twin.delayOn);
    }
    // Both process one block of noise, then of silence; false if a bit differs.
    [[nodiscard]] bool sameBlock(long frames) {
        Buffer left(static_cast<std::size_t>(frames));
        Buffer right(left.size());
        for (std::size_t i = 0; i < left.size() && block < silentFrom; ++i) {
            left[i] = knob() - 0.5f;
            right[i] = knob() - 0.5f;
        }
        Buffer twinLeft = left, twinRight = right;
        chain.process(left.data(), right.data(), left.data(), right.data(), frames);
        twin.process(twinLeft.data(), twinRight.data(), frames);
        ++block;
        const std::size_t bytes = left.size() * sizeof(float);
        return std::memcmp(left.data(), twinLeft.data(), bytes) == 0 &&
               std::memcmp(right.data(), twinRight.data(), bytes) == 0;
    }
};

TEST(EffectsChain, GivesTheBitsOfItsPlainTwin) {
    for (const double rate : {1000.0, 8000.0, 44100.0, 48000.0, 192000.0}) {
        Pair pair(rate);
        for (const long frames : {1L, 7L, 48L, 64L, 511L, 512L, 1500L}) {
            pair.setEverythingAtRandom(0.8f);
            pair.silentFrom = pair.block + 12;
            for (int i = 0; i < 16; ++i) {
                ASSERT_TRUE(pair.sameBlock(frames))
                    << rate << " Hz, " << frames << " frames, " << i;
                if (i == 5) pair.setEverythingAtRandom(0.8f);
                if (i == 7) pair.chain.requestReverbReset();
                if (i == 7) pair.twin.reverb.suspend();
                if (i == 9) pair.chain.reset();
                if (i == 9) pair.twin.reset();
            }
        }
    }
}

TEST(EffectsChain, KeepsTheTwinsBitsThroughSecondsOfSoundAndTail) {
    Pair pair(8000.0);
    pair.setEverythingAtRandom(1.0f);
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
        const Buffer sound = impulseResponse(chain, 8000);
        const auto echo = std::max_element(sound.begin() + 200, sound.end());
        EXPECT_NEAR(static_cast<double>(echo - sound.begin()), 4000.0, 3.0) << beats;
    }
}

}  // namespace
}  // namespace norava
