#include "host/vst/vst_chunks.h"

#include <algorithm>

namespace norava {

char* CVSTChunks::Replace(std::size_t size) {
    Block block{std::this_thread::get_id(), std::make_unique<char[]>(size)};
    char* const bytes = block.bytes.get();
    const std::lock_guard lock(mutex);
    const auto previous = std::find_if(blocks.begin(), blocks.end(), [&](const Block& other) {
        return other.thread == block.thread;
    });
    if (previous != blocks.end())
        blocks.erase(previous);
    else if (blocks.size() == kMaxThreads)
        blocks.erase(blocks.begin());
    blocks.push_back(std::move(block));
    return bytes;
}

}  // namespace norava
