#pragma once

#include <optional>
#include <span>

#include "framework/nonblocking.h"

namespace norava {

class CPluginRenderer;

// What the host knows of its transport at the start of a block; absent when it does not say.
struct BlockTime {
    std::optional<double> tempo;             // beats per minute
    std::optional<double> beatPos;           // quarter notes
    std::optional<bool> transportChangedTo;  // set once when the transport starts (true) or stops
};

// One block of the host's channels. A null channel reads as silence and discards what it would get;
// channels may be shorter in number than the renderer's.
struct HostBlock {
    std::span<const float* const> inputs{};
    std::span<float* const> outputs{};
    int frames = 0;           // 0 dispatches the events at the block's start
    bool accumulate = false;  // add to the outputs in place of overwriting them
};

// Renders one block of the host in slices of at most kMaxSliceFrames, cut at the positions of the
// waiting events, so that the renderer sees the events of a position before the audio from that
// position. An event at the block's length is dispatched at its end, later ones are discarded; the
// event buffer is empty afterwards. Every host format calls this. Denormals are flushed meanwhile.
// Audio thread.
void RunBlock(CPluginRenderer& renderer, const HostBlock& block,
              const BlockTime& time) NORAVA_NONBLOCKING;

}  // namespace norava
