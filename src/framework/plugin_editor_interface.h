#pragma once

#include <functional>
#include <span>
#include <string>

namespace norava {

class CPluginRenderer;
class CPluginWrapper;

struct EditorSize {
    int width = 0;  // pixels
    int height = 0;
};

// A key as the host passes it on: `character` is 0 for keys without one, `virtualKey` 0 for plain
// characters.
struct EditorKey {
    int character = 0;
    int virtualKey = 0;      // the numbers of the VST 2.4 interface, 1..57
    unsigned modifiers = 0;  // 1 shift, 2 alt, 4 command (the control key off macOS), 8 control
};

// What a file dialog asks for. Texts belong to the caller and live as long as the call.
struct FileRequest {
    const char* title = "";
    const char* folder = "";                    // where the dialog starts
    const char* suggestedName = "";             // file name offered, without extension
    const char* typeName = "";                  // "Norava Program"
    std::span<const char* const> extensions{};  // without dots
    bool save = false;
};

// All that the renderer, its preset library and the host adapters know of a panel. Nothing here is
// ever called from the audio thread: values that change there are polled by the panel
// (CPluginRenderer::TakeParamNeedUpdate and GetAllChangedCount). Every operation belongs to the
// user-interface thread unless it says otherwise.
class CPluginEditorInterface {
  public:
    virtual ~CPluginEditorInterface() = default;

    // For the host adapter. Connect comes once before CreateEditorControls; both pointers outlive
    // the connection and are null again when the instance closes.
    virtual void Connect(CPluginRenderer* renderer, CPluginWrapper* wrapper) = 0;
    virtual void CreateEditorControls() = 0;
    virtual bool CanOpenEditor() = 0;
    // `parent` is the host's window: an X11 window id, HWND or NSView*. True when the panel shows.
    virtual bool OpenEditor(void* parent) = 0;
    virtual void CloseEditor() = 0;
    virtual bool IsEditorOpen() const = 0;
    virtual EditorSize GetEditorSize() const = 0;
    virtual void IdleEditor() = 0;  // time slice of the host, some 10 to 50 a second
    // True when the panel used the key; otherwise the host keeps its shortcut.
    virtual bool EditorKeyDown(const EditorKey& key) = 0;
    virtual bool EditorKeyUp(const EditorKey& key) = 0;

    // For the preset library and whoever else loads a state on the user-interface thread.
    virtual void ValuesChanged() = 0;   // every control takes its parameter's value
    virtual void ProgramChanged() = 0;  // program name and browser lists are read again
    virtual void Redraw() = 0;          // the whole panel is painted and shown
    // Asks the user for a file over the panel's window and returns at once. `chosen` is called with
    // the full path later on this thread, or not at all when the user cancels or the panel closes.
    // False, and nothing asked, while no window is open.
    virtual bool AskForFile(const FileRequest& request,
                            std::function<void(const std::string& path)> chosen) = 0;
    // Tells the user over the panel's window what went wrong; nothing while no window is open.
    virtual void ShowMessage(const std::string& title, const std::string& text) = 0;
    virtual void ShowBrowser() = 0;
    virtual void ShowAboutBox() = 0;
};

}  // namespace norava
