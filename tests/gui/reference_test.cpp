#include <gtest/gtest.h>

#include <string>

#include "gui/graphic_buffer.h"
#include "gui/pictures.h"

// Small pictures of everything the raster draws, looked at once and compared to the bit ever since.
namespace norava {
namespace {

class ReferencePicture : public testing::TestWithParam<int> {
  protected:
    void ExpectLooks(const std::string& subject) {
        test::ExpectLooksLike(canvas, subject + "_scale" + std::to_string(GetParam()));
    }
    CGraphicBuffer canvas{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Scales, ReferencePicture, testing::Values(1, 2));

TEST_P(ReferencePicture, Shapes) {
    canvas.SetSize(CSize(160, 120));
    canvas.Clear(CColor(52, 49, 47));
    canvas.FillRectGradVert(CRect(4, 4, 48, 30), CColor(243, 223, 180), CColor(124, 102, 66));
    canvas.FillRect(CRect(56, 4, 48, 30), CColor(255, 0, 0), CColor(0, 255, 0), CColor(0, 0, 255),
                    CColor(255, 255, 0, 0));
    canvas.FillRectGradHorz(CRect(108, 4, 48, 30), CColor(255, 154, 44), CColor(255, 154, 44, 0));

    CColor sheet(230);
    canvas.FillRect(CRect(4, 38, 48, 36), &sheet);
    canvas.DrawShadow(CRect(4, 38, 48, 36));

    canvas.SetFillColor(CColor(25, 28, 36));
    canvas.DrawRectWithRoundCorner(CRect(56, 38, 48, 17), true, 3, 3);
    canvas.SetLineColor(CColor(218, 195, 150, 190));
    canvas.SetLineWidth(1);
    canvas.DrawRectWithRoundCorner(CRect(56, 38, 48, 17), false, 3, 3);
    canvas.SetFillColor(CColor(255, 217, 204, 128));
    canvas.DrawRectWithRoundCorner(CRect(56, 58, 47, 15), true, 99, 99);
    canvas.SetLineWidth(3);
    canvas.DrawRectWithRoundCorner(CRect(108, 38, 48, 35), false, 16, 8);

    canvas.SetLineColor(CColor(246, 234, 211));
    for (int i = 0; i < 8; ++i) {
        canvas.SetLineWidth(1 + i / 2);
        canvas.DrawLine(CPointF(6, 80), CPointF(static_cast<float>(10 + i * 20), 116));
    }
    canvas.SetLineWidth(2);
    canvas.DrawRect(CRect(130, 80, 26, 20));
    ExpectLooks("shapes");
}

TEST_P(ReferencePicture, Letters) {
    canvas.SetSize(CSize(216, 104));
    canvas.Clear(CColor(27, 26, 30));
    canvas.SetTextColor(CColor(246, 234, 211));
    for (const bool bold : {false, true}) {
        bold ? canvas.SetFontBold() : canvas.SetFontNormal();
        for (int line = 0; line < 4; ++line) {
            std::string letters;
            for (int i = 0; i < 24; ++i)
                letters += static_cast<char>('!' + line * 24 + i);
            if (line == 3) letters.resize(22);
            canvas.DrawText(letters.c_str(), CRect(3, (bold ? 52 : 0) + line * 13, 0, 13), false);
        }
    }
    ExpectLooks("letters");
}

}  // namespace
}  // namespace norava
