#pragma once

#include <cstdint>

#if defined(__SSE__) || defined(_M_X64)
#define NORAVA_DENORMALS_X86 1
#include <xmmintrin.h>
#elif defined(__aarch64__)
#define NORAVA_DENORMALS_ARM64 1
#endif

namespace norava {

// While it lives, denormal numbers count as zero on this thread: decaying tails cost no more than
// sounding notes. The host's own mode comes back at the end of the scope, with the exception flags
// that it had. Audio thread.
class CDenormalGuard {
  public:
    CDenormalGuard() noexcept : hostMode(Read()) { Write(hostMode | kFlushMask); }
    ~CDenormalGuard() { Write(hostMode); }
    CDenormalGuard(const CDenormalGuard&) = delete;
    CDenormalGuard& operator=(const CDenormalGuard&) = delete;

  private:
#if defined(NORAVA_DENORMALS_X86)
    static constexpr std::uint64_t kFlushMask =
        0x8040;  // flush results (bit 15), read as zero (bit 6)
    static std::uint64_t Read() noexcept {
        return _mm_getcsr();
    }
    static void Write(std::uint64_t mode) noexcept {
        _mm_setcsr(static_cast<unsigned>(mode));
    }
#elif defined(NORAVA_DENORMALS_ARM64)
    static constexpr std::uint64_t kFlushMask = std::uint64_t{1} << 24;  // FPCR.FZ covers both
    static std::uint64_t Read() noexcept {
        std::uint64_t mode;
        asm volatile("mrs %0, fpcr" : "=r"(mode));
        return mode;
    }
    static void Write(std::uint64_t mode) noexcept {
        asm volatile("msr fpcr, %0" : : "r"(mode));
    }
#else
    static constexpr std::uint64_t kFlushMask = 0;
    static std::uint64_t Read() noexcept {
        return 0;
    }
    static void Write(std::uint64_t) noexcept {}
#endif

    const std::uint64_t hostMode;
};

}  // namespace norava
