#pragma once

#include <atomic>
#include <memory>

#include "framework/nonblocking.h"
#include "framework/plugin_wrapper.h"
#include "host/vst/vst_chunks.h"
#include "host/vst/vst_editor.h"
#include "host/vst/vst_interface.h"

namespace norava {

class CPluginInstance;
class CPluginRenderer;

// One instance of the plug-in in a VST 2.4 host: answers the host's questions from the definition,
// hands parameters, states and events to the renderer, renders the host's blocks. Operations carry
// the interface's customary names; the dispatcher maps its numbers to them. Texts go into host
// buffers whose size is never told: each is cut to what the smallest known buffer for it holds.
//
// Threads: "audio" operations come one at a time; "any" may come beside them. The rest belongs to
// the host's main thread and does not run beside audio.
class CVSTWrapper final : public CPluginWrapper {
  public:
    CVSTWrapper(CPluginInstance& definition, vst::HostCallback hostCallback);
    ~CVSTWrapper();

    // The record that the host holds; it lives as long as this object.
    vst::AEffect* getAeffect() noexcept { return &effect; }

    // Ends everything that the instance does: the panel goes first, then the renderer. Safe to
    // repeat.
    void close();
    void suspend();
    void resume();
    void setSampleRate(float hz);

    // Audio.
    void processReplacing(float** inputs, float** outputs, int frames) NORAVA_NONBLOCKING;
    void process(float** inputs, float** outputs, int frames) NORAVA_NONBLOCKING;
    bool processEvents(const vst::VstEvents* events) NORAVA_NONBLOCKING;

    // Any.
    void setParameter(int index, float value);
    float getParameter(int index);
    bool canParameterBeAutomated(int index) const noexcept;
    void getParameterName(int index, char* text);
    void getParameterLabel(int index, char* text);
    void getParameterDisplay(int index, char* text);
    void setProgram(vst::iptr index) noexcept;
    int getProgram() const noexcept { return currentProgram; }
    void setProgramName(const char* name);
    void getProgramName(char* text);
    bool getProgramNameIndexed(int category, int index, char* text);
    // The block belongs to this object and stays until the same thread asks again, or until the
    // end.
    vst::iptr getChunk(void** data, bool isPreset);
    vst::iptr setChunk(const void* data, vst::iptr size, bool isPreset);
    bool getOutputProperties(int index, vst::VstPinProperties* properties);
    bool getEffectName(char* text);
    bool getVendorString(char* text);
    bool getProductString(char* text);
    int getVendorVersion() const noexcept { return effect.version; }
    vst::PlugCategory getPlugCategory() const noexcept;
    int canDo(const char* text) const noexcept;  // 1 yes, -1 no

    // User-interface thread; null when there is no panel.
    CVSTEditor* getEditor() noexcept { return editor.get(); }

    void ParameterChanged(int index, float value) override;
    void ProgramChanged() override;
    void BeginAutomation(int index) override;
    void FinishAutomation(int index) override;
    bool ResizeEditor(int width, int height) override;

  private:
    void Process(float** inputs, float** outputs, int frames, bool replacing) NORAVA_NONBLOCKING;
    const vst::VstTimeInfo* getTimeInfo(int request);
    vst::iptr CallHost(int opcode, int index, vst::iptr value, void* ptr, float opt);
    bool IsParam(int index) const noexcept { return index >= 0 && index < effect.numParams; }
    void MakeEditor();

    CPluginInstance& definition;
    const vst::HostCallback host;
    vst::AEffect effect{};
    std::unique_ptr<CPluginRenderer> renderer;  // null: the definition made none
    std::unique_ptr<CVSTEditor> editor;
    CVSTChunks chunks;
    std::atomic<int> currentProgram = 0;
};

// Makes an instance for a host, or null when the definition refuses. The caller owns the record and
// gives it back through effClose.
vst::AEffect* CreateEffectInstance(vst::HostCallback hostCallback);

// The functions of the record (vst_dispatcher.cpp). Exceptions end inside them.
void ConnectCallbacks(vst::AEffect& effect) noexcept;

}  // namespace norava
