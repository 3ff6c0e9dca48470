#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "gui/geometry.h"

namespace norava {

// What has to be shown again, as few rectangles that cover little more than was asked for.
class Damage {
  public:
    void Add(CRect part) {
        if (part.IsEmpty()) return;
        // A union may reach others in turn.
        for (size_t i = 0; i < parts.size();) {
            const CRect both = Union(parts[i], part);
            if (parts.size() < kMaxParts && AreaOf(both) > AreaOf(parts[i]) + AreaOf(part)) {
                ++i;
                continue;
            }
            part = both;
            parts[i] = parts.back();
            parts.pop_back();
            i = 0;
        }
        parts.push_back(part);
    }
    [[nodiscard]] bool IsEmpty() const { return parts.empty(); }
    [[nodiscard]] std::vector<CRect> Take() { return std::exchange(parts, {}); }

  private:
    static constexpr size_t kMaxParts = 16;

    static int64_t AreaOf(CRect part) { return int64_t{part.width} * part.height; }
    static CRect Union(CRect a, CRect b) {
        const int left = std::min(a.left, b.left);
        const int top = std::min(a.top, b.top);
        return {left, top, SaturatedInt(int64_t{std::max(a.GetRight(), b.GetRight())} - left),
                SaturatedInt(int64_t{std::max(a.GetBottom(), b.GetBottom())} - top)};
    }

    std::vector<CRect> parts;
};

}  // namespace norava
