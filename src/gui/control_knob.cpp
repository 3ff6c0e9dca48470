#include "gui/control_knob.h"

#include <algorithm>
#include <cmath>

#include "gui/smooth_shapes.h"
#include "gui/unit_value.h"
#include "gui/window_port.h"

namespace norava {

namespace {

constexpr float kCommentStep = 0.35f;
constexpr int kCommentWidth = 52;
constexpr int kCommentHeight = 17;
constexpr int kCommentMargin = 8;
constexpr float kCommentCorner = 3.0f;
constexpr CColor kCommentFill(25, 28, 36);
constexpr CColor kCommentFrame(218, 195, 150, 191);
constexpr CColor kCommentText(255, 217, 204);

constexpr float kMostTurned = 135.0f;  // degrees from upright to an end
constexpr CColor kTrack(14, 13, 12);
constexpr CColor kTrackInside(36, 32, 28);
constexpr CColor kArc(246, 180, 92);
constexpr CColor kBodyEdge(10, 9, 8);
constexpr CColor kBodyShade(38, 35, 32);
constexpr CColor kBodyLight(96, 90, 82);
constexpr CColor kBody(66, 62, 57);
constexpr CColor kPointer(246, 234, 211);

}  // namespace

void CControlKnob::SetKnobAnimImage(CImage* picture, int frames, bool downwards, CSize frameSize,
                                    CPoint firstFrame, int gap) {
    strip = frames > 0 ? picture : nullptr;
    frameCount = frames;
    goesDown = downwards;
    frame = frameSize;
    origin = firstFrame;
    frameGap = gap;
    if (!strip || (frame.cx > 0 && frame.cy > 0)) return;
    const CSize whole = strip->GetSize();
    frame = downwards ? CSize(whole.cx, whole.cy / frames) : CSize(whole.cx / frames, whole.cy);
}

float CControlKnob::Quantize(float unit) const {
    if (quantizing < 2) return unit;
    const auto steps = static_cast<float>(quantizing - 1);
    return std::floor(unit * steps + 0.5f) / steps;
}

// Halves go up, also where a fraction such as a sixth falls a little short of one.
int CControlKnob::GetFrame() const {
    const double position = static_cast<double>(ToUnit(GetValue())) * (frameCount - 1);
    return std::clamp(static_cast<int>(position + 0.5 + 0.001), 0, frameCount - 1);
}

void CControlKnob::DrawToBuffer() {
    DrawBackground();
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (!scope) return;
    if (!strip) return DrawArrowKnob(*GetGraphicBuffer());
    const int64_t step = goesDown ? int64_t{frame.cy} + frameGap : int64_t{frame.cx} + frameGap;
    const int way = SaturatedInt(step * GetFrame());
    CPoint from = origin;
    from.Shift(goesDown ? CSize(0, way) : CSize(way, 0));
    GetGraphicBuffer()->DrawImage(strip, CRect(GetPosition(), frame), from);
}

void CControlKnob::DrawArrowKnob(CGraphicBuffer& buffer) const {
    using smooth_shapes::DrawArc;
    using smooth_shapes::FillDisc;
    const CRect whole = TamedRect(GetRect());
    const float half = static_cast<float>(std::min(whole.width, whole.height)) / 2;
    const CPointF center(static_cast<float>(whole.left) + static_cast<float>(whole.width) / 2,
                         static_cast<float>(whole.top) + static_cast<float>(whole.height) / 2);
    const float arcWidth = std::max(1.5f, half * 0.12f);
    const float arcRadius = half - arcWidth / 2 - 0.5f;
    const float angle = kMostTurned * (2 * ToUnit(GetValue()) - 1);
    DrawArc(buffer, center, arcRadius, arcWidth + 0.9f, -kMostTurned, kMostTurned, kTrack);
    DrawArc(buffer, center, arcRadius, arcWidth - 0.5f, -kMostTurned, kMostTurned, kTrackInside);
    DrawArc(buffer, center, arcRadius, arcWidth, -kMostTurned, angle, kArc);

    // Light from above: a bright and a dark copy stand out behind the body.
    const float body = arcRadius - arcWidth - 1.0f;
    FillDisc(buffer, {center.x, center.y + half * 0.05f}, body + 0.8f, kBodyEdge);
    FillDisc(buffer, center, body, kBodyShade);
    FillDisc(buffer, {center.x, center.y - body * 0.03f}, body * 0.95f, kBodyLight);
    FillDisc(buffer, {center.x, center.y + body * 0.03f}, body * 0.93f, kBody);
    const CPointF tip = smooth_shapes::PointAt(center, body * 0.86f, angle);
    const CPointF tail = smooth_shapes::PointAt(center, body * 0.36f, angle);
    const float width = std::max(1.6f, half * 0.11f);
    smooth_shapes::DrawStroke(buffer, tail, tip, width + 1.2f, CColor(0, 150));
    smooth_shapes::DrawStroke(buffer, tail, tip, width, kPointer);
}

// Below the knob, moved into the window.
CRect CControlKnob::PlaceComment() {
    const CSize window = GetWindowPort()->GetSize();
    CGraphicBuffer* buffer = GetGraphicBuffer();
    const int needed = buffer ? MeasureLabel(*buffer, comment, false) : 0;
    const int width = std::max(kCommentWidth, needed + 2 * kCommentMargin);
    const int left = std::min(TamedRect(GetRect()).GetCenter().x - width / 2, window.cx - width);
    const int top = std::min(TamedRect(GetRect()).GetBottom(), window.cy - kCommentHeight);
    return {std::max(0, left), top, width, kCommentHeight};
}

void CControlKnob::ShowComment() {
    if (!GetWindowPort()) return;
    comment = GetValueText();
    commentRect = PlaceComment();
    GetWindowPort()->ShowOverlay(this, commentRect, commentOpacity);
}

void CControlKnob::DrawOverlay() {
    const PaintScope scope(GetGraphicBuffer(), commentRect);
    if (!scope) return;
    CGraphicBuffer& buffer = *GetGraphicBuffer();
    buffer.DrawRectWithRoundCorner(commentRect, true, kCommentCorner, kCommentCorner);
    const CRect inside(commentRect.left + 1, commentRect.top + 1, commentRect.width - 2,
                       commentRect.height - 2);
    buffer.SetFillColor(kCommentFill);
    buffer.DrawRectWithRoundCorner(inside, true, kCommentCorner - 1, kCommentCorner - 1);
    buffer.SetLineColor(kCommentFrame);
    buffer.DrawRectWithRoundCorner(inside, false, kCommentCorner - 1, kCommentCorner - 1);
    DrawLabel(buffer, comment, inside, {kCommentText, TextAlign::center});
}

bool CControlKnob::MouseMove() {
    const bool used = CControlNumber::MouseMove();
    if (IsDragged() && commentOpacity > 0.0f && comment != GetValueText()) ShowComment();
    return used;
}

bool CControlKnob::TimerEvent() {
    if (!IsDragged() || !showsComment) return false;
    const bool fades = commentOpacity < 1.0f;
    commentOpacity = std::min(1.0f, commentOpacity + kCommentStep);
    if (fades || comment != GetValueText()) ShowComment();
    return true;
}

bool CControlKnob::LostFocus() {
    if (CWindowPort* port = GetWindowPort(); port && commentOpacity > 0.0f) port->HideOverlay(this);
    commentOpacity = 0.0f;
    return CControlNumber::LostFocus();
}

}  // namespace norava
