#pragma once

#include <cstddef>
#include <memory>

namespace norava {

// One large piece of memory that many delay lines share. It is taken from the system in large pages
// where there are such, because thousands of small ones would take longer than everything else that
// a new sample rate brings; and every page is written to, so that none is missing when the audio
// thread comes to it. It lives as long as any part of it. Not on the audio thread.
class LineMemory {
  public:
    explicit LineMemory(std::size_t bytes);

    // The next `bytes` of it, aligned to 64 bytes, contents arbitrary. Null when it is used up.
    std::shared_ptr<std::byte[]> take(std::size_t bytes);

    // What `take` uses up for `bytes`.
    static std::size_t sizeOf(std::size_t bytes);

  private:
    void takeLargePages();

    std::shared_ptr<std::byte[]> block_;
    std::size_t size_ = 0;
    std::size_t used_ = 0;
};

}  // namespace norava
