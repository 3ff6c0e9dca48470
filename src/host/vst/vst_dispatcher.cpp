#include <memory>

#include "host/vst/vst_wrapper.h"

// The C functions of an instance's record. Each finds the adapter and calls one of its operations;
// whatever is thrown ends here, because a host is no place for it.

namespace norava {

namespace {

using vst::AEffect;
using vst::f32;
using vst::i32;
using vst::iptr;

CVSTWrapper* Wrapper(AEffect* effect) noexcept {
    return effect != nullptr ? static_cast<CVSTWrapper*>(effect->object) : nullptr;
}

// One switch in four pieces, each handing what is not its own to the next.

iptr DispatchEditor(CVSTWrapper& wrapper, i32 opcode, i32 index, iptr value, void* ptr, f32 opt) {
    CVSTEditor* const editor = wrapper.getEditor();
    if (editor == nullptr) return 0;
    switch (opcode) {
        case vst::effEditGetRect:
            return editor->getRect(static_cast<vst::ERect**>(ptr));
        case vst::effEditOpen:
            return editor->open(ptr);
        case vst::effEditClose:
            editor->close();
            return 0;
        case vst::effEditIdle:
            editor->idle();
            return 0;
        case vst::effEditKeyDown:
            return editor->onKeyDown(index, static_cast<int>(value), opt);
        case vst::effEditKeyUp:
            return editor->onKeyUp(index, static_cast<int>(value), opt);
        default:
            return 0;
    }
}

iptr DispatchIdentity(CVSTWrapper& wrapper, i32 opcode, i32 index, iptr value, void* ptr, f32 opt) {
    auto* const text = static_cast<char*>(ptr);
    switch (opcode) {
        case vst::effIdentify:
            return vst::kIdentifyAnswer;
        case vst::effGetOutputProperties:
            return wrapper.getOutputProperties(index, static_cast<vst::VstPinProperties*>(ptr));
        case vst::effGetPlugCategory:
            return wrapper.getPlugCategory();
        case vst::effGetEffectName:
            return wrapper.getEffectName(text);
        case vst::effGetVendorString:
            return wrapper.getVendorString(text);
        case vst::effGetProductString:
            return wrapper.getProductString(text);
        case vst::effGetVendorVersion:
            return wrapper.getVendorVersion();
        case vst::effCanDo:
            return wrapper.canDo(text);
        case vst::effGetVstVersion:
            return vst::kVstVersion;
        default:
            return DispatchEditor(wrapper, opcode, index, value, ptr, opt);
    }
}

iptr DispatchState(CVSTWrapper& wrapper, i32 opcode, i32 index, iptr value, void* ptr, f32 opt) {
    auto* const text = static_cast<char*>(ptr);
    switch (opcode) {
        case vst::effSetProgram:
            wrapper.setProgram(value);
            return 0;
        case vst::effGetProgram:
            return wrapper.getProgram();
        case vst::effSetProgramName:
            wrapper.setProgramName(text);
            return 0;
        case vst::effGetProgramName:
            wrapper.getProgramName(text);
            return 0;
        case vst::effGetParamLabel:
            wrapper.getParameterLabel(index, text);
            return 0;
        case vst::effGetParamDisplay:
            wrapper.getParameterDisplay(index, text);
            return 0;
        case vst::effGetParamName:
            wrapper.getParameterName(index, text);
            return 0;
        case vst::effGetChunk:
            return wrapper.getChunk(static_cast<void**>(ptr), index != 0);
        case vst::effSetChunk:
            return wrapper.setChunk(ptr, value, index != 0);
        case vst::effCanBeAutomated:
            return wrapper.canParameterBeAutomated(index);
        case vst::effGetProgramNameIndexed:
            return wrapper.getProgramNameIndexed(static_cast<int>(value), index, text);
        default:
            return DispatchIdentity(wrapper, opcode, index, value, ptr, opt);
    }
}

iptr Dispatch(CVSTWrapper& wrapper, i32 opcode, i32 index, iptr value, void* ptr, f32 opt) {
    switch (opcode) {
        case vst::effOpen:
        case vst::effSetBlockSize:
            return 0;  // nothing waits for them: slices have a size of their own
        case vst::effClose:
            // The record goes with its adapter: the host gives both back.
            std::unique_ptr<CVSTWrapper>(&wrapper)->close();
            return 0;
        case vst::effMainsChanged:
            value != 0 ? wrapper.resume() : wrapper.suspend();
            return 0;
        case vst::effSetSampleRate:
        case vst::effSetBlockSizeAndSampleRate:
            wrapper.setSampleRate(opt);
            return 0;
        case vst::effProcessEvents:
            return wrapper.processEvents(static_cast<const vst::VstEvents*>(ptr));
        case vst::effSetProcessPrecision:
            return value == vst::kProcessPrecision32;
        default:
            return DispatchState(wrapper, opcode, index, value, ptr, opt);
    }
}

iptr NORAVA_VST_CALL DispatcherCallback(AEffect* effect, i32 opcode, i32 index, iptr value,
                                        void* ptr, f32 opt) noexcept {
    CVSTWrapper* const wrapper = Wrapper(effect);
    if (wrapper == nullptr) return 0;
    try {
        return Dispatch(*wrapper, opcode, index, value, ptr, opt);
    } catch (...) {
        return 0;
    }
}

void NORAVA_VST_CALL ProcessCallback(AEffect* effect, f32** inputs, f32** outputs,
                                     i32 frames) noexcept {
    CVSTWrapper* const wrapper = Wrapper(effect);
    if (wrapper == nullptr) return;
    try {
        wrapper->process(inputs, outputs, frames);
    } catch (...) {
    }
}

void NORAVA_VST_CALL ProcessReplacingCallback(AEffect* effect, f32** inputs, f32** outputs,
                                              i32 frames) noexcept {
    CVSTWrapper* const wrapper = Wrapper(effect);
    if (wrapper == nullptr) return;
    try {
        wrapper->processReplacing(inputs, outputs, frames);
    } catch (...) {
    }
}

void NORAVA_VST_CALL SetParameterCallback(AEffect* effect, i32 index, f32 value) noexcept {
    CVSTWrapper* const wrapper = Wrapper(effect);
    if (wrapper == nullptr) return;
    try {
        wrapper->setParameter(index, value);
    } catch (...) {
    }
}

f32 NORAVA_VST_CALL GetParameterCallback(AEffect* effect, i32 index) noexcept {
    CVSTWrapper* const wrapper = Wrapper(effect);
    if (wrapper == nullptr) return 0.0f;
    try {
        return wrapper->getParameter(index);
    } catch (...) {
        return 0.0f;
    }
}

}  // namespace

void ConnectCallbacks(AEffect& effect) noexcept {
    effect.dispatcher = DispatcherCallback;
    effect.process = ProcessCallback;
    effect.setParameter = SetParameterCallback;
    effect.getParameter = GetParameterCallback;
    effect.processReplacing = ProcessReplacingCallback;
}

}  // namespace norava
