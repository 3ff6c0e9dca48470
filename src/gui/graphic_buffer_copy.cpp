#include <algorithm>
#include <cstring>

#include "gui/graphic_buffer.h"
#include "gui/pixel_rows.h"

namespace norava {

namespace {

// Logical pixels that are spread to the destination's scale at a time.
constexpr int kChunkPixels = 64;

// The first stored word of every logical pixel, `repeat` times each.
void Spread(uint32_t* spread, const uint32_t* source, int sourceStep, int pixels, int repeat) {
    for (int i = 0; i < pixels; ++i, source += sourceStep)
        spread = std::fill_n(spread, repeat, *source);
}

}  // namespace

void CGraphicBuffer::CopyRect(CGraphicBuffer* destination, CRect rect, CPoint source,
                              unsigned char alpha) const {
    if (destination == nullptr || !IsSafe() || !destination->IsSafe() || alpha == 0) return;
    if (!MakeSafeOnCopy(destination, &rect, &source)) return;
    // From the bottom line up and from left to right: what a copy within one buffer reads has been
    // written before where the places overlap, so that case goes pixel by pixel.
    for (int line = rect.height - 1; line >= 0; --line) {
        const CPoint to(rect.left, rect.top + line);
        const CPoint from(source.x, source.y + line);
        if (destination != this) {
            CopyLine(*destination, CRect(to, {rect.width, 1}), from, alpha);
            continue;
        }
        for (int x = 0; x < rect.width; ++x)
            CopyLine(*destination, CRect(to.x + x, to.y, 1, 1), {from.x + x, from.y}, alpha);
    }
}

void CGraphicBuffer::CopyRectAlphaF(CGraphicBuffer* destination, CRect rect, CPoint source,
                                    float alpha) const {
    CopyRect(destination, rect, source, CColor::UnitToByte(alpha));
}

void CGraphicBuffer::CopyLine(CGraphicBuffer& destination, CRect line, CPoint from,
                              unsigned char alpha) const {
    const bool replace = !hasAlpha && alpha == 255;
    const auto combine = [&](uint32_t* to, const uint32_t* words, size_t count) {
        if (replace) {
            std::memmove(to, words, count * sizeof *words);
        } else {
            pixel_rows::Compose(to, words, count, alpha);
        }
    };
    const uint32_t* source = BlockAt(from.x, from.y);
    uint32_t* target = destination.BlockAt(line.left, line.top);
    const int repeat = destination.scaleFactor;
    if (scaleFactor == repeat && (repeat == 1 || hasDetail)) {
        for (int i = 0; i < repeat; ++i, target += destination.StrideWords())
            combine(target, source + ToCount(i) * StrideWords(),
                    ToCount(line.width) * ToCount(repeat));
        return;
    }

    uint32_t spread[kChunkPixels * kMaxScaleFactor];
    for (int done = 0; done < line.width; done += kChunkPixels) {
        const int pixels = std::min(kChunkPixels, line.width - done);
        Spread(spread, source + ToCount(done) * ToCount(scaleFactor), scaleFactor, pixels, repeat);
        uint32_t* row = target + ToCount(done) * ToCount(repeat);
        for (int i = 0; i < repeat; ++i, row += destination.StrideWords())
            combine(row, spread, ToCount(pixels) * ToCount(repeat));
    }
}

void CGraphicBuffer::DrawImage(const CGraphicBuffer* source, CRect rect, CPoint from) {
    DrawImage(source, rect, from, static_cast<unsigned char>(255));
}

void CGraphicBuffer::DrawImage(const CGraphicBuffer* source, CRect rect, CPoint from,
                               unsigned char alpha) {
    if (source != nullptr && IsSafe()) source->CopyRect(this, rect, from, alpha);
}

void CGraphicBuffer::DrawImage(const CGraphicBuffer* source, CRect rect, CPoint from, float alpha) {
    DrawImage(source, rect, from, CColor::UnitToByte(alpha));
}

}  // namespace norava
