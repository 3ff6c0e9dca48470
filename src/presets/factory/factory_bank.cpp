#include "presets/factory_bank.h"

namespace norava {

std::span<const FactoryProgram> GetFactoryBank() {
    return {};
}

}  // namespace norava
