#include "dsp/modulation.h"

namespace norava {

void ModulationPlan::decode(const ModulationMatrix& matrix, std::uint32_t matrixRevision) {
    *this = ModulationPlan{};
    revision = matrixRevision;
    for (std::size_t s = 0; s < matrix.size(); ++s) {
        const ModulationSlot& slot = matrix[s];
        if (slot.source == static_cast<int>(ModulationSource::none)) continue;
        if (slot.destination < 0 || slot.destination >= kModulationDestinations) continue;
        std::uint8_t& reached = slots[static_cast<std::size_t>(slot.destination)];
        reached = static_cast<std::uint8_t>(reached | 1u << s);
        if (slot.source == static_cast<int>(ModulationSource::envelope) ||
            slot.source == static_cast<int>(ModulationSource::lfo))
            moving |= 1u << slot.destination;
    }
}

}  // namespace norava
