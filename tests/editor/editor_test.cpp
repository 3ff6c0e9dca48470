#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "editor/built_in_pictures.h"
#include "editor/host_keys.h"
#include "editor/norava_editor.h"
#include "editor/panel_layout.h"
#include "editor/panel_text.h"
#include "framework/plugin_instance.h"
#include "gui/control_menu.h"
#include "gui/offscreen_window.h"
#include "gui/pictures.h"
#include "parameters/parameter_table.h"
#include "presets/program_folder.h"

namespace norava {
namespace {

using test::Log;
using testing::ElementsAre;
using testing::IsEmpty;

struct Link final : InstrumentLink {
    Link(CNoravaSynth& instrument, StringPeaks& shown) : synth(instrument), peaks(shown) {}
    CPresetList& GetPresetList() override { return synth.GetPresetList(); }
    StringPeaks TakeStringPeaks() override { return peaks; }
    CNoravaSynth& synth;
    StringPeaks& peaks;
};

// A host with one instrument, whose panel is shown off-screen.
class EditorTest : public testing::Test, public CPluginWrapper {
  protected:
    void SetUp() override {
        test::NeedDefinition();
        GetPluginInstance()->SetUIScalingFactor(1);
        for (const char* name : {"A/One.norava", "A/Two.norava"})
            folder.Write(name, test::Block(name[2] == 'O' ? 0.25f : 0.5f));
        synth = std::make_unique<CNoravaSynth>(folder.Place());
        synth->SetWrapper(this);
        synth->Reset(48000.0);
        synth->AwaitReadiness();
        editor = std::make_unique<CNoravaEditor>(
            [this](CPluginRenderer&) { return std::make_unique<Link>(*synth, peaks); },
            GetBuiltInPictures());
        test::UseOffscreenView(*editor, view);
        synth->SetEditor(editor.get());
        editor->Connect(synth.get(), this);
        editor->CreateEditorControls();
        editor->SetZoom(1);
        ASSERT_TRUE(editor->CanOpenEditor());
        ASSERT_TRUE(editor->OpenEditor(this));
        log.clear();
    }
    void TearDown() override {
        editor->Connect(nullptr, nullptr);
        editor.reset();
    }

    void ParameterChanged(int index, float value) override {
        log.push_back("changed " + std::to_string(index));
        EXPECT_EQ(value, synth->GetParamValue(index)) << index;
    }
    void BeginAutomation(int index) override { log.push_back("begin " + std::to_string(index)); }
    void FinishAutomation(int index) override { log.push_back("end " + std::to_string(index)); }
    void ProgramChanged() override { log.push_back("program"); }
    void TQ_RightClick(int index) override { log.push_back("menu " + std::to_string(index)); }
    bool ResizeEditor(int width, int height) override {
        log.push_back("size " + std::to_string(width) + " " + std::to_string(height));
        EXPECT_EQ(editor->GetEditorSize().width, width) << "as the host finds it meanwhile";
        return resizes;
    }

    static CPoint CentreOf(int id) { return FindPanelControl(id)->rect.GetCenter(); }
    float Shown(int id) { return editor->GetControlByID(id)->GetValue(); }
    std::string Text(int id) {
        return dynamic_cast<CControlDisplay*>(editor->GetControlByID(id))->GetText();
    }
    // From the menu of that id.
    void Choose(int id, int item) {
        view->Click(CentreOf(id));
        view->PressKey(kKeyHome);
        for (int i = 0; i < item; ++i)
            view->PressKey(kKeyDown);
        view->PressKey(kKeyEnter);
    }
    // Begin, one change or more, end; nothing for parameters that the host is not told of.
    void ExpectOneGesture(int id) {
        const Log told = std::exchange(log, {});
        if (id >= kNumHostParameters) {
            EXPECT_EQ(told, Log{}) << id;
            return;
        }
        const std::string number = std::to_string(id);
        Log expected(std::max<std::size_t>(told.size(), 3), "changed " + number);
        expected.front() = "begin " + number;
        expected.back() = "end " + number;
        EXPECT_EQ(told, expected);
    }

