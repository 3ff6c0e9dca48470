#include "dsp/line_memory.h"

#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace norava {

namespace {

constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kLargePage = std::size_t{2} << 20;

std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

}  // namespace

LineMemory::LineMemory(std::size_t bytes) {
    const std::size_t unit = bytes >= kLargePage ? kLargePage : kCacheLine;
    const auto alignment = std::align_val_t{unit};
    size_ = roundedUp(bytes, unit);
    auto* const start = static_cast<std::byte*>(::operator new(size_, alignment));
    block_ = {start, [alignment](std::byte* p) { ::operator delete(p, alignment); }};
#if defined(__linux__)
    // Only a wish: where it is not granted, the pages are small.
    if (unit == kLargePage) madvise(start, size_, MADV_HUGEPAGE);
#endif
    for (std::size_t at = 0; at < size_; at += kPage)
        start[at] = std::byte{0};
}

std::size_t LineMemory::sizeOf(std::size_t bytes) {
    return roundedUp(bytes, kCacheLine);
}

std::shared_ptr<std::byte[]> LineMemory::take(std::size_t bytes) {
    if (sizeOf(bytes) > size_ - used_) return nullptr;
    std::byte* const start = block_.get() + used_;
    used_ += sizeOf(bytes);
    return {block_, start};
}

}  // namespace norava
