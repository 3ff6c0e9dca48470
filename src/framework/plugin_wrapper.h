#pragma once

#include <span>

namespace norava {

// The way of the renderer and the editor back to the host, whatever its plug-in format. The
// operations of the base do nothing. None of them is called while a lock is held: hosts call back
// into the plug-in from inside them.
class CPluginWrapper {
  public:
    // A parameter changed by itself (an edit in the panel, a loaded state). `value` is what the
    // parameter holds now.
    virtual void ParameterChanged(int index, float value);
    // Another program, or another name of it, came from the panel: the host reads them again.
    // Editor's thread.
    virtual void ProgramChanged();
    // The user takes hold of a parameter in the panel, and lets it go. Editor's thread.
    virtual void BeginAutomation(int index);
    virtual void FinishAutomation(int index);

    // Hooks of the TQ host; every other format keeps these.
    virtual void TQ_RightClick(int index);
    virtual int TQ_GetNumOutputs();
    virtual bool TQ_GetOutputName(int index, std::span<char> name);
    virtual void TQ_NoteNamesChanged();
    virtual void TQ_UpdateKeymap();
    virtual void TQ_PreviewNoteOff(int note);
    virtual void TQ_PreviewNoteOn(int note, float velocity);

    // The panel wants its window in the host to be of another size, in stored pixels. False when
    // the host cannot: the window then has the new size when it opens again. Editor's thread.
    virtual bool ResizeEditor(int width, int height);

  protected:
    CPluginWrapper() = default;
    ~CPluginWrapper() = default;  // never deleted through this base
    CPluginWrapper(const CPluginWrapper&) = delete;
    CPluginWrapper& operator=(const CPluginWrapper&) = delete;
};

}  // namespace norava
