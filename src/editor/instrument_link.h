#pragma once

#include <functional>
#include <memory>

namespace norava {

class CPluginRenderer;
class CPresetList;

// What the instrument's panel asks of the instrument besides its parameters. User-interface thread.
class InstrumentLink {
  public:
    struct StringPeaks {
        float string1 = 0.0f;
        float string2 = 0.0f;
    };

    virtual ~InstrumentLink() = default;
    virtual CPresetList& GetPresetList() = 0;
    // The largest magnitudes since the last call.
    virtual StringPeaks TakeStringPeaks() = 0;
};

// The link to a renderer that lives longer than it.
using InstrumentLinkMaker = std::function<std::unique_ptr<InstrumentLink>(CPluginRenderer&)>;

}  // namespace norava
