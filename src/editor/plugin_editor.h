#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "framework/plugin_editor_interface.h"
#include "gui/window_port.h"

namespace norava {

// The window of a plug-in. A control whose id is a parameter's number shows that parameter: edits
// go to the renderer and to the host, and what changes elsewhere is polled on the window's timer.
// Other ids belong to the derived editor. User-interface thread only; the renderer never calls into
// the panel from the audio thread.
class CPluginEditor : public CWindowPort, public CPluginEditorInterface {
  public:
    explicit CPluginEditor(int scale = 1);
    ~CPluginEditor() override;

    // Whether the window may open: what it draws with is there. True here.
    virtual bool CanOpen();
    // Makes the controls, once, before the first opening. None here.
    virtual void CreateControls();
    // Every control takes the value of its parameter; nothing is drawn.
    virtual void UpdateAllValues();
    // 0 outside the parameters and without a renderer.
    virtual float GetParamValue(int index);

    [[nodiscard]] CPluginRenderer* GetRenderer() const { return renderer; }
    [[nodiscard]] CPluginWrapper* GetWrapper() const { return wrapper; }

    // From the controls.
    bool ControlClicked(CControl* control) override;
    bool ControlReleased(CControl* control) override;
    bool ControlValueChanged(CControl* control, float value) override;
    bool GetParamText(CControl* control, char* text) override;
    bool ProcessMouseDown() override;
    bool TimerEvent() override;

    // From the host adapter and the preset library.
    void Connect(CPluginRenderer* newRenderer, CPluginWrapper* newWrapper) override;
    void CreateEditorControls() override { CreateControls(); }
    bool CanOpenEditor() override;
    bool OpenEditor(void* parent) override;
    void CloseEditor() override { Close(); }
    bool IsEditorOpen() const override { return IsOpen(); }
    EditorSize GetEditorSize() const override;
    void IdleEditor() override { RunEvents(); }
    bool EditorKeyDown(const EditorKey& key) override;
    bool EditorKeyUp(const EditorKey& key) override;
    void ValuesChanged() override { UpdateAllValues(); }
    void ProgramChanged() override {}
    void Redraw() override;
    bool AskForFile(const FileRequest& request,
                    std::function<void(const std::string& path)> chosen) override;
    void ShowMessage(const std::string& title, const std::string& text) override;
    void ShowBrowser() override {}
    void ShowAboutBox() override {}

    // Stored pixels a logical pixel of every panel of the process: first what the screen asks for,
    // then what the user chose. An open panel opens again in its host's window, at the new size,
    // when the host can resize that.
    [[nodiscard]] int GetZoom() const;
    void SetZoom(int factor);

  protected:
    // Whether the renderer, or the host as well, knows a parameter of this number.
    [[nodiscard]] bool IsParam(int id) const;
    [[nodiscard]] bool IsAutomable(int id) const;

  private:
    void FollowChanges();

    CPluginRenderer* renderer = nullptr;
    CPluginWrapper* wrapper = nullptr;
    void* openedIn = nullptr;  // the host's window
    int announcedScale = 0;    // while the host resizes it
    std::uint32_t allChangedSeen = 0;
};

}  // namespace norava
