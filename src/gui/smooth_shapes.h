#pragma once

#include "gui/geometry.h"
#include "gui/graphic_buffer.h"

// Anti-aliased shapes at the full resolution of the buffer, for controls that have no picture.
// Coordinates are logical pixels, pixel (0, 0) covers 0 .. 1; everything stays inside the clip
// rectangle. Angles are degrees, 0 upwards, clockwise.
namespace norava::smooth_shapes {

void FillDisc(CGraphicBuffer& buffer, CPointF center, float radius, CColor color);
// With flat ends; `from` < `to`, at most a full turn apart.
void DrawArc(CGraphicBuffer& buffer, CPointF center, float radius, float width, float from,
             float to, CColor color);
// With round ends.
void DrawStroke(CGraphicBuffer& buffer, CPointF from, CPointF to, float width, CColor color);
// A triangle that points up (height below 0) or down, with its flat side on `middle`.
void FillArrow(CGraphicBuffer& buffer, CPointF middle, float halfWidth, float height, CColor color);

// The point that far from the centre in that direction.
CPointF PointAt(CPointF center, float radius, float angle);

}  // namespace norava::smooth_shapes
