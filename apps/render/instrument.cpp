#include "render/instrument.h"

#include <algorithm>
#include <stdexcept>

#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"

namespace norava {

namespace {

std::unique_ptr<CPluginRenderer> MakeRenderer() {
    std::unique_ptr<CPluginRenderer> renderer = GetPluginInstance()->CreateRenderer();
    if (!renderer) throw std::runtime_error("the instrument cannot be made");
    return renderer;
}

}  // namespace

bool IsState(std::span<const char> bytes) {
    const std::unique_ptr<CPluginRenderer> renderer = MakeRenderer();
    const auto size = int(bytes.size());
    // Shorter blocks load too and leave the rest of the sound as it is, but a short file is more
    // likely a broken copy than an intention.
    return size == renderer->SaveState(nullptr) && renderer->LoadState(bytes.data(), size);
}

bool IsProgram(std::span<const char> bytes) {
    return MakeRenderer()->LoadState(bytes.data(), int(bytes.size()));
}

Instrument::Instrument(double sampleRateHz, const Sound& sound) : renderer_(MakeRenderer()) {
    renderer_->Reset(sampleRateHz);
    if (!sound.state.empty()) {
        renderer_->LoadState(sound.state.data(), int(sound.state.size()));
    }
    for (const auto& [index, value] : sound.settings)
        renderer_->SetParamValue(index, value);
}

Instrument::~Instrument() = default;

void Instrument::Send(int frame, std::array<std::uint8_t, 3> message) {
    constexpr unsigned short kMessageBytes = 4;  // hosts send a fourth, unused byte
    auto* event = renderer_->CreateEvent(frame, kMessageBytes);
    std::ranges::copy(message, static_cast<unsigned char*>(renderer_->GetEventDataPtr(event)));
}

void Instrument::Render(std::span<float> left, std::span<float> right, const BlockTime& time) {
    float* const channels[] = {left.data(), right.data()};
    RunBlock(*renderer_, {.outputs = channels, .frames = int(left.size())}, time);
}

}  // namespace norava
