#include <cstddef>

#include "framework/plugin_renderer.h"

// What the renderer keeps of MIDI: the last state of notes and controllers.

namespace norava {

namespace {

float Normalised(unsigned char data) {
    return static_cast<float>(data) / 127.0f;
}

template <typename Table>
float Read(const Table& table, int index) noexcept {
    const bool inside = index >= 0 && index < static_cast<int>(table.size());
    return inside ? static_cast<float>(table[static_cast<std::size_t>(index)]) : 0.0f;
}

}  // namespace

// Translators are handed 7-bit numbers; the mask keeps every other caller inside the tables too.

unsigned char CPluginRenderer::MIDITrnsl_NoteOn(unsigned char note, unsigned char velocity) {
    note &= 0x7Fu;
    noteVelocity[note] = Normalised(velocity);
    if (velocity != 0)
        MIDINoteOn(note);
    else
        MIDINoteOff(note);
    return velocity;
}

unsigned char CPluginRenderer::MIDITrnsl_NoteOff(unsigned char note, unsigned char velocity) {
    note &= 0x7Fu;
    noteVelocity[note] = 0.0f;
    MIDINoteOff(note);
    return velocity;
}

float CPluginRenderer::MIDITrnsl_PitchWheel(float position) {
    pitchWheel = position;
    MIDIPitchWheelMoved();
    return position;
}

unsigned char CPluginRenderer::MIDITrnsl_CC(unsigned char number, unsigned char value) {
    number &= 0x7Fu;
    controller[number] = Normalised(value);
    MIDICCChanged(number);
    return value;
}

unsigned char CPluginRenderer::MIDITrnsl_NoteAftertouch(unsigned char note,
                                                        unsigned char pressure) {
    note &= 0x7Fu;
    noteAftertouch[note] = Normalised(pressure);
    MIDIAftertouchChanged(note);
    return pressure;
}

unsigned char CPluginRenderer::MIDITrnsl_ChnAftertouch(unsigned char pressure) {
    channelAftertouch = Normalised(pressure);
    MIDIAftertouchChanged();
    return pressure;
}

unsigned char CPluginRenderer::MIDITrnsl_ProgramNum(unsigned char program) {
    MIDIProgramChanged(program);
    return program;
}

void CPluginRenderer::MIDINoteOn(int) {}
void CPluginRenderer::MIDINoteOff(int) {}
void CPluginRenderer::MIDIPitchWheelMoved() {}
void CPluginRenderer::MIDICCChanged(int) {}
void CPluginRenderer::MIDIAftertouchChanged() {}
void CPluginRenderer::MIDIAftertouchChanged(int) {}
void CPluginRenderer::MIDIProgramChanged(int) {}

float CPluginRenderer::GetKeyActivity(int note) const noexcept {
    return Read(keyActivity, note);
}

void CPluginRenderer::SetKeyActivity(int note, float activity) noexcept {
    if (note >= 0 && note < kMIDINotes)
        keyActivity[static_cast<std::size_t>(note)].store(activity, std::memory_order_relaxed);
}

float CPluginRenderer::GetNoteVelocity(int note) const noexcept {
    return Read(noteVelocity, note);
}

float CPluginRenderer::GetController(int number) const noexcept {
    return Read(controller, number);
}

float CPluginRenderer::GetNoteAftertouch(int note) const noexcept {
    return Read(noteAftertouch, note);
}

}  // namespace norava
