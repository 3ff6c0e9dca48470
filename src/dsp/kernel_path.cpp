#include "dsp/kernel_path.h"

namespace norava {

namespace {

KernelPath findFastest() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2") != 0) return KernelPath::wide;
#endif
    return KernelPath::baseline;
}

}  // namespace

bool kernelPathAvailable(KernelPath path) {
    return path == KernelPath::baseline || fastestKernelPath() == KernelPath::wide;
}

KernelPath fastestKernelPath() {
    static const KernelPath fastest = findFastest();
    return fastest;
}

}  // namespace norava
