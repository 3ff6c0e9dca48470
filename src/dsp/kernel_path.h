#pragma once

namespace norava {

// The instruction sets that the inner loops are built for. All of them give the same bytes.
enum class KernelPath { baseline, wide };

// Whether this machine can run the path.
bool kernelPathAvailable(KernelPath path);
// The fastest path of this machine, found once.
KernelPath fastestKernelPath();

}  // namespace norava
