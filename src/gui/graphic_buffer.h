#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "gui/color.h"
#include "gui/geometry.h"
#include "gui/outline_font.h"

namespace norava {

class PixelTarget;
class SystemFonts;
class BitmapFont;

// The raster that everything is painted into: 32-bit pixels, integer blending, no help from the
// system.
//
// Coordinates are logical pixels with y downwards; each covers scale x scale stored pixels. Stored
// rows lie bottom-up. All drawing is limited to the clip rectangle, which always lies inside the
// buffer, so any rectangle, point or text is safe. A blend never changes the alpha byte of the
// destination: it is the coverage of a pixel when this buffer serves as a source. Drawing into a
// buffer without pixels does nothing.
//
// One thread at a time may use a buffer; a finished one may be copied from by many.
class CGraphicBuffer {
  public:
    static constexpr int kMaxScaleFactor = 4;
    static constexpr int kMaxLineWidth = 32;
    static constexpr int kMaxTextCharacters = 1024;
    // More stored pixels than this are refused (1 GiB): no window is so large, only a damaged
    // number is.
    static constexpr int64_t kMaxStoredPixels = int64_t{1} << 28;

    explicit CGraphicBuffer(int scale = 1);
    virtual ~CGraphicBuffer();
    CGraphicBuffer(const CGraphicBuffer&) = delete;
    CGraphicBuffer& operator=(const CGraphicBuffer&) = delete;

    // Logical size. The same size again keeps the pixels; a new one starts with all words 0. A
    // width or height below 1 empties the buffer. False only when the memory is refused, with an
    // empty buffer.
    virtual bool SetSize(CSize newSize);
    // Fills every word, also outside the clip rectangle.
    virtual void Clear(CColor color);
    // True when some of the rectangle lies in the buffer; otherwise the clip is the whole buffer.
    virtual bool SetClipRect(CRect rect);
    virtual void SetClipRect();
    // Shows a rectangle of the buffer (logical; PresentTrue: stored pixels). Rectangles are shown
    // where they lie, so the point is without effect.
    virtual void Present(PixelTarget* target, CRect rect, CPoint point) const;
    virtual void PresentTrue(PixelTarget* target, CRect rect, CPoint point) const;
    // Copies from this buffer, starting at `source`, into a rectangle of another. Per pixel the
    // coverage is (alpha byte * alpha) >> 8; opaque pixels replace, others blend. Without the
    // has-alpha flag and with alpha 255 all replace.
    virtual void CopyRect(CGraphicBuffer* destination, CRect rect, CPoint source,
                          unsigned char alpha) const;
    virtual void CopyRectAlphaF(CGraphicBuffer* destination, CRect rect, CPoint source,
                                float alpha) const;
    [[nodiscard]] virtual CSize GetSize() const { return size; }
    [[nodiscard]] virtual CRect GetClipRect() const { return clip; }
    virtual void SetHasAlpha(bool on) { hasAlpha = on; }
    [[nodiscard]] virtual bool GetHasAlpha() const { return hasAlpha; }
    // Whether the stored pixels of a logical one may differ, as in a picture made at this scale.
    // Copies into a buffer of the same scale then keep them all; others take one of each.
    void SetHasDetail(bool on) { hasDetail = on; }
    [[nodiscard]] bool GetHasDetail() const { return hasDetail; }

    // Black, opaque, line width 1, pen at 0, 0, regular font, aligned left.
    virtual void ResetDrawingProperties();
    virtual void SetLineColor(CColor color) { lineColor = color; }
    virtual void SetLineWidth(int width);  // 1 .. 32
    [[nodiscard]] virtual CColor GetLineColor() const { return lineColor; }
    [[nodiscard]] virtual int GetLineWidth() const { return lineWidth; }

    virtual void FillRect(CRect rect, CColor* color);
    // Gradient between four corners, blended with the interpolated alpha. The colours start at the
    // first row and column that the clip lets through: what uses gradients is repainted whole.
    virtual void FillRect(CRect rect, CColor topLeft, CColor topRight, CColor bottomRight,
                          CColor bottomLeft);
    virtual void FillRectGradVert(CRect rect, CColor top, CColor bottom);
    virtual void FillRectGradHorz(CRect rect, CColor left, CColor right);
    virtual void FillRect(CRect rect);
    // Frame inside the rectangle, line colour and width.
    virtual void DrawRect(CRect rect);
    virtual void SetFillColor(CColor color) { fillColor = color; }
    [[nodiscard]] virtual CColor GetFillColor() const { return fillColor; }

    virtual void SetFontNormal() { bold = false; }
    virtual void SetFontBold() { bold = true; }
    virtual void SetTextColor(CColor color) { textColor = color; }
    virtual void SetTextAlignLeft() { alignment = Alignment::left; }
    virtual void SetTextAlignCenter() { alignment = Alignment::center; }
    virtual void SetTextAlignRight() { alignment = Alignment::right; }
    // One line, centred vertically in the rectangle and not limited to it. Returns its size, 0 x 0
    // for an empty text or buffer. Bytes outside '!' .. '~' show as '?'; after 1024 the text ends.
    // Above scale 1 the letters are drawn from outlines, in the same places.
    virtual CSize DrawText(const char* text, CRect rect, bool measureOnly);

