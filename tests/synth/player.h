#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <span>
#include <vector>

#include "framework/block_runner.h"
#include "framework/plugin_instance.h"
#include "parameters/parameter_table.h"
#include "synth/norava_synth.h"

// An instrument as a host drives it, without a host.

namespace norava::test {

class Definition : public CPluginInstance {
  public:
    Definition() {
        numParams = kNumParameters;
        numParamsAutomable = kNumHostParameters;
    }
};

// The renderer asks for the definition when it is made.
inline void NeedDefinition() {
    static Definition definition;
}

struct Stereo {
    std::vector<float> left;
    std::vector<float> right;

    float Peak() const {
        float peak = 0.0f;
        for (const auto* channel : {&left, &right}) {
            for (float x : *channel)
                peak = std::max(peak, std::abs(x));
        }
        return peak;
    }
    bool IsFinite() const {
        const auto finite = [](float x) { return std::isfinite(x); };
        return std::ranges::all_of(left, finite) && std::ranges::all_of(right, finite);
    }
    bool operator==(const Stereo&) const = default;
};

struct ParamValue {
    int index;
    float value;
};

// Lets a test break the engine from inside.
struct OpenSynth : CNoravaSynth {
    using CNoravaSynth::CNoravaSynth;
    using CNoravaSynth::keyGainLeft;
};

class Player {
  public:
    explicit Player(double rate = 48000.0, const LibraryPlace& programs = {})
        : synth((NeedDefinition(), OpenSynth(programs))) {
        synth.Reset(rate);
    }

    void Set(std::initializer_list<ParamValue> values) {
        for (const ParamValue& v : values)
            synth.SetParamValue(v.index, v.value);
    }
    void Send(int status, int data1, int data2 = 0, int position = 0) {
        std::array<unsigned char, 4> bytes{};
        std::ranges::copy(std::array{status, data1, data2}, bytes.begin());
        synth.CreateMIDIEvent(position, bytes.data(), bytes.size());
    }
    void NoteOn(int note, int velocity = 100, int position = 0) {
        Send(0x90, note, velocity, position);
    }
    void NoteOff(int note, int position = 0) { Send(0x80, note, 0, position); }
    // Host blocks of `block` frames; events that were sent lie in the first one.
    Stereo Render(int frames, int block = 512, double tempo = 120.0) {
        Stereo out;
        out.left.resize(static_cast<std::size_t>(frames));
        out.right.resize(static_cast<std::size_t>(frames));
        for (int done = 0; done < frames; done += block) {
            const std::array<float*, 2> channels{out.left.data() + done, out.right.data() + done};
            HostBlock host;
            host.outputs = channels;
            host.frames = std::min(block, frames - done);
            RunBlock(synth, host, {.tempo = tempo, .beatPos = {}, .transportChangedTo = {}});
        }
        return out;
    }

    OpenSynth synth;
};

}  // namespace norava::test
