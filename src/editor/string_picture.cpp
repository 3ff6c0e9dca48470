#include "editor/string_picture.h"

#include <algorithm>
#include <cmath>

#include "gui/image.h"

namespace norava {

namespace {

constexpr int kFrames = 16;
constexpr CSize kDamperSize{34, 40};
constexpr int kDamperLeft = 286;
constexpr float kDamperTravel = 28.0f;  // sideways, with the offset
constexpr float kDamperDepth = 11.0f;   // towards the string, with the amount
constexpr int kUpperDamperTop = 154;
constexpr int kLowerDamperTop = 243;

constexpr float kFallPerTick = 0.86f;
constexpr float kRest = 0.001f;
constexpr int kFirstTremblingFrame = 3;

// Strings sound over a range of some 60 dB; a line in level would show the loudest notes only.
constexpr float kSoftestDecibels = -75.0f;
constexpr float kLoudestDecibels = -12.0f;

float ShownLevel(float peak) {
    if (!(peak > 0.0f)) return 0.0f;  // a NaN too
    const float decibels = 20.0f * std::log10(peak);
    return std::clamp((decibels - kSoftestDecibels) / (kLoudestDecibels - kSoftestDecibels), 0.0f,
                      1.0f);
}

float Unit(float value) {
    return value > 0.0f ? std::min(value, 1.0f) : 0.0f;
}

int Rounded(float value) {
    return static_cast<int>(std::lround(value));
}

}  // namespace

CRect StringPicture::Tick(float peak1, float peak2) {
    const std::array<float, 2> peaks = {peak1, peak2};
    evenTick = !evenTick;
    CRect moved;
    for (std::size_t i = 0; i < strings.size(); ++i) {
        String& string = strings[i];
        string.level = std::max(ShownLevel(peaks[i]), kFallPerTick * string.level);
        if (string.level < kRest) string.level = 0.0f;
        const int wanted =
            std::min(kFrames - 1, Rounded(static_cast<float>(kFrames - 1) * string.level));
        // A string that holds its level still trembles.
        const bool trembles = evenTick && wanted >= kFirstTremblingFrame;
        const int frame = wanted - (trembles ? 1 : 0);
        if (frame != string.shown) {
            const CRect& rows = kMovingRows[i];
            moved = moved.IsEmpty()
                        ? rows
                        : CRect(rows.left, moved.top, rows.width, rows.GetBottom() - moved.top);
        }
        string.shown = frame;
    }
    return moved;
}

bool StringPicture::SetDamper(int string, float offset, float amount) {
    const int left = kDamperLeft + Rounded(kDamperTravel * Unit(offset));
    const int depth = Rounded(kDamperDepth * Unit(amount));
    const CPoint place{left, string == 0 ? kUpperDamperTop + depth : kLowerDamperTop - depth};
    CPoint& damper = strings[string == 0 ? 0 : 1].damper;
    if (damper == place) return false;
    damper = place;
    return true;
}

void StringPicture::Still() {
    for (String& string : strings) {
        string.level = 0.0f;
        string.shown = 0;
    }
}

void StringPicture::Draw(CGraphicBuffer& buffer, CRect part) const {
    const CRect visible = part.GetIntersection(kWindow);
    if (visible.IsEmpty() || !buffer.SetClipRect(visible)) return;
    for (std::size_t i = 0; i < strings.size(); ++i) {
        const CRect& rows = kMovingRows[i];
        buffer.DrawImage(pictures.string, rows, {0, strings[i].shown * rows.height});
    }
    buffer.DrawImage(pictures.upperDamper, CRect(strings[0].damper, kDamperSize), {0, 0});
    buffer.DrawImage(pictures.lowerDamper, CRect(strings[1].damper, kDamperSize), {0, 0});
}

}  // namespace norava
