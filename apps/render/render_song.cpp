#include "render/render_song.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <span>
#include <vector>

#include "render/bad_input.h"
#include "render/instrument.h"
#include "render/meters.h"
#include "render/midi_song.h"
#include "render/note_endings.h"
#include "render/programs.h"
#include "render/sample_sink.h"
#include "render/song_player.h"
#include "render/tail.h"

namespace norava {

namespace {

double Decibels(double factor) {
    return 20.0 * std::log10(factor);
}

MidiSong LoadPlayableSong(const std::filesystem::path& input, bool pedal) {
    MidiSong song = input.empty() ? ProgramPhrase() : LoadMidiSong(input);
    if (pedal) HoldNotesByPedal(song);
    ReleaseHangingNotes(song);
    return song;
}

// Everything that hears the samples on their way.
class Listeners {
  public:
    Listeners(const RenderSettings& settings, SampleSink& sink)
        : meter_(settings.sampleRateHz), sink_(sink) {
        if (settings.hash) hash_.emplace();
    }
    void Take(std::span<const float> interleaved) {
        meter_.Take(interleaved);
        if (hash_) hash_->Take(interleaved);
        sink_.Take(interleaved);
        samples_ += std::int64_t(interleaved.size());
    }
    void Report(RenderResult& result, int sampleRateHz) {
        result.seconds = double(samples_) / 2.0 / sampleRateHz;
        result.peak = meter_.Peak();
        result.loudness = meter_.Loudness();
        if (hash_) result.hash = hash_->HexDigest();
    }

  private:
    LevelMeter meter_;
    std::optional<SampleHash> hash_;
    SampleSink& sink_;
    std::int64_t samples_ = 0;
};

// Plays the song and its tail into the listeners; true when the tail had to be cut.
bool Play(SongPlayer& player, Tail& tail, Listeners& listeners,
          const std::function<void(double)>& progress, const std::atomic<bool>& interrupted) {
    const std::int64_t songFrames = player.SongFrames();
    std::vector<float> keep;
    bool wantsMore = true;
    while (wantsMore) {
        if (interrupted) throw BadInput("interrupted");
        const std::int64_t start = player.FramesPlayed();
        const std::span<const float> block = player.NextBlock();
        const auto inSong = std::size_t(
            std::clamp(songFrames - start, std::int64_t{0}, player.FramesPlayed() - start));
        listeners.Take(block.first(2 * inSong));
        keep.clear();
        if (player.FramesPlayed() >= songFrames) {
            wantsMore = tail.Take(block.subspan(2 * inSong), keep);
        }
        listeners.Take(keep);
        progress(songFrames == 0 ? 1.0 : std::min(1.0, double(start) / double(songFrames)));
    }
    return tail.IsCutShort();
}

// The factor for the whole song: towards the wanted loudness, and never so loud that the file
// would clip. Files of floats hold any level and are left alone unless a loudness is wanted.
double GainFor(const RenderSettings& settings, const RenderResult& result) {
    double gain = 1.0;
    if (settings.loudnessTarget && result.loudness && std::isfinite(*result.loudness)) {
        gain = std::pow(10.0, (*settings.loudnessTarget - *result.loudness) / 20.0);
    }
    if (HoldsAnyLevel(settings.format)) return gain;
    return result.peak * gain > 1.0 ? 1.0 / result.peak : gain;
}

void ApplyGain(double gain, RenderResult& result) {
    result.gainDecibels = Decibels(gain);
    result.peak *= gain;
    if (result.loudness) *result.loudness += result.gainDecibels;
}

}  // namespace

RenderResult RenderSong(const std::filesystem::path& input, const std::filesystem::path& output,
                        const RenderSettings& settings, const std::function<void(double)>& progress,
                        const std::atomic<bool>& interrupted) {
    const MidiSong song = LoadPlayableSong(input, settings.pedal);
    Tail tail(settings.tailSeconds, settings.sampleRateHz);
    std::optional<AudioFile> file;
    if (!output.empty()) {
        constexpr double kUsualTailSeconds = 60.0;
        file.emplace(output, settings.format,
                     song.lengthSeconds + settings.tailSeconds.value_or(kUsualTailSeconds));
    }
    // What the gain must be is known only when the whole has been heard.
    SampleSink sink(file, settings.loudnessTarget || !HoldsAnyLevel(settings.format));
    Listeners listeners(settings, sink);

    RenderResult result;
    const auto started = std::chrono::steady_clock::now();
    Instrument instrument(settings.sampleRateHz, settings.sound);
    SongPlayer player(song, instrument, settings.sampleRateHz, settings.blockFrames);
    result.tailCutShort = Play(player, tail, listeners, progress, interrupted);
    listeners.Report(result, settings.sampleRateHz);
    result.renderSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    if (file) {
        const double gain = GainFor(settings, result);
        ApplyGain(gain, result);
        sink.WriteKept(float(gain));
        file->Commit();
    }
    return result;
}

}  // namespace norava
