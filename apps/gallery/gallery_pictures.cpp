#include "gallery/gallery_pictures.h"

#include "gui/label.h"
#include "gui/smooth_shapes.h"

namespace norava {

namespace {

constexpr CColor kPlate(47, 44, 42);
constexpr CColor kIvory(246, 234, 211);
constexpr CColor kAmber(246, 180, 92);

std::unique_ptr<CImage> MakePicture(CSize size) {
    auto picture = std::make_unique<CImage>();
    picture->SetSize(size);
    picture->Clear(kPlate);
    return picture;
}

}  // namespace

std::unique_ptr<CImage> PaintKnobStrip() {
    auto strip = MakePicture(CSize(kStripFrame.cx, kStripFrame.cy * kStripFrames));
    for (int frame = 0; frame < kStripFrames; ++frame) {
        const float angle =
            -135.0f + 270.0f * static_cast<float>(frame) / static_cast<float>(kStripFrames - 1);
        const CPointF center(16, static_cast<float>(frame * kStripFrame.cy) + 16);
        using namespace smooth_shapes;
        DrawArc(*strip, center, 13.5f, 3, -135, 135, CColor(20, 19, 18));
        DrawArc(*strip, center, 13.5f, 2, -135, angle, kAmber);
        FillDisc(*strip, center, 10.5f, CColor(14));
        FillDisc(*strip, center, 9.8f, CColor(150, 144, 134));
        FillDisc(*strip, {center.x, center.y - 0.5f}, 8.6f, CColor(206, 200, 188));
        FillDisc(*strip, {center.x, center.y + 0.6f}, 8.2f, CColor(176, 170, 158));
        DrawStroke(*strip, PointAt(center, 2.5f, angle), PointAt(center, 9, angle), 2,
                   CColor(22, 17, 12));
    }
    return strip;
}

std::unique_ptr<CImage> PaintLamp() {
    auto lamp = MakePicture(CSize(kLampFrame.cx, 2 * kLampFrame.cy));
    for (const bool on : {false, true}) {
        const CPointF center(11, on ? 33.0f : 11.0f);
        using namespace smooth_shapes;
        if (on) FillDisc(*lamp, center, 11, CColor(255, 182, 72, 60));
        FillDisc(*lamp, center, 8.5f, CColor(12, 11, 10));
        FillDisc(*lamp, center, 7.2f, CColor(120, 112, 100));
        FillDisc(*lamp, center, 6, on ? CColor(255, 196, 92) : CColor(67, 48, 26));
        FillDisc(*lamp, {center.x - 1.5f, center.y - 2}, 2, CColor(255, 251, 233, on ? 220 : 40));
    }
    return lamp;
}

std::unique_ptr<CImage> PaintOptions() {
    auto options = MakePicture(CSize(kOptionsFrame.cx, 2 * kOptionsFrame.cy));
    for (const bool on : {false, true}) {
        const CRect face(0, on ? kOptionsFrame.cy : 0, kOptionsFrame.cx, kOptionsFrame.cy);
        options->FillRectGradVert(face, CColor(on ? 40 : 78), CColor(on ? 56 : 48));
        options->SetLineColor(CColor(10));
        options->DrawRect(face);
        const CColor ink = on ? CColor(247, 223, 180) : kIvory;
        DrawLabel(*options, "Options", CRect(face.left + 6, face.top, 46, face.height), {ink});
        smooth_shapes::FillArrow(*options, {54, static_cast<float>(face.top) + 7.5f}, 3.5f, 4, ink);
    }
    return options;
}

std::unique_ptr<CImage> PaintFaderCap() {
    auto cap = MakePicture(kCapFrame);
    cap->FillRectGradVert(CRect({0, 0}, kCapFrame), CColor(205, 180, 130), CColor(124, 102, 66));
    cap->DrawRect(CRect({0, 0}, kCapFrame));
    CColor mark(60, 44, 22);
    cap->FillRect(CRect(2, kCapFrame.cy / 2 - 1, kCapFrame.cx - 4, 2), &mark);
    return cap;
}

}  // namespace norava
