#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace norava {

// The state blocks handed to the host, which reads each until the same thread asks for its next
// one. A host may ask on several threads at once (autosave beside undo), so each thread has a block
// of its own. Any thread but the audio thread.
class CVSTChunks {
  public:
    // Memory for this thread's next block; its previous one is freed. Zero-filled.
    char* Replace(std::size_t size);

  private:
    // A host that asks on ever new threads gets the block back that was asked for longest ago.
    static constexpr std::size_t kMaxThreads = 64;

    struct Block {
        std::thread::id thread;
        std::unique_ptr<char[]> bytes;
    };

    std::mutex mutex;
    std::vector<Block> blocks;  // the one asked for last at the end
};

}  // namespace norava
