#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <span>

#include "render/audio_file.h"

namespace norava {

// Where a song's samples go: into the audio file at once, or, when the whole must be heard before
// its level is known, first into a nameless file of the system's.
class SampleSink {
  public:
    // Without a file the samples go nowhere.
    SampleSink(std::optional<AudioFile>& file, bool keepForLater);

    void Take(std::span<const float> interleaved);  // throws OutputError
    // Writes what was kept, times `gain`. Throws OutputError.
    void WriteKept(float gain);

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::optional<AudioFile>& file_;
    std::unique_ptr<std::FILE, Closer> kept_;
};

}  // namespace norava
