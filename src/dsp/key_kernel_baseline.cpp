#include "dsp/key_kernel_impl.h"

namespace norava {

void renderKeysBaseline(KernelJob& job) {
    renderKeys<BaselineLanes>(job);
}

}  // namespace norava
