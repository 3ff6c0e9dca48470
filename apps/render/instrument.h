#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "framework/block_runner.h"
#include "render/sound.h"

namespace norava {

class CPluginRenderer;

// Whether the instrument takes these bytes as its whole state.
bool IsState(std::span<const char> bytes);

// Whether the instrument takes them as a program, which may lack values at its end.
bool IsProgram(std::span<const char> bytes);

// One instance of the plug-in's engine, driven the way a host's adapter drives it. One thread.
class Instrument {
  public:
    // A state block that the instrument refuses changes nothing.
    Instrument(double sampleRateHz, const Sound& sound);
    ~Instrument();
    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;

    // Queues a channel message for the next Render, `frame` counted from its start.
    void Send(int frame, std::array<std::uint8_t, 3> message);

    // Both channels have the same length.
    void Render(std::span<float> left, std::span<float> right, const BlockTime& time);

  private:
    std::unique_ptr<CPluginRenderer> renderer_;
};

}  // namespace norava
