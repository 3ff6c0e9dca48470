#include <algorithm>

#include "gui/graphic_buffer.h"
#include "gui/pixel_rows.h"
#include "gui/stored_rows.h"

namespace norava {

namespace {

constexpr int kChannels = 4;
constexpr int kFixedBits = 16;

// A colour in 16.16 fixed point, or a step from one to the next.
struct FixedColor {
    int channel[kChannels];

    explicit FixedColor(CColor c)
        : channel{c.red << kFixedBits, c.green << kFixedBits, c.blue << kFixedBits,
                  c.alpha << kFixedBits} {}

    // (to - from) / steps, truncated; no steps: none.
    static FixedColor Step(const FixedColor& from, const FixedColor& to, int64_t steps) {
        FixedColor step(CColor(0, 0));
        for (int i = 0; i < kChannels && steps > 0; ++i)
            step.channel[i] = static_cast<int>((to.channel[i] - from.channel[i]) / steps);
        return step;
    }

    void Advance(const FixedColor& step, int times = 1) {
        for (int i = 0; i < kChannels; ++i)
            channel[i] += step.channel[i] * times;
    }
};

constexpr int kChunkWords = 64;

// The next words of a row that starts at `color`.
void SpreadGradient(uint32_t* words, const FixedColor& color, const FixedColor& step, int count) {
    std::fill_n(words, count, 0u);
    for (int c = 0; c < kChannels; ++c) {
        const int start = color.channel[c];
        const int perWord = step.channel[c];
        const int shift = 8 * c;
        for (int i = 0; i < count; ++i)
            words[i] |= static_cast<uint32_t>((start + i * perWord) >> kFixedBits) << shift;
    }
}

}  // namespace

void CGraphicBuffer::FillSafeRect(CRect rect, CColor color) {
    if (color.alpha == 0) return;
    ForEachStoredRow(rect, [color](uint32_t* row, size_t words) {
        if (color.alpha == 255) {
            pixel_rows::Fill(row, color.GetWord(), words);
        } else {
            pixel_rows::BlendColor(row, color, words);
        }
    });
}

void CGraphicBuffer::FillRect(CRect rect) {
    if (IsSafe() && MakeSafeRect(&rect)) FillSafeRect(rect, fillColor);
}

void CGraphicBuffer::FillRect(CRect rect, CColor* color) {
    if (color != nullptr && IsSafe() && MakeSafeRect(&rect)) FillSafeRect(rect, *color);
}

void CGraphicBuffer::FillRect(CRect rect, CColor topLeft, CColor topRight, CColor bottomRight,
                              CColor bottomLeft) {
    if (topLeft == topRight && topLeft == bottomRight && topLeft == bottomLeft)
        return FillRect(rect, &topLeft);
    const CRect whole = rect;
    if (!IsSafe() || !MakeSafeRect(&rect)) return;

    // The left edge divides by the rows and the right by the rows less one; the rows between lean
    // slightly.
    const int64_t rows = int64_t{whole.height} * scaleFactor;
    const int64_t columns = int64_t{whole.width} * scaleFactor;
    FixedColor left(bottomLeft);
    FixedColor right(bottomRight);
    const FixedColor leftStep = FixedColor::Step(left, FixedColor(topLeft), rows);
    const FixedColor rightStep = FixedColor::Step(right, FixedColor(topRight), rows - 1);
    ForEachStoredRow(rect, [&](uint32_t* row, size_t words) {
        FixedColor color = left;
        const FixedColor step = FixedColor::Step(left, right, columns - 1);
        uint32_t chunk[kChunkWords];
        for (size_t done = 0; done < words; done += kChunkWords) {
            const size_t count = std::min<size_t>(kChunkWords, words - done);
            SpreadGradient(chunk, color, step, static_cast<int>(count));
            pixel_rows::Blend(row + done, chunk, count);
            if (count == kChunkWords) color.Advance(step, kChunkWords);
        }
        left.Advance(leftStep);
        right.Advance(rightStep);
    });
}

void CGraphicBuffer::FillRectGradVert(CRect rect, CColor top, CColor bottom) {
    FillRect(rect, top, top, bottom, bottom);
}

void CGraphicBuffer::FillRectGradHorz(CRect rect, CColor left, CColor right) {
    FillRect(rect, left, right, right, left);
}

void CGraphicBuffer::DrawRect(CRect rect) {
    lineWidth = std::max(lineWidth, 1);
    const int w = lineWidth;
    const int right = SaturatedInt(int64_t{rect.GetRight()} - w);
    const int bottom = SaturatedInt(int64_t{rect.GetBottom()} - w);
    const int innerLeft = SaturatedInt(int64_t{rect.left} + w);
    const int innerWidth = SaturatedInt(int64_t{rect.width} - 2 * w);
    CColor color = lineColor;
    FillRect(CRect(rect.left, rect.top, w, rect.height), &color);
    FillRect(CRect(right, rect.top, w, rect.height), &color);
    FillRect(CRect(innerLeft, rect.top, innerWidth, w), &color);
    FillRect(CRect(innerLeft, bottom, innerWidth, w), &color);
}

}  // namespace norava