    // Soft black shadow, nine pixels deep, along the inside of the rectangle. Leaves the line
    // colour black and moves the pen.
    virtual void DrawShadow(CRect rect);
    // Anti-aliased; the radii of the corners are logical pixels and at most half the rectangle.
    // Filled with the fill colour, or outlined with line colour and width inside the rectangle.
    virtual void DrawRectWithRoundCorner(CRect rect, bool filled, float radiusX, float radiusY);

    // Limits a rectangle to the clip rectangle; true when something is left.
    virtual bool MakeSafeRect(CRect* rect) const;
    // The same for a copy out of this buffer, on both sides. What this buffer's own edge cuts off
    // at the left or top shortens the copy without moving the destination.
    virtual bool MakeSafeOnCopy(const CGraphicBuffer* destination, CRect* rect,
                                CPoint* source) const;
    virtual void Destroy();
    [[nodiscard]] virtual bool IsSafe() const { return store != nullptr; }

    void MoveTo(CPointF to) { pen = to; }
    void LineTo(CPointF to) { DrawLine(pen, to); }
    // Line colour and width; the pen ends at `to`.
    void DrawLine(CPointF from, CPointF to);
    void DrawLine(CPoint from, CPoint to) { DrawLine(CPointF(from), CPointF(to)); }
    void DrawLine(CPoint from, CPointF to) { DrawLine(CPointF(from), to); }
    void DrawLine(CPointF from, CPoint to) { DrawLine(from, CPointF(to)); }
    // One anti-aliased stroke. Strokes that end further than 2^30 pixels away are not drawn.
    void DrawBasicLine(double x1, double y1, double x2, double y2, CColor color);

    // Copies from a picture into this buffer.
    void DrawImage(const CGraphicBuffer* source, CRect rect, CPoint from);
    void DrawImage(const CGraphicBuffer* source, CRect rect, CPoint from, unsigned char alpha);
    void DrawImage(const CGraphicBuffer* source, CRect rect, CPoint from, float alpha);

    // The stored block of the logical pixel in column x of the row y counted from the bottom; null
    // outside.
    [[nodiscard]] uint32_t* GetDataAt(int x, int y);
    [[nodiscard]] const uint32_t* GetDataAt(int x, int y) const;
    // Write the scale x scale block at an address from GetDataAt; other addresses are ignored.
    void SetPixelAt(uint32_t* block, uint32_t word);
    void BlendPixelAt(uint32_t* block, uint32_t word);
    // Transparent black outside the buffer.
    [[nodiscard]] CColor GetColorAt(int x, int y) const;
    // Blends, inside the clip rectangle.
    void SetColorAt(int x, int y, CColor color);
    [[nodiscard]] int GetSclFactor() const { return scaleFactor; }
    // Brought into 1 .. 4. Another factor starts again with all words 0 and the same logical size;
    // false, with an empty buffer, when the memory is refused.
    bool SetSclFactor(int scale);

    // How many live buffers share the built-in fonts.
    [[nodiscard]] static long FontRefNum();

  private:
    enum class Alignment { left = 0, center = 1, right = 2 };
    struct FreeMemory {
        void operator()(void* memory) const { std::free(memory); }
    };

    [[nodiscard]] size_t StrideWords() const { return ToCount(size.cx) * ToCount(scaleFactor); }
    [[nodiscard]] size_t StoredRows() const { return ToCount(size.cy) * ToCount(scaleFactor); }
    [[nodiscard]] static size_t ToCount(int value) { return static_cast<size_t>(value); }
    // First stored word of the logical pixel (x, y), y downwards. The pixel must lie in the buffer.
    [[nodiscard]] uint32_t* BlockAt(int x, int y);
    [[nodiscard]] const uint32_t* BlockAt(int x, int y) const;
    [[nodiscard]] bool OwnsBlock(const uint32_t* block) const;
    void BlendBlock(uint32_t* block, uint32_t word);
    // Calls use(row, words) for each stored row of a rectangle inside the buffer, from the bottom
    // up.
    template <typename UseRow>
    void ForEachStoredRow(CRect rect, const UseRow& use);
    void FillSafeRect(CRect rect, CColor color);
    void CopyLine(CGraphicBuffer& destination, CRect line, CPoint from, unsigned char alpha) const;
    void BlendInsideClip(int64_t x, int64_t y, CColor color, uint32_t alpha);
    void DrawShadowCorners(CRect rect);
    void DrawShadowEdges(CRect rect);
    void DrawGlyphs(const BitmapFont& font, const char* text, int64_t x, int64_t y);
    void DrawOutlines(const OutlineFont::Glyphs& glyphs, const BitmapFont& font, const char* text,
                      int64_t x, int64_t y);
    void DrawOutline(const OutlineFont::Glyph& glyph, int64_t x, int64_t y);

    CSize size;
    CRect clip;
    std::unique_ptr<uint32_t[], FreeMemory> store;
    bool hasAlpha = false;
    bool hasDetail = false;
    CColor lineColor;
    int lineWidth = 1;
    CPointF pen;
    CColor fillColor;
    CColor textColor;
    Alignment alignment = Alignment::left;
    bool bold = false;
    int scaleFactor;
    std::shared_ptr<const SystemFonts> fonts;
};

}  // namespace norava
