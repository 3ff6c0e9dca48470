#include "gui/graphic_buffer.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "gui/pixel_rows.h"
#include "gui/pixel_target.h"
#include "gui/system_fonts.h"

namespace norava {

CGraphicBuffer::CGraphicBuffer(int scale)
    : scaleFactor(std::clamp(scale, 1, kMaxScaleFactor)), fonts(SystemFonts::Share()) {}

CGraphicBuffer::~CGraphicBuffer() = default;

long CGraphicBuffer::FontRefNum() {
    return SystemFonts::CountUsers();
}

bool CGraphicBuffer::SetSize(CSize newSize) {
    if (newSize == size) return true;
    Destroy();
    if (newSize.cx < 1 || newSize.cy < 1) return true;
    const int64_t words = int64_t{newSize.cx} * newSize.cy;
    if (words > kMaxStoredPixels / (scaleFactor * scaleFactor)) return false;
    const auto bytes = static_cast<size_t>(words * scaleFactor * scaleFactor) * sizeof(uint32_t);
    // Fresh pages from the system are zero already: a large picture costs only what is then
    // written.
    store.reset(static_cast<uint32_t*>(std::calloc(1, bytes)));
    if (!store) return false;
    size = newSize;
    SetClipRect();
    return true;
}

bool CGraphicBuffer::SetSclFactor(int scale) {
    const int wanted = std::clamp(scale, 1, kMaxScaleFactor);
    if (wanted == scaleFactor) return true;
    const CSize kept = size;
    Destroy();
    scaleFactor = wanted;
    return SetSize(kept);
}

void CGraphicBuffer::Destroy() {
    store.reset();
    size = CSize();
    clip = CRect();
}

void CGraphicBuffer::Clear(CColor color) {
    if (IsSafe()) pixel_rows::Fill(store.get(), color.GetWord(), StrideWords() * StoredRows());
}

void CGraphicBuffer::SetClipRect() {
    clip = CRect(0, 0, size);
}

bool CGraphicBuffer::SetClipRect(CRect rect) {
    SetClipRect();
    if (!MakeSafeRect(&rect)) return false;
    clip = rect;
    return true;
}

bool CGraphicBuffer::MakeSafeRect(CRect* rect) const {
    *rect = rect->GetIntersection(clip);
    return !rect->IsEmpty();
}

bool CGraphicBuffer::MakeSafeOnCopy(const CGraphicBuffer* destination, CRect* rect,
                                    CPoint* source) const {
    const CRect target = destination->GetClipRect();
    const int64_t cutLeft = std::max<int64_t>(0, int64_t{target.left} - rect->left);
    const int64_t cutTop = std::max<int64_t>(0, int64_t{target.top} - rect->top);
    CRect from(*source, rect->GetSize());
    if (!MakeSafeRect(&from)) return false;
    rect->width = from.width;
    rect->height = from.height;
    source->x = SaturatedInt(from.left + cutLeft);
    source->y = SaturatedInt(from.top + cutTop);
    return destination->MakeSafeRect(rect);
}

void CGraphicBuffer::ResetDrawingProperties() {
    lineColor = fillColor = textColor = CColor(0);
    lineWidth = 1;
    pen = CPointF();
    alignment = Alignment::left;
    bold = false;
}

void CGraphicBuffer::SetLineWidth(int width) {
    lineWidth = std::clamp(width, 1, kMaxLineWidth);
}

void CGraphicBuffer::Present(PixelTarget* target, CRect rect, CPoint point) const {
    const auto scaled = [this](int value) { return SaturatedInt(int64_t{value} * scaleFactor); };
    PresentTrue(target,
                {scaled(rect.left), scaled(rect.top), scaled(rect.width), scaled(rect.height)},
                {scaled(point.x), scaled(point.y)});
}

void CGraphicBuffer::PresentTrue(PixelTarget* target, CRect rect, CPoint) const {
    if (!IsSafe() || target == nullptr) return;
    const CSize stored(size.cx * scaleFactor, size.cy * scaleFactor);
    const CRect visible = rect.GetIntersection(CRect(0, 0, stored));
    if (!visible.IsEmpty()) target->ShowPixels(store.get(), stored, visible);
}

uint32_t* CGraphicBuffer::BlockAt(int x, int y) {
    const size_t row = ToCount(size.cy - 1 - y);
    return store.get() + (StrideWords() * row + ToCount(x)) * ToCount(scaleFactor);
}

const uint32_t* CGraphicBuffer::BlockAt(int x, int y) const {
    return const_cast<CGraphicBuffer*>(this)->BlockAt(x, y);
}

uint32_t* CGraphicBuffer::GetDataAt(int x, int y) {
    if (!CRect(0, 0, size).IsPointInside({x, y})) return nullptr;
    return BlockAt(x, size.cy - 1 - y);
}

const uint32_t* CGraphicBuffer::GetDataAt(int x, int y) const {
    return const_cast<CGraphicBuffer*>(this)->GetDataAt(x, y);
}

bool CGraphicBuffer::OwnsBlock(const uint32_t* block) const {
    const uint32_t* end = store.get() + StrideWords() * StoredRows();
    if (!IsSafe() || std::less<>()(block, store.get()) || !std::less<>()(block, end)) return false;
    const auto index = static_cast<size_t>(block - store.get());
    const size_t blockWords = ToCount(scaleFactor);
    return index % StrideWords() + blockWords <= StrideWords() &&
           index / StrideWords() + blockWords <= StoredRows();
}

void CGraphicBuffer::SetPixelAt(uint32_t* block, uint32_t word) {
    if (!OwnsBlock(block)) return;
    for (int row = 0; row < scaleFactor; ++row, block += StrideWords())
        pixel_rows::Fill(block, word, ToCount(scaleFactor));
}

void CGraphicBuffer::BlendPixelAt(uint32_t* block, uint32_t word) {
    if (OwnsBlock(block)) BlendBlock(block, word);
}

void CGraphicBuffer::BlendBlock(uint32_t* block, uint32_t word) {
    for (int row = 0; row < scaleFactor; ++row, block += StrideWords())
        for (int column = 0; column < scaleFactor; ++column)
            block[column] = pixel_rows::BlendedWord(block[column], word);
}

CColor CGraphicBuffer::GetColorAt(int x, int y) const {
    if (!IsSafe() || !CRect(0, 0, size).IsPointInside({x, y})) return {0, 0};
    return CColor::FromWord(*BlockAt(x, y));
}

void CGraphicBuffer::SetColorAt(int x, int y, CColor color) {
    if (IsSafe() && clip.IsPointInside({x, y})) BlendBlock(BlockAt(x, y), color.GetWord());
}

}  // namespace norava
