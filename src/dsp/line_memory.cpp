#include "dsp/line_memory.h"

#include <cstdint>
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

LineMemory::LineMemory(std::size_t bytes) : size_(roundedUp(bytes, kCacheLine)) {
#if defined(__linux__)
    if (bytes >= kLargePage) takeLargePages();
#endif
    if (!block_) {
        constexpr auto kAlignment = std::align_val_t{kCacheLine};
        auto* const start = static_cast<std::byte*>(::operator new(size_, kAlignment));
        block_ = {start, [](std::byte* p) { ::operator delete(p, kAlignment); }};
    }
    for (std::size_t at = 0; at < size_; at += kPage)
        block_.get()[at] = std::byte{0};
}

#if defined(__linux__)
// Straight from the system: large pages need an aligned start, and what an allocator takes to align
// it would stay with the block.
void LineMemory::takeLargePages() {
    const std::size_t whole = roundedUp(size_, kPage);
    const std::size_t asked = whole + kLargePage;
    void* const got =
        mmap(nullptr, asked, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (got == MAP_FAILED) return;
    auto* const first = static_cast<std::byte*>(got);
    const std::size_t before = roundedUp(reinterpret_cast<std::uintptr_t>(first), kLargePage) -
                               reinterpret_cast<std::uintptr_t>(first);
    std::byte* const start = first + before;
    if (before > 0) munmap(first, before);
    if (before < kLargePage) munmap(start + whole, kLargePage - before);
    block_ = {start, [whole](std::byte* p) { munmap(p, whole); }};
    // Only a wish: where it is not granted, the pages are small.
    madvise(start, whole, MADV_HUGEPAGE);
}
#endif

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
