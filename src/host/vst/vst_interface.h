#pragma once

#include <cstddef>
#include <cstdint>

// The VST 2.4 binary interface, as far as this plug-in speaks it: records with C layout, numbers of
// the questions and answers. Names are the customary ones. Everything is fixed by the hosts that
// exist; the assertions at the end hold the layout of 64-bit platforms.

namespace norava::vst {

using i16 = std::int16_t;
using i32 = std::int32_t;
using iptr = std::intptr_t;
using f32 = float;
using f64 = double;

#if defined(_WIN32)
#define NORAVA_VST_CALL __cdecl
#else
#define NORAVA_VST_CALL
#endif

struct AEffect;

using HostCallback = iptr(NORAVA_VST_CALL*)(AEffect*, i32 opcode, i32 index, iptr value, void* ptr,
                                            f32 opt);
using DispatcherProc = iptr(NORAVA_VST_CALL*)(AEffect*, i32 opcode, i32 index, iptr value,
                                              void* ptr, f32 opt);
using ProcessProc = void(NORAVA_VST_CALL*)(AEffect*, f32** inputs, f32** outputs, i32 frames);
using ProcessDoubleProc = void(NORAVA_VST_CALL*)(AEffect*, f64** inputs, f64** outputs, i32 frames);
using SetParameterProc = void(NORAVA_VST_CALL*)(AEffect*, i32 index, f32 value);
using GetParameterProc = f32(NORAVA_VST_CALL*)(AEffect*, i32 index);

inline constexpr i32 kEffectMagic = 0x56737450;     // "VstP"
inline constexpr i32 kIdentifyAnswer = 0x4E764566;  // "NvEf"
inline constexpr i32 kVstVersion = 2400;

// What the host sees of one instance. resvd1, resvd2 and user belong to the host once it has the
// record.
struct AEffect {
    i32 magic;
    DispatcherProc dispatcher;
    ProcessProc process;  // adds to the outputs
    SetParameterProc setParameter;
    GetParameterProc getParameter;
    i32 numPrograms;
    i32 numParams;
    i32 numInputs;  // channels
    i32 numOutputs;
    i32 flags;  // EffectFlags
    iptr resvd1;
    iptr resvd2;
    i32 initialDelay;  // frames
    i32 realQualities;
    i32 offQualities;
    f32 ioRatio;
    void* object;  // the adapter
    void* user;
    i32 uniqueID;
    i32 version;
    ProcessProc processReplacing;
    ProcessDoubleProc processDoubleReplacing;
    char future[56];
};

enum EffectFlags : i32 {
    effFlagsHasEditor = 1,
    effFlagsCanReplacing = 16,
    effFlagsProgramChunks = 32,
    effFlagsIsSynth = 256,
};

// Host to plug-in. Numbers that are missing here are answered like unknown ones.
enum EffectOpcode : i32 {
    effOpen = 0,
    effClose = 1,
    effSetProgram = 2,
    effGetProgram = 3,
    effSetProgramName = 4,
    effGetProgramName = 5,
    effGetParamLabel = 6,
    effGetParamDisplay = 7,
    effGetParamName = 8,
    effSetSampleRate = 10,
    effSetBlockSize = 11,
    effMainsChanged = 12,
    effEditGetRect = 13,
    effEditOpen = 14,
    effEditClose = 15,
    effEditIdle = 19,
    effIdentify = 22,
    effGetChunk = 23,
    effSetChunk = 24,
    effProcessEvents = 25,
    effCanBeAutomated = 26,
    effGetProgramNameIndexed = 29,
    effGetOutputProperties = 34,
    effGetPlugCategory = 35,
    effSetBlockSizeAndSampleRate = 43,
    effGetEffectName = 45,
    effGetVendorString = 47,
    effGetProductString = 48,
    effGetVendorVersion = 49,
    effCanDo = 51,
    effGetVstVersion = 58,
    effEditKeyDown = 59,
    effEditKeyUp = 60,
    effSetProcessPrecision = 77,
};

// Plug-in to host.
enum HostOpcode : i32 {
    audioMasterAutomate = 0,
    audioMasterVersion = 1,
    audioMasterGetTime = 7,
    audioMasterSizeWindow = 15,
    audioMasterGetVendorString = 32,
    audioMasterGetProductString = 33,
    audioMasterCanDo = 37,
    audioMasterUpdateDisplay = 42,
    audioMasterBeginEdit = 43,
    audioMasterEndEdit = 44,
};

enum PlugCategory : i32 {
    kPlugCategEffect = 1,
    kPlugCategSynth = 2,
};

inline constexpr iptr kProcessPrecision32 = 0;

// What the smallest buffers of known hosts hold, terminator included.
inline constexpr std::size_t kParamTextCapacity = 32;
inline constexpr std::size_t kProgramTextCapacity = 24;
inline constexpr std::size_t kEffectNameCapacity = 32;
inline constexpr std::size_t kVendorTextCapacity = 64;
inline constexpr std::size_t kProductTextCapacity = 64;

// Events of the next processing call. The host owns them and may reuse them after it.
struct VstEvent {
    i32 type;  // EventType
    i32 byteSize;
    i32 deltaFrames;  // from the start of the next block
    i32 flags;
    char data[16];
};

enum EventType : i32 { kVstMidiType = 1 };

struct VstMidiEvent {
    i32 type;
    i32 byteSize;
    i32 deltaFrames;
    i32 flags;
    i32 noteLength;  // frames, 0 unknown
    i32 noteOffset;
    unsigned char midiData[4];
    char detune;
    char noteOffVelocity;
    char reserved1;
    char reserved2;
};

struct VstEvents {
    i32 numEvents;
    iptr reserved;
    VstEvent* events[2];  // numEvents of them in truth
};

struct VstTimeInfo {
    f64 samplePos;
    f64 sampleRate;
    f64 nanoSeconds;
    f64 ppqPos;  // quarter notes
    f64 tempo;   // beats per minute
    f64 barStartPos;
    f64 cycleStartPos;
    f64 cycleEndPos;
    i32 timeSigNumerator;
    i32 timeSigDenominator;
    i32 smpteOffset;
    i32 smpteFrameRate;
    i32 samplesToNextClock;
    i32 flags;  // TimeFlags
};

enum TimeFlags : i32 {
    kVstTransportChanged = 1,
    kVstTransportPlaying = 2,
    kVstPpqPosValid = 512,
    kVstTempoValid = 1024,
};

struct ERect {
    i16 top;
    i16 left;
    i16 bottom;
    i16 right;
};

struct VstPinProperties {
    char label[64];
    i32 flags;  // PinFlags
    i32 arrangementType;
    char shortLabel[8];
    char future[48];
};

enum PinFlags : i32 {
    kVstPinIsActive = 1,
    kVstPinIsStereo = 2,
};

static_assert(sizeof(void*) == 8, "the layout below is that of 64-bit platforms");
static_assert(sizeof(AEffect) == 192);
static_assert(offsetof(AEffect, dispatcher) == 8);
static_assert(offsetof(AEffect, process) == 16);
static_assert(offsetof(AEffect, setParameter) == 24);
static_assert(offsetof(AEffect, getParameter) == 32);
static_assert(offsetof(AEffect, numPrograms) == 40);
static_assert(offsetof(AEffect, numOutputs) == 52);
static_assert(offsetof(AEffect, flags) == 56);
static_assert(offsetof(AEffect, resvd1) == 64);
static_assert(offsetof(AEffect, initialDelay) == 80);
static_assert(offsetof(AEffect, ioRatio) == 92);
static_assert(offsetof(AEffect, object) == 96);
static_assert(offsetof(AEffect, user) == 104);
static_assert(offsetof(AEffect, uniqueID) == 112);
static_assert(offsetof(AEffect, version) == 116);
static_assert(offsetof(AEffect, processReplacing) == 120);
static_assert(offsetof(AEffect, processDoubleReplacing) == 128);
static_assert(offsetof(AEffect, future) == 136);
static_assert(sizeof(VstEvent) == 32 && offsetof(VstEvent, data) == 16);
static_assert(sizeof(VstMidiEvent) == 32 && offsetof(VstMidiEvent, deltaFrames) == 8);
static_assert(offsetof(VstMidiEvent, midiData) == 24 && offsetof(VstMidiEvent, detune) == 28);
static_assert(sizeof(VstEvents) == 32 && offsetof(VstEvents, events) == 16);
static_assert(sizeof(VstTimeInfo) == 88 && offsetof(VstTimeInfo, ppqPos) == 24);
static_assert(offsetof(VstTimeInfo, tempo) == 32 && offsetof(VstTimeInfo, flags) == 84);
static_assert(sizeof(ERect) == 8 && offsetof(ERect, bottom) == 4);
static_assert(sizeof(VstPinProperties) == 128 && offsetof(VstPinProperties, flags) == 64);
static_assert(offsetof(VstPinProperties, shortLabel) == 72);

}  // namespace norava::vst
