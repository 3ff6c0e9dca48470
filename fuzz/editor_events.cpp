// The panel's user: the bytes are what he does with mouse, wheel, keys and dropped files, with the
// timer, the host's idle calls and sound in between. Gestures that begin end, values stay in their
// range, what is shown lies in the window, and the picture that came about in parts is the one that
// a full repaint gives.

#include <bitset>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "framework/block_runner.h"
#include "framework/plugin_editor_interface.h"
#include "framework/plugin_renderer.h"
#include "framework/plugin_wrapper.h"
#include "gui/keys.h"
#include "gui/window_port.h"
#include "input.h"
#include "panel_plugin.h"
#include "parameters/parameter_table.h"
#include "target.h"

namespace norava::fuzz {
namespace {

constexpr int kMostEvents = 120;
constexpr int kFrames = 64;

class Session final : public CPluginWrapper {
  public:
    explicit Session(Input& input)
        : input_(input),
          renderer_(PanelPlugin::Get().CreateRenderer()),
          editor_(PanelPlugin::Get().CreateEditor()) {
        renderer_->SetWrapper(this);
        renderer_->Reset(48000.0);
        renderer_->SetEditor(editor_.get());
        editor_->Connect(renderer_.get(), this);
        editor_->CreateEditorControls();
        Open();
    }
    ~Session() {
        Close();
        editor_->Connect(nullptr, nullptr);
        renderer_->SetEditor(nullptr);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Run() {
        for (int i = 0; i < kMostEvents && !input_.IsEmpty(); ++i) {
            if (OffscreenView* const view = View())
                Event(*view);
            else
                Open();
        }
        CheckPicture();
        Close();
        CheckValues();
    }

    void ParameterChanged(int index, float value) override {
        Require(index >= 0 && index < kNumParameters, "the host knows the parameter");
        Require(value == renderer_->GetParamValue(index), "told as it is");
    }
    void BeginAutomation(int index) override {
        const auto bit = static_cast<std::size_t>(index);
        Require(index >= 0 && index < kNumParameters && !held_[bit], "a gesture begins once");
        held_.set(bit);
    }
    void FinishAutomation(int index) override {
        const auto bit = static_cast<std::size_t>(index);
        Require(index >= 0 && index < kNumParameters && held_[bit], "what ends has begun");
        held_.reset(bit);
    }
    bool ResizeEditor(int width, int height) override {
        const EditorSize size = editor_->GetEditorSize();
        Require(size.width == width && size.height == height, "the size is the one asked for");
        return resizes_;
    }

  private:
    static OffscreenView* View() { return PanelPlugin::Get().GetView(); }

    void Open() {
        Require(editor_->CanOpenEditor() && editor_->OpenEditor(this), "the panel opens");
        Require(View() != nullptr, "and has a window");
    }
    void Close() {
        editor_->CloseEditor();
        Require(View() == nullptr, "a closed panel has no window");
        Require(held_.none(), "what begins ends");
    }

    // Somewhere in the window, sometimes beside it.
    CPoint Place() { return {input_.Byte() * 7 / 2 - 12, input_.Byte() * 9 / 4 - 12}; }

    unsigned Key() {
        constexpr std::array kKeys = {
            unsigned{kKeyBackspace}, unsigned{kKeyTab},  unsigned{kKeyEnter}, unsigned{kKeyEscape},
            unsigned{kKeyDelete},    unsigned{kKeyLeft}, unsigned{kKeyRight}, unsigned{kKeyUp},
            unsigned{kKeyDown},      unsigned{kKeyHome}, unsigned{kKeyEnd},   unsigned{kKeyPageUp},
            unsigned{kKeyPageDown}};
        switch (input_.Below(4)) {
            case 0:
                return input_.Word();
            case 1:
                return input_.Byte();
            default:
                return kKeys[static_cast<std::size_t>(input_.Below(int{kKeys.size()}))];
        }
    }

    std::string Path() {
        constexpr std::array kNames = {"Pads/Warm.norava", "Pads/No program.norava",
                                       "Bass/Round.norava", "Bass", "nothing.fxp"};
        const auto choice = static_cast<std::size_t>(input_.Below(int{kNames.size()} + 1));
        if (choice < kNames.size()) return PanelPlugin::Get().LibraryPath(kNames[choice]);
        const auto bytes = input_.Take(input_.Byte());
        const std::string text(bytes.begin(), bytes.end());
        return text.substr(0, text.find('\0'));
    }

    // After each event the window may be gone: one of them may have closed it.
    void Event(OffscreenView& view) {
        switch (input_.Below(24)) {
            case 0:
            case 1:
            case 2:
                return view.Click(Place(), input_.Below(8) == 0 ? input_.Below(4) : kMouseLeft);
            case 3:
            case 4:
                return view.MoveMouse(Place());
            case 5:
                return view.PressMouse(input_.Below(4) == 0 ? input_.Below(4) : kMouseLeft,
                                       input_.Flag());
            case 6:
                return view.ReleaseMouse(input_.Below(4) == 0 ? input_.Below(4) : kMouseLeft);
            case 7: {
                const CPoint from = Place();
                return view.Drag(from, Place(), 40);
            }
            case 8:
                (void)view.TurnWheel(input_.Float() * 4.0f);
                return;
            case 9:
                (void)view.GetEvents().MouseWheel(Place(), input_.Float(), input_.Float(), {});
                return;
            case 10:
            case 11:
            case 12:
                (void)view.PressKey(Key());
                return;
            case 13:
                return Type(view);
            case 14:
                return view.Tick(input_.Below(20));
            case 15:
                view.SetModifiers({input_.Flag(), input_.Flag(), input_.Flag()});
                return;
            case 16:
                return Drop(view);
            case 17:
                return view.GetEvents().FocusChanged(input_.Flag());
            case 18:
                return view.GetEvents().MouseTakenAway();
            case 19:
                return PressHostKey();
            case 20:
                return ChangeFromOutside();
            case 21:
                return Play();
            case 22:
                return ChangeWindow(view);
            default:
                CheckPicture();
        }
    }

    void Type(OffscreenView& view) {
        for (int i = input_.Below(12); i > 0 && View() == &view; --i)
            (void)view.PressKey(input_.Byte() % 95u + ' ');
    }

    void Drop(OffscreenView& view) {
        const std::string path = Path();
        PlatformEvents& events = view.GetEvents();
        const bool isWelcome = events.FileEntered(path.c_str());
        if (View() != &view) return;
        if (input_.Flag())
            events.FileLeft(path.c_str());
        else if (isWelcome)
            (void)events.FileDropped(path.c_str());
    }

    void PressHostKey() {
        const EditorKey key{input_.Below(4) == 0 ? input_.Int() : input_.Byte(), input_.Below(64),
                            input_.Byte()};
        (void)editor_->EditorKeyDown(key);
        (void)editor_->EditorKeyUp(key);
    }

    void ChangeFromOutside() {
        switch (input_.Below(6)) {
            case 0:
                return editor_->ShowBrowser();
            case 1:
                return editor_->ShowAboutBox();
            case 2:
                return editor_->ShowMessage("Title", Path());
            case 3: {
                const auto bytes = input_.Take(static_cast<std::size_t>(input_.Below(40)));
                return renderer_->SetProgramName(std::string(bytes.begin(), bytes.end()));
            }
            default:
                break;
        }
        const int index = input_.Below(kNumParameters);
        const float value = input_.Float();
        // From outside any value may come; it is not the panel's to answer for.
        fromOutside_.set(static_cast<std::size_t>(index));
        renderer_->SetParamValue(index, value);
        renderer_->SetParamNeedUpdate(index);
    }

    void Play() {
        const std::array<unsigned char, 4> note = {
            0x90, static_cast<unsigned char>(input_.Below(128)), 100, 0};
        renderer_->CreateMIDIEvent(0, note.data(), note.size());
        std::array<float, kFrames> left;
        std::array<float, kFrames> right;
        float* const outputs[] = {left.data(), right.data()};
        RunBlock(*renderer_, {.outputs = outputs, .frames = kFrames}, {});
    }

    void ChangeWindow(OffscreenView& view) {
        switch (input_.Below(5)) {
            case 0:
                return Close();
            case 1:
                return view.GetEvents().ViewLost();
            case 2:
                return view.GetEvents().CloseRequested();
            case 3:
                resizes_ = input_.Flag();
                return;
            default:
                editor_->IdleEditor();
        }
    }

    void CheckPicture() {
        OffscreenView* const view = View();
        if (view == nullptr) return;
        const CRect window({0, 0}, view->GetStoredSize());
        for (const CRect& part : view->TakePresented()) {
            const CRect inside = part.GetIntersection(window);
            Require(part.width <= 0 || part.height <= 0 ||
                        (inside.width == part.width && inside.height == part.height),
                    "what is shown lies in the window");
        }
        // Behind what is modal things change unseen until that ends.
        if (dynamic_cast<CWindowPort&>(*editor_).IsSuper()) return;
        const std::vector<std::uint32_t> shown = view->GetPixels();
        editor_->Redraw();
        (void)view->TakePresented();
        if (view->GetPixels() == shown) return;
        const auto [differs, was] = std::ranges::mismatch(view->GetPixels(), shown);
        const long at = differs - view->GetPixels().begin();
        std::fprintf(stderr, "first at %ld, %ld\n", at % window.width, at / window.width);
        Require(false, "parts and whole give one picture");
    }

    void CheckValues() {
        for (const Parameter& parameter : kParameters) {
            const auto bit = static_cast<std::size_t>(parameter.index);
            if (fromOutside_[bit]) continue;
            const float value = renderer_->GetParamValue(parameter.index);
            const float highest =
                parameter.items.empty() ? 1.0f : static_cast<float>(parameter.items.size() - 1);
            Require(value >= 0.0f && value <= highest, "the panel sets what its controls can show");
        }
    }

    Input& input_;
    const std::unique_ptr<CPluginRenderer> renderer_;
    const std::unique_ptr<CPluginEditorInterface> editor_;
    std::bitset<kNumParameters> held_;
    std::bitset<kNumParameters> fromOutside_;
    bool resizes_ = true;
};

}  // namespace
}  // namespace norava::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norava::fuzz;
    PanelPlugin::Get().Restore();
    Input input(data, size);
    Session(input).Run();
    return 0;
}
