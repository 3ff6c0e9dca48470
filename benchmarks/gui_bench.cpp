// Painting the editor's panel: all of it, as when a window opens, and one knob, as while it is
// dragged. Plain loops over the same pixels stand beside the vector ones.

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "benchmarks/plain_raster.h"
#include "gui/control_group.h"
#include "gui/pictures.h"
#include "gui/pixel_rows.h"
#include "gui/platform/offscreen_view.h"
#include "gui/window_port.h"

namespace norava::bench {
namespace {

constexpr CSize kPanel(855, 532);
constexpr CSize kKnob(47, 42);
constexpr int kKnobFrames = 64;

// A knob as panels have it: one frame of a strip with coverage, blended over the background.
class StripKnob : public CControl {
  public:
    StripKnob(const CImage& picture, CPoint at) : strip(picture) { SetRect(CRect(at, kKnob)); }
    void DrawToBuffer() override {
        DrawBackground();
        const int frame = static_cast<int>(GetValue() * (kKnobFrames - 1));
        GetGraphicBuffer()->DrawImage(&strip, GetRect(), {0, frame * kKnob.cy});
    }

  private:
    const CImage& strip;
};

class Label : public CControl {
  public:
    explicit Label(CRect place) { SetRect(place); }
    void DrawToBuffer() override {
        DrawBackground();
        GetGraphicBuffer()->SetTextColor(CColor(246, 234, 211));
        GetGraphicBuffer()->DrawText("hi-cut ctf", GetRect(), false);
    }
};

// 855 x 532 with a background picture, 84 knobs and 18 texts: as much as the instrument's panel.
struct Panel {
    explicit Panel(int scale) : window(scale) {
        background.SetSize(kPanel);
        test::FillWithNoise(background, 1);
        strip.SetSize(CSize(kKnob.cx, kKnob.cy * kKnobFrames));
        test::FillWithNoise(strip, 2);
        strip.SetHasAlpha(true);
        window.SetSize(kPanel);
        window.SetViewFactory([](PlatformEvents& events, void*, CSize size, int viewScale) {
            return std::make_unique<OffscreenView>(events, size, viewScale);
        });
        CControlGroup* root = window.GetRootControlGroup();
        root->SetBackgroundImage(&background);
        for (int i = 0; i < 84; ++i)
            root->Add<StripKnob>(strip, CPoint(10 + i % 14 * 58, 10 + i / 14 * 66))->SetID(i);
        for (int i = 0; i < 18; ++i)
            root->Add<Label>(CRect(10 + i % 9 * 90, 420 + i / 9 * 40, 71, 13));
        if (!window.Open()) std::abort();
    }
    CImage background, strip;
    CWindowPort window;
};

void PanelRepaint(benchmark::State& state) {
    Panel panel(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        panel.window.DrawToBuffer();
        panel.window.UpdateScreen();
    }
}
BENCHMARK(PanelRepaint)->ArgName("scale")->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

void KnobRepaint(benchmark::State& state) {
    Panel panel(static_cast<int>(state.range(0)));
    float value = 0.0f;
    for (auto _ : state) {
        value = value > 0.98f ? 0.0f : value + 1.0f / 64.0f;
        panel.window.SetControlValueAndRedraw(40, value);
    }
}
BENCHMARK(KnobRepaint)->ArgName("scale")->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

// One row of the panel, blended with a coverage for each pixel.
struct Rows {
    Rows() {
        CGraphicBuffer noise;
        noise.SetSize(CSize(kPanel.cx, 2));
        test::FillWithNoise(noise, 3);
        under.assign(noise.GetDataAt(0, 0), noise.GetDataAt(0, 0) + kPanel.cx);
        over.assign(noise.GetDataAt(0, 1), noise.GetDataAt(0, 1) + kPanel.cx);
    }
    std::vector<uint32_t> under, over;
};

void RowCompose(benchmark::State& state) {
    Rows rows;
    for (auto _ : state) {
        pixel_rows::Compose(rows.under.data(), rows.over.data(), rows.under.size(), 255);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(RowCompose);

void RowComposePlain(benchmark::State& state) {
    Rows rows;
    for (auto _ : state) {
        for (size_t i = 0; i < rows.under.size(); ++i) {
            const CColor under = CColor::FromWord(rows.under[i]);
            rows.under[i] = PlainCompose(under, CColor::FromWord(rows.over[i]), 255).GetWord();
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(RowComposePlain);

void RowBlendColor(benchmark::State& state) {
    Rows rows;
    for (auto _ : state) {
        pixel_rows::BlendColor(rows.under.data(), CColor(218, 195, 150, 30), rows.under.size());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(RowBlendColor);

void RowBlendColorPlain(benchmark::State& state) {
    Rows rows;
    for (auto _ : state) {
        for (uint32_t& word : rows.under)
            word = PlainBlend(CColor::FromWord(word), CColor(218, 195, 150, 30)).GetWord();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(RowBlendColorPlain);

}  // namespace
}  // namespace norava::bench
