#include "framework/block_runner.h"

#include <algorithm>
#include <cstddef>

#include "framework/denormal_guard.h"
#include "framework/plugin_renderer.h"

namespace norava {

namespace {

void ApplyTime(CPluginRenderer& renderer, const BlockTime& time) {
    if (time.tempo) renderer.SetSongTempo(*time.tempo);
    if (time.beatPos) renderer.SetSongBeatPos(*time.beatPos);
    if (time.transportChangedTo) renderer.TransportChanged(*time.transportChangedTo);
}

void ReadInputs(const HostBlock& block, int offset, int frames, CAudioBuffer& input) {
    input.SetNumFrames(frames);
    for (int channel = 0; channel < input.GetNumChannels(); ++channel) {
        const auto index = static_cast<std::size_t>(channel);
        const float* const from = index < block.inputs.size() ? block.inputs[index] : nullptr;
        if (from != nullptr)
            std::copy_n(from + offset, frames, input.GetBuf(channel));
        else
            input.Clear(channel);
    }
}

void WriteOutputs(const HostBlock& block, int offset, int frames, CAudioBuffer& output) {
    const std::size_t numChannels =
        std::min(block.outputs.size(), static_cast<std::size_t>(output.GetNumChannels()));
    for (std::size_t channel = 0; channel < numChannels; ++channel) {
        if (block.outputs[channel] == nullptr) continue;
        float* const to = block.outputs[channel] + offset;
        const float* const from = output.GetBuf(static_cast<int>(channel));
        if (block.accumulate)
            std::transform(from, from + frames, to, to, [](float x, float sum) { return sum + x; });
        else
            std::copy_n(from, frames, to);
    }
}

void RenderSlice(CPluginRenderer& renderer, const HostBlock& block, int offset, int frames) {
    CAudioBuffer& output = *renderer.GetOutputAudioBuffer();
    output.SetNumFrames(frames);
    output.Clear();
    CAudioBuffer* const input = renderer.GetInputAudioBuffer();
    if (input != nullptr && input->GetNumChannels() > 0) ReadInputs(block, offset, frames, *input);
    renderer.ProcessAudioBuffers();
    WriteOutputs(block, offset, frames, output);
}

void RenderBlock(CPluginRenderer& renderer, const HostBlock& block, const BlockTime& time) {
    const CDenormalGuard denormalGuard;
    ApplyTime(renderer, time);
    renderer.ApplyPendingValues();

    const CAudioBuffer* const output = renderer.GetOutputAudioBuffer();
    const int maxFrames = output != nullptr ? output->GetMaxNumFrames() : 0;
    const int frames = maxFrames > 0 ? std::max(block.frames, 0) : 0;

    // Nothing below deletes events while the list is walked, whatever the renderer does with them.
    renderer.LockEvents();
    const CEventBuffer::Event* event = renderer.GetFirstEvent();
    for (int done = 0;;) {
        while (event != nullptr && CEventBuffer::GetEventPosition(event) <= done) {
            renderer.TranslateMIDIEvent(event);
            event = CEventBuffer::GetNextEvent(event);
        }
        if (done >= frames) break;
        int slice = std::min(frames - done, maxFrames);
        if (event != nullptr) slice = std::min(slice, CEventBuffer::GetEventPosition(event) - done);
        RenderSlice(renderer, block, done, slice);
        done += slice;
    }
    renderer.UnlockEvents();
    renderer.DeleteAllEvents();
}

}  // namespace

void RunBlock(CPluginRenderer& renderer, const HostBlock& block,
              const BlockTime& time) NORAVA_NONBLOCKING {
    RenderBlock(renderer, block, time);
    // The host answers in its own floating-point mode.
    renderer.ReportChangedValues();
}

}  // namespace norava
