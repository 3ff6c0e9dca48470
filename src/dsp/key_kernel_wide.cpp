// Built for AVX2 (see CMakeLists.txt); called only where the machine has it.

#include "dsp/key_kernel_impl.h"

namespace norava {

void renderKeysWide(KernelJob& job) {
    renderKeys<WideLanes>(job);
}

}  // namespace norava
