#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "render/audio_file.h"
#include "render/sound.h"

namespace norava {

// How songs are rendered; the same for all songs of one call.
struct RenderSettings {
    int sampleRateHz = 48000;
    int blockFrames = 64;
    std::optional<double> tailSeconds;     // else until the sound has died away
    std::optional<double> loudnessTarget;  // LUFS
    bool pedal = false;
    bool hash = false;
    AudioFormat format;  // its rate is taken from sampleRateHz
    Sound sound;
};

// What there is to tell of a rendered song.
struct RenderResult {
    double seconds = 0.0;            // of sound
    double renderSeconds = 0.0;      // of the engine's work
    double peak = 0.0;               // of what was written; 1 is full scale
    std::optional<double> loudness;  // LUFS, of what was written; none at very low rates
    double gainDecibels = 0.0;       // of what was written against what the engine rendered
    bool tailCutShort = false;
    std::string hash;  // empty unless asked for
};

// Renders one song with an engine of its own. `progress` hears the part done, 0..1; when
// `interrupted` becomes true the rendering is given up. An empty `input` is the phrase that
// shows a program. Nothing is written for an empty `output`.
// Throws BadInput, and then leaves no file behind. Any thread.
RenderResult RenderSong(const std::filesystem::path& input, const std::filesystem::path& output,
                        const RenderSettings& settings, const std::function<void(double)>& progress,
                        const std::atomic<bool>& interrupted);

}  // namespace norava
