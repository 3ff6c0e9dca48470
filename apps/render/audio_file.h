#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>

struct sf_private_tag;

namespace norava {

enum class Container { wav, flac, ogg };
enum class SampleFormat { int16, int24, float32, compressed };

struct AudioFormat {
    Container container = Container::wav;
    SampleFormat samples = SampleFormat::int24;
    int sampleRateHz = 48000;
};

// Whether samples beyond full scale survive in such a file.
bool HoldsAnyLevel(const AudioFormat& format);

// What the name's ending says; throws BadInput for an unknown one.
Container ContainerOf(const std::filesystem::path& name);
const char* EndingOf(Container container);  // with its dot

// A stereo audio file that appears under its name only when it is complete: it grows in a hidden
// file beside it, which goes away when the writer is dropped before Commit. A file that it replaces
// passes its permissions on, and a link keeps leading to it.
class AudioFile {
  public:
    // Files expected to need more than four gigabytes get WAV's large form. Throws OutputError when
    // the file cannot be made.
    AudioFile(const std::filesystem::path& path, const AudioFormat& format, double expectedSeconds);
    ~AudioFile();
    AudioFile(AudioFile&&) = delete;

    // Both throw OutputError when the disk does not take it. A file that got no samples holds a
    // moment of silence.
    void Write(std::span<const float> interleaved);
    void Commit();

  private:
    struct Closer {
        void operator()(sf_private_tag* file) const;
    };

    std::filesystem::path path_;
    std::filesystem::path temporary_;
    std::unique_ptr<sf_private_tag, Closer> file_;
    bool isEmpty_ = true;
};

}  // namespace norava
