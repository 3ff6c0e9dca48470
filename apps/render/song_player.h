#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "render/instrument.h"
#include "render/midi_song.h"

namespace norava {

// Plays a song on an instrument, block by block. One thread.
class SongPlayer {
  public:
    // `song` and `instrument` must outlive the player.
    SongPlayer(const MidiSong& song, Instrument& instrument, double sampleRateHz, int blockFrames);

    // The next block, interleaved; valid until the next call. The song's end does not end the
    // player, for the instrument may still sound.
    std::span<const float> NextBlock();

    std::int64_t FramesPlayed() const { return position_; }
    std::int64_t SongFrames() const { return songFrames_; }

  private:
    std::int64_t FrameAt(double seconds) const;
    BlockTime TimeNow();

    const MidiSong& song_;
    Instrument& instrument_;
    double sampleRateHz_;
    std::int64_t songFrames_;
    std::int64_t position_ = 0;  // of the next block's first frame
    std::size_t nextEvent_ = 0;
    std::size_t tempo_ = 0;
    std::vector<float> left_;
    std::vector<float> right_;
    std::vector<float> interleaved_;
};

}  // namespace norava
