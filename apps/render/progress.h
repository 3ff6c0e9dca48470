#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace norava {

// Tells on standard error how far the songs have come: a bar on a terminal, otherwise a line as
// each song begins. Any thread.
class Progress {
  public:
    Progress(std::size_t songs, bool silent);

    void Begin(const std::string& name);
    void Update(std::size_t song, double part);  // 0..1
    void End() const;                            // takes the bar away

  private:
    std::mutex mutex_;
    std::vector<double> parts_;  // done of each song
    std::chrono::steady_clock::time_point lastDrawn_{};
    bool silent_;
    bool terminal_;
};

}  // namespace norava
