#include "render/song_player.h"

#include <cmath>

namespace norava {

namespace {

// A song's program numbers mean the sounds of some other instrument, and what this one has in its
// library depends on the user; so neither they nor the bank they are chosen from are passed on.
bool ChoosesProgram(const SongEvent& event) {
    constexpr std::uint8_t kProgramChange = 0xC0;
    constexpr std::uint8_t kController = 0xB0;
    constexpr std::uint8_t kBankFine = 32;
    const int kind = event.bytes[0] & 0xF0;
    return kind == kProgramChange || (kind == kController && event.bytes[1] == kBankFine);
}

}  // namespace

SongPlayer::SongPlayer(const MidiSong& song, Instrument& instrument, double sampleRateHz,
                       int blockFrames)
    : song_(song),
      instrument_(instrument),
      sampleRateHz_(sampleRateHz),
      songFrames_(FrameAt(song.lengthSeconds)),
      left_(std::size_t(blockFrames)),
      right_(std::size_t(blockFrames)),
      interleaved_(2 * std::size_t(blockFrames)) {}

std::int64_t SongPlayer::FrameAt(double seconds) const {
    return std::llround(seconds * sampleRateHz_);
}

BlockTime SongPlayer::TimeNow() {
    const double seconds = double(position_) / sampleRateHz_;
    while (tempo_ + 1 < song_.tempos.size() && song_.tempos[tempo_ + 1].seconds <= seconds) {
        ++tempo_;
    }
    const SongTempo& tempo = song_.tempos[tempo_];
    constexpr double kSecondsPerMinute = 60.0;
    BlockTime time;
    time.tempo = tempo.beatsPerMinute;
    time.beatPos =
        tempo.quarters + (seconds - tempo.seconds) * tempo.beatsPerMinute / kSecondsPerMinute;
    if (position_ == 0) time.transportChangedTo = true;
    return time;
}

std::span<const float> SongPlayer::NextBlock() {
    const auto blockFrames = std::int64_t(left_.size());
    for (; nextEvent_ < song_.events.size(); ++nextEvent_) {
        const SongEvent& event = song_.events[nextEvent_];
        const std::int64_t frame = FrameAt(event.seconds) - position_;
        if (frame >= blockFrames) break;
        if (!ChoosesProgram(event)) instrument_.Send(int(frame), event.bytes);
    }
    instrument_.Render(left_, right_, TimeNow());
    position_ += blockFrames;

    for (std::size_t i = 0; i < left_.size(); ++i) {
        interleaved_[2 * i] = left_[i];
        interleaved_[2 * i + 1] = right_[i];
    }
    return interleaved_;
}

}  // namespace norava
