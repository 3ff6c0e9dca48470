#include "render/sample_sink.h"

#include <array>

#include "render/bad_input.h"

namespace norava {

SampleSink::SampleSink(std::optional<AudioFile>& file, bool keepForLater) : file_(file) {
    if (!keepForLater || !file_) return;
    kept_.reset(std::tmpfile());
    if (!kept_) throw OutputError("there is no room for a temporary file");
}

void SampleSink::Take(std::span<const float> interleaved) {
    if (!kept_) {
        if (file_) file_->Write(interleaved);
        return;
    }
    if (std::fwrite(interleaved.data(), sizeof(float), interleaved.size(), kept_.get()) !=
        interleaved.size()) {
        throw OutputError("there is no room for a temporary file");
    }
}

void SampleSink::WriteKept(float gain) {
    if (!kept_) return;
    std::rewind(kept_.get());
    constexpr std::size_t kSamplesAtOnce = 4096;
    std::array<float, kSamplesAtOnce> samples{};
    std::size_t count = 0;
    while ((count = std::fread(samples.data(), sizeof(float), samples.size(), kept_.get())) > 0) {
        for (std::size_t i = 0; i < count; ++i)
            samples[i] *= gain;
        file_->Write(std::span(samples).first(count));
    }
    if (std::ferror(kept_.get()) != 0) throw OutputError("the temporary file cannot be read back");
}

}  // namespace norava
