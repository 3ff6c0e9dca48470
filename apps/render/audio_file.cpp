#include "render/audio_file.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <random>
#include <system_error>

#include "render/bad_input.h"

namespace norava {

namespace {

namespace fs = std::filesystem;

constexpr double kRiffBytes = 4294967295.0 - 65536.0;  // with room for the chunks round the samples

constexpr std::size_t kSilentFrames = 64;  // of a song without any

int BytesPerSample(SampleFormat samples) {
    switch (samples) {
        case SampleFormat::int16:
            return 2;
        case SampleFormat::int24:
            return 3;
        default:
            return 4;
    }
}

int LibraryFormat(const AudioFormat& format, double expectedSeconds) {
    if (format.container == Container::ogg) return SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    const int samples = format.samples == SampleFormat::int16   ? SF_FORMAT_PCM_16
                        : format.samples == SampleFormat::int24 ? SF_FORMAT_PCM_24
                                                                : SF_FORMAT_FLOAT;
    if (format.container == Container::flac) return SF_FORMAT_FLAC | samples;
    const double bytes =
        expectedSeconds * format.sampleRateHz * 2.0 * BytesPerSample(format.samples);
    return (bytes > kRiffBytes ? SF_FORMAT_RF64 : SF_FORMAT_WAV) | samples;
}

// A name in the same folder, so that the last step is a renaming within one file system; of its
// own, because the file's may have all the length that a name can have.
fs::path TemporaryNameFor(const fs::path& path) {
    return path.parent_path() / (".norava-" + std::to_string(std::random_device{}()) + ".part");
}

// What a link leads to is to be written, and the link to stay.
fs::path FollowLink(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::none) {
        throw OutputError("cannot be written: " + error.message());
    }
    if (fs::exists(status)) {
        // Renaming onto a device or a pipe would replace it by a file.
        if (!fs::is_regular_file(status)) {
            throw OutputError("cannot be written: it exists and is no ordinary file");
        }
        return fs::canonical(path);
    }
    if (fs::is_symlink(fs::symlink_status(path, error))) {
        throw OutputError("cannot be written: it is a link that leads nowhere");
    }
    return path;
}

}  // namespace

bool HoldsAnyLevel(const AudioFormat& format) {
    return format.container == Container::wav && format.samples == SampleFormat::float32;
}

Container ContainerOf(const fs::path& name) {
    std::string ending = name.extension().string();
    std::ranges::transform(ending, ending.begin(),
                           [](unsigned char c) { return char(std::tolower(c)); });
    for (const Container container : {Container::wav, Container::flac, Container::ogg}) {
        if (ending == EndingOf(container)) return container;
    }
    throw BadInput(name.string() + " does not end in .wav, .flac or .ogg");
}

const char* EndingOf(Container container) {
    switch (container) {
        case Container::flac:
            return ".flac";
        case Container::ogg:
            return ".ogg";
        default:
            return ".wav";
    }
}

AudioFile::AudioFile(const fs::path& path, const AudioFormat& format, double expectedSeconds)
    : path_(FollowLink(path)), temporary_(TemporaryNameFor(path_)) {
    SF_INFO info{};
    info.samplerate = format.sampleRateHz;
    info.channels = 2;
    info.format = LibraryFormat(format, expectedSeconds);
    if (sf_format_check(&info) == 0) {
        throw OutputError("this kind of file cannot hold " + std::to_string(format.sampleRateHz) +
                          " Hz");
    }
    file_.reset(sf_open(temporary_.c_str(), SFM_WRITE, &info));
    if (!file_) {
        const std::string reason = sf_strerror(nullptr);
        std::error_code ignored;
        fs::remove(temporary_, ignored);
        throw OutputError("cannot be written: " + reason);
    }
    sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    // It would hold the time, and no two renderings would have the same bytes.
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    double quality = 0.7;  // about 200 kilobits a second, for files in which bytes matter
    sf_command(file_.get(), SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof quality);
}

AudioFile::~AudioFile() {
    file_.reset();
    std::error_code ignored;
    if (!temporary_.empty()) fs::remove(temporary_, ignored);
}

void AudioFile::Closer::operator()(SNDFILE* file) const {
    sf_close(file);
}

void AudioFile::Write(std::span<const float> interleaved) {
    const auto samples = sf_count_t(interleaved.size());
    if (samples > 0) isEmpty_ = false;
    if (sf_write_float(file_.get(), interleaved.data(), samples) != samples) {
        throw OutputError(std::string("cannot be written: ") + sf_strerror(file_.get()));
    }
}

void AudioFile::Commit() {
    // Without a sample some containers would not even get their head.
    if (isEmpty_) Write(std::array<float, 2 * kSilentFrames>{});
    sf_write_sync(file_.get());
    if (sf_close(file_.release()) != 0) throw OutputError("cannot be written to its end");
    std::error_code error;
    const fs::file_status old = fs::status(path_, error);
    if (fs::exists(old)) fs::permissions(temporary_, old.permissions(), error);
    fs::rename(temporary_, path_, error);
    if (error) throw OutputError("cannot be written: " + error.message());
    temporary_.clear();
}

}  // namespace norava
