#include "fx/reverb_memory.h"

#include <algorithm>
#include <numeric>

namespace norava {

namespace {

// From here on nothing counts as empty, whatever the geometry.
constexpr std::int64_t kLongAgo = std::int64_t{1} << 40;

}  // namespace

std::size_t ReverbMemory::sizeOf(const ReverbLengths& lengths) {
    return std::accumulate(
        lengths.begin(), lengths.end(), std::size_t{0},
        [](std::size_t sum, int n) { return sum + static_cast<std::size_t>(n); });
}

void ReverbMemory::reserve(std::size_t floats, LineMemory& memory) {
    if (floats <= capacity_ && memory_) return;
    memory_ = memory.take(floats * sizeof(float));
    capacity_ = memory_ ? floats : 0;
}

void ReverbMemory::allocate(const ReverbLengths& capacities, std::size_t leastFloats) {
    const std::size_t needed = sizeOf(capacities);
    if (needed > capacity_) {
        const std::size_t floats = std::max(needed, leastFloats);
        LineMemory own(floats * sizeof(float));
        reserve(floats, own);
    }
    auto* next = reinterpret_cast<float*>(memory_.get());
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        lines_[i] = {next, capacities[i], capacities[i], 0};
        next += capacities[i];
    }
    geometry_ = {};
    empty();
}

void ReverbMemory::setGeometry(const ReverbGeometry& geometry) {
    if (geometry == geometry_) return;
    // The lengths say which cells have been written since they were declared empty.
    fillEverything();
    geometry_ = geometry;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        lines_[i].length = geometry.lengths[i];
        lines_[i].position %= lines_[i].length;
    }
    listReaders();
}

void ReverbMemory::addReader(std::size_t line, int offset, int reach) {
    readers_[readerCount_++] = {line, offset, reach};
    longestReach_ = std::max<std::int64_t>(longestReach_, reach);
}

void ReverbMemory::listReaders() {
    readerCount_ = 0;
    longestReach_ = 0;
    // Most lines are read at their position, which the frame then overwrites.
    for (std::size_t i = 0; i < kReverbLines; ++i) {
        if (i != kLeftDelay2 && i != kEarlyLine) addReader(i, 0, lines_[i].length);
    }
    // The right half of the tank starts from what the left half's last line will overwrite next.
    addReader(kLeftDelay2, -1, lines_[kLeftDelay2].length - 1);
    // Output taps count from the position after the step; there a tap of 0 finds the oldest sample.
    const auto addOutputTap = [this](std::size_t line, int tap) {
        const int offset = (tap == 0 ? lines_[line].length : tap) - 1;
        addReader(line, offset, offset);
    };
    for (std::size_t i = 0; i < kReverbOutputTaps; ++i) {
        addOutputTap(kLeftTapLines[i], geometry_.leftTaps[i]);
        addOutputTap(kRightTapLines[i], geometry_.rightTaps[i]);
    }
    for (std::size_t i = 0; i < kReverbEarlyTaps; ++i) {
        addReader(kEarlyLine, geometry_.earlyLeftTaps[i], geometry_.earlyLeftTaps[i]);
        addReader(kEarlyLine, geometry_.earlyRightTaps[i], geometry_.earlyRightTaps[i]);
    }
}

void ReverbMemory::clearRoom() {
    for (std::size_t i = 0; i < kReverbLines; ++i) {
        if (i != kPredelayLine) std::fill_n(lines_[i].data, lines_[i].capacity, 0.0f);
    }
}

void ReverbMemory::empty() {
    framesSinceEmpty_ = 0;
    filledUntil_ = 0;
}

// Fills what is read in the coming frames; a few more than asked for, so that short blocks do not
// pay for each.
void ReverbMemory::fillAhead(int frames) {
    if (framesSinceEmpty_ + frames <= filledUntil_) return;
    constexpr int kAhead = kMostFrames;
    for (std::size_t i = 0; i < readerCount_; ++i) {
        const Reader& reader = readers_[i];
        const std::int64_t unwritten =
            std::min<std::int64_t>(reader.reach - framesSinceEmpty_, kAhead);
        if (unwritten <= 0) continue;
        lines_[reader.line].forRuns(
            reader.offset, static_cast<int>(unwritten),
            [](float* cells, int, int count) { std::fill_n(cells, count, kEmptyCell); });
    }
    filledUntil_ = framesSinceEmpty_ + kAhead;
}

// Fills every cell that has not been written since it was declared empty, once.
void ReverbMemory::fillEverything() {
    if (framesSinceEmpty_ >= kLongAgo) return;
    for (ReverbLine& line : lines_) {
        const std::int64_t written = std::min<std::int64_t>(framesSinceEmpty_, line.length);
        const int unwritten = line.length - static_cast<int>(written);
        if (unwritten > 0) {
            line.forRuns(0, unwritten, [](float* cells, int, int count) {
                std::fill_n(cells, count, kEmptyCell);
            });
        }
        std::fill(line.data + line.length, line.data + line.capacity, kEmptyCell);
    }
    framesSinceEmpty_ = kLongAgo;
}

}  // namespace norava
