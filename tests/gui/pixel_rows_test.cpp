#include "gui/pixel_rows.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "gui/plain_raster.h"

namespace norava {
namespace {

using test::PlainBlend;
using test::PlainCompose;

// Lengths on both sides of every vector width and chunk.
constexpr size_t kLengths[] = {0, 1, 2, 3, 5, 7, 8, 9, 15, 31, 63, 64, 65, 130, 200};

struct Rows {
    std::vector<uint32_t> under, over;

    explicit Rows(size_t count) {
        CGraphicBuffer noise;
        noise.SetSize(CSize(static_cast<int>(count) + 1, 2));
        test::FillWithNoise(noise, static_cast<uint32_t>(count));
        under.assign(noise.GetDataAt(0, 0), noise.GetDataAt(0, 0) + count);
        over.assign(noise.GetDataAt(0, 1), noise.GetDataAt(0, 1) + count);
    }
};

TEST(PixelRows, AgreeWithThePlainFormula) {
    for (const size_t count : kLengths) {
        const Rows rows(count);
        std::vector<uint32_t> blended = rows.under, colored = rows.under;
        pixel_rows::Blend(blended.data(), rows.over.data(), count);
        const CColor color(200, 100, 50, static_cast<int>(count) & 0xFF);
        pixel_rows::BlendColor(colored.data(), color, count);
        for (size_t i = 0; i < count; ++i) {
            const CColor under = CColor::FromWord(rows.under[i]);
            const CColor over = CColor::FromWord(rows.over[i]);
            ASSERT_EQ(blended[i], PlainBlend(under, over).GetWord());
            ASSERT_EQ(blended[i], pixel_rows::BlendedWord(rows.under[i], rows.over[i]));
            ASSERT_EQ(colored[i], PlainBlend(under, color).GetWord());
        }
        for (const uint8_t opacity : {uint8_t{255}, uint8_t{254}, uint8_t{128}, uint8_t{1}}) {
            std::vector<uint32_t> composed = rows.under;
            pixel_rows::Compose(composed.data(), rows.over.data(), count, opacity);
            for (size_t i = 0; i < count; ++i) {
                const CColor under = CColor::FromWord(rows.under[i]);
                const CColor over = CColor::FromWord(rows.over[i]);
                ASSERT_EQ(composed[i], PlainCompose(under, over, opacity).GetWord());
                ASSERT_EQ(composed[i],
                          pixel_rows::ComposedWord(rows.under[i], rows.over[i], opacity));
            }
        }
    }
}

// All 256 x 256 pairs of level and alpha, for black and white above.
TEST(PixelRows, BlendEveryLevelWithEveryAlpha) {
    std::vector<uint32_t> levels(256);
    for (uint32_t level = 0; level < 256; ++level)
        levels[level] = 0x11000000u + level * 0x010101u;
    for (int alpha = 0; alpha < 256; ++alpha) {
        for (const int grey : {0, 255}) {
            std::vector<uint32_t> row = levels;
            pixel_rows::BlendColor(row.data(), CColor(grey, alpha), row.size());
            for (int level = 0; level < 256; ++level) {
                const uint8_t expected = PlainBlend(level, grey, alpha);
                ASSERT_EQ(row[static_cast<size_t>(level)], 0x11000000u + expected * 0x010101u);
            }
        }
    }
}

}  // namespace
}  // namespace norava