    const test::ProgramFolder folder{};
    std::unique_ptr<CNoravaSynth> synth;
    std::unique_ptr<CNoravaEditor> editor;
    OffscreenView* view = nullptr;
    InstrumentLink::StringPeaks peaks;
    bool resizes = true;
    Log log;
};

TEST_F(EditorTest, EveryControlMovesItsParameterAndTellsTheHost) {
    for (const Parameter& parameter : kParameters) {
        if (parameter.control == ControlKind::none) continue;
        const int id = parameter.index;
        const float before = synth->GetParamValue(id);
        const CPoint at = CentreOf(id);
        if (parameter.control == ControlKind::menu) {
            Choose(id, 1);
            EXPECT_EQ(synth->GetParamValue(id), 1.0f) << parameter.name;
            EXPECT_EQ(Text(id), parameter.items[1]);
        } else if (parameter.control == ControlKind::button) {
            view->Click(at);
            EXPECT_EQ(synth->GetParamValue(id), before == 0.0f ? 1.0f : 0.0f) << parameter.name;
        } else {
            const bool isWide = FindPanelControl(id)->rect.width > 60;
            view->Drag(at, isWide ? CPoint(at.x + 70, at.y) : CPoint(at.x, at.y - 70));
            EXPECT_NE(synth->GetParamValue(id), before) << parameter.name;
            ExpectOneGesture(id);
            view->Click(at, kMouseRight);
            EXPECT_EQ(synth->GetParamValue(id), parameter.defaultValue) << parameter.name;
        }
        EXPECT_EQ(Shown(id), synth->GetParamValue(id)) << parameter.name;
        ExpectOneGesture(id);
    }
}

TEST_F(EditorTest, LeavesTheRightClickToTheHostThatHasAMenuForIt) {
    GetPluginInstance()->SetPluginFormatTQ();
    view->Click(CentreOf(param::kStringMix), kMouseRight);
    GetPluginInstance()->SetPluginFormatVST();
    EXPECT_THAT(log, ElementsAre("menu " + std::to_string(int{param::kStringMix})));
}

TEST_F(EditorTest, FollowsWhatChangesElsewhere) {
    for (const int id : {int{param::kMasterLevel}, int{param::kOctave}, int{param::kMatrix} + 1}) {
        synth->SetParamValue(id, 0.75f);
        synth->SetParamNeedUpdate(id);
        static_cast<void>(view->TakePresented());
        view->Tick();
        EXPECT_EQ(Shown(id), 0.75f) << id;
        EXPECT_THAT(view->TakePresented(), testing::Contains(FindPanelControl(id)->rect)) << id;
    }
    const std::string state = test::Block(0.5f, "Restored");
    ASSERT_TRUE(synth->LoadState(state.data(), static_cast<int>(state.size())));
    view->Tick();
    EXPECT_EQ(Text(kProgramDisplay), "Restored");
    EXPECT_EQ(log, Log{}) << "the host knows already";
}

TEST_F(EditorTest, StepsSavesLoadsAndResetsPrograms) {
    EXPECT_EQ(Text(kProgramDisplay), "One");
    view->Click(CentreOf(kNextProgram));
    EXPECT_EQ(Shown(param::kCombLevel), 0.5f);
    EXPECT_THAT(log, testing::Contains("program")) << "the host reads the name again";
    view->Click(CentreOf(kNextProgram));
    EXPECT_EQ(Text(kProgramDisplay), "Two") << "the last one";
    view->Click(CentreOf(kPreviousProgram));
    EXPECT_EQ(Text(kProgramDisplay), "One");

    Choose(kOptionsMenu, 2);
    EXPECT_EQ(Text(kProgramDisplay), "<noname>");
    EXPECT_EQ(Shown(param::kMasterLevel), GetParameter(param::kMasterLevel).defaultValue);
    Choose(kOptionsMenu, 1);
    EXPECT_TRUE(editor->IsSuper()) << "asks for a file";
    view->PressKey(kKeyEscape);
    Choose(kOptionsMenu, 0);
    test::Type(*view, "Mine");
    view->PressKey(kKeyEnter);
    EXPECT_TRUE(std::filesystem::exists(folder.Path("A/Mine.norava")));
    view->PressKey(kKeyEnter);
    EXPECT_FALSE(editor->IsSuper());
    view->Click(CentreOf(kProgramDisplay));
    EXPECT_TRUE(editor->IsSuper()) << "the browser";
}

TEST_F(EditorTest, EscapeLeadsBackThroughWhatIsOpen) {
    const auto modal = [this] { return editor->GetSuperControlGroup(); };
    editor->ShowBrowser();
    CControlGroup* const browser = modal();
    ASSERT_NE(browser, nullptr);
    const auto hostsSaveShortcutIsUsed = [this] { return editor->EditorKeyDown({'s', 0, 4}); };
    EXPECT_FALSE(hostsSaveShortcutIsUsed());
    EXPECT_TRUE(editor->EditorKeyDown({'w', 0, 0}));
    view->PressKey(kKeyDown);
    view->Click({227, 47});  // "Load"
    EXPECT_NE(modal(), browser) << "a dialog on top";
    EXPECT_FALSE(hostsSaveShortcutIsUsed());
    view->PressKey(kKeyDown);
    EXPECT_EQ(Text(kProgramDisplay), "Two") << "the keys are the dialog's";
    view->PressKey(kKeyEscape);
    EXPECT_EQ(modal(), browser) << "which did not close the browser";
    view->PressKey(kKeyEscape);
    EXPECT_EQ(modal(), browser) << "the search is over";
    view->PressKey(kKeyEscape);
    EXPECT_EQ(modal(), nullptr);
    EXPECT_EQ(Text(kProgramDisplay), "One");
}

TEST_F(EditorTest, TakesDroppedPrograms) {
    const std::string good = folder.scratch.Write("Dropped.fxp", test::Fxp(test::Block(0.5f)));
    EXPECT_TRUE(editor->DragEntered(good.c_str()));
    EXPECT_TRUE(editor->DropFile(good.c_str()));
    EXPECT_FALSE(editor->IsSuper());
    editor->DropFile(folder.scratch.Write("song.mid", "MThd").c_str());
    EXPECT_TRUE(editor->IsSuper()) << "says why not";
    EXPECT_EQ(Text(kProgramDisplay), "Dropped");
}

TEST_F(EditorTest, EndsGesturesWhenItCloses) {
    view->MoveMouse(CentreOf(param::kTune));
    view->PressMouse();
    view->MoveMouse({CentreOf(param::kTune).x, 20});
    editor->CloseEditor();
    ExpectOneGesture(param::kTune);
}

TEST_F(EditorTest, ZoomsInItsHostsWindow) {
    GetPluginInstance()->SetUIScalingFactor(3);  // as another open panel did
    view->Click(CentreOf(kNamePlate), kMouseRight);
    view->PressKey(kKeyEnd);
    view->PressKey(kKeyEnter);
    EXPECT_EQ(log, Log{"size 2565 1596"});
    EXPECT_EQ(view->GetStoredSize(), CSize(2565, 1596));
    view->Click(CentreOf(kNamePlate));
    EXPECT_TRUE(editor->IsSuper()) << "the about box";
    view->PressKey(kKeyEscape);
    EXPECT_FALSE(editor->IsSuper());
    resizes = false;
    view->Click(CentreOf(kNamePlate), kMouseRight);
    view->PressKey(kKeyHome);
    view->PressKey(kKeyEnter);
    EXPECT_EQ(editor->GetEditorSize().height, 3 * 532) << "as long as this window is open";
    EXPECT_TRUE(editor->IsSuper()) << "says so";
    EXPECT_TRUE(
        dynamic_cast<CControlMenu*>(editor->GetControlByID(kNamePlate))->GetItemByNum(0)->marked);
    editor->CloseEditor();
    EXPECT_EQ(editor->GetEditorSize().height, 532);
}

TEST_F(EditorTest, PaintsStringsOnlyWhileTheyMove) {
    const auto paintedIn = [this](int ticks) {
        static_cast<void>(view->TakePresented());
        view->Tick(ticks);
        return view->TakePresented();
    };
    paintedIn(10);  // the lamps have lit up
    EXPECT_THAT(paintedIn(3), IsEmpty()) << "silence";
    peaks = {0.1f, 0.0f};
    EXPECT_THAT(paintedIn(1), ElementsAre(StringPicture::kMovingRows[0]));
    editor->ShowBrowser();
    synth->SetParamValue(param::kString1DampOffset, 0.9f);
    EXPECT_THAT(paintedIn(3), IsEmpty()) << "behind the browser";
    view->PressKey(kKeyEscape);
    for (const float last : {NAN, INFINITY, 0.0f}) {
        peaks = {last, last};
        paintedIn(100);
    }
    EXPECT_THAT(paintedIn(3), IsEmpty()) << "they have come to rest";
    peaks = {1.0f, 1.0f};
    view->Tick();
    peaks = {};
    editor->CloseEditor();
    ASSERT_TRUE(editor->CanOpenEditor() && editor->OpenEditor(this));
    EXPECT_THAT(paintedIn(3), IsEmpty()) << "what sounded before is over";
}

TEST_F(EditorTest, ClosedMenusShowEveryItemWhole) {
    for (const Parameter& parameter : kParameters) {
        auto* const menu = dynamic_cast<CControlMenu*>(editor->GetControlByID(parameter.index));
        for (int i = 0; menu != nullptr && i < menu->GetNumItems(); ++i) {
            const std::string& text = menu->GetItemByNum(i)->text;
            EXPECT_LE(MeasureLabel(*editor->GetGraphicBuffer(), text, false),
                      menu->GetClosedTextArea().width)
                << text;
        }
    }
}

TEST_F(EditorTest, LooksAsItShould) {
    synth->SetParamsToDefault();
    view->Tick(10);
    test::ExpectLooksLike(*editor->GetGraphicBuffer(), "panel");
}

TEST(PanelText, SpeaksInUnitsOfMusicians) {
    const std::tuple<int, float, const char*> rows[] = {
        {param::kMasterLevel, 0.5f, "12.0 dB"},
        {param::kTune, 1.0f, "+99 ct"},
        {param::kTune, NAN, "0 ct"},
        {param::kOctave, 2.0f / 6.0f, "-1 oct"},
        {param::kAmpAttack, 0.0f, "1.0 ms"},
        {param::kDelayTime, 0.5f, "520 ms"},
        {param::kLoCutCutoff, 1.0f, "20.2 kHz"},
        {param::kLfoRate, 1e30f, "10.0 Hz"},
        {param::kResonatorFrequency + 7, 1.0f, "9.60 kHz"},
        {param::kCombLevel, 0.5f, "host's"},
    };
    for (const auto& [index, value, text] : rows) {
        std::array<char, 64> shown{"host's"};
        FormatPanelValue(index, value, shown);
        EXPECT_STREQ(shown.data(), text);
    }
}

TEST(HostKeys, AreTheWindowsOwn) {
    EXPECT_EQ(KeyFromHost({'a', 0, 0}), unsigned{'a'});
    EXPECT_EQ(KeyFromHost({0, 13, 0}), unsigned{kKeyRight});
    EXPECT_EQ(KeyFromHost({'5', 29, 0}), unsigned{'5'}) << "on the keypad";
    EXPECT_EQ(KeyFromHost({0xFF1B, 0, 0}), unsigned{kKeyEscape});
    for (const EditorKey strange : {EditorKey{0, 58, 0}, {0, -5, 0}, {-1, 0, 0}})
        EXPECT_EQ(KeyFromHost(strange), 0u);
}

TEST(PanelPictures, HaveTheLayoutsSizesAtAllScales) {
    for (const PanelPicture& picture : GetPanelPictures()) {
        const auto found = std::ranges::find_if(GetBuiltInPictures(), [&](const auto& builtIn) {
            return std::string(builtIn.fileName) == picture.fileName;
        });
        const CSize frame = picture.frame;
        for (int scale = 1; scale <= BuiltInPicture::kScales; ++scale) {
            CImage image;
            ASSERT_TRUE(image.LoadPacked(found->packed[static_cast<size_t>(scale - 1)], "x"));
            EXPECT_EQ(image.GetSize(), CSize(frame.cx, frame.cy * picture.frames));
            EXPECT_EQ(image.GetSclFactor(), scale);
        }
    }
}

}  // namespace
}  // namespace norava
