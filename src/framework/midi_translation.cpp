#include "framework/event_buffer.h"

// How the bytes of a MIDI message become calls of the translators.

namespace norava {

unsigned char CEventBuffer::MIDITrnsl_NoteOn(unsigned char, unsigned char velocity) {
    return velocity;
}

unsigned char CEventBuffer::MIDITrnsl_NoteOff(unsigned char, unsigned char velocity) {
    return velocity;
}

float CEventBuffer::MIDITrnsl_PitchWheel(float position) {
    return position;
}

unsigned char CEventBuffer::MIDITrnsl_CC(unsigned char, unsigned char value) {
    return value;
}

unsigned char CEventBuffer::MIDITrnsl_NoteAftertouch(unsigned char, unsigned char pressure) {
    return pressure;
}

unsigned char CEventBuffer::MIDITrnsl_ChnAftertouch(unsigned char pressure) {
    return pressure;
}

unsigned char CEventBuffer::MIDITrnsl_ProgramNum(unsigned char program) {
    return program;
}

bool CEventBuffer::TranslateMIDIEvent(const Event* event) {
    if (event == nullptr || event->data == nullptr || event->dataSize != kMIDIEventSize)
        return false;
    const unsigned status = event->data[0] & 0xF0u;  // every channel plays the same instrument
    const auto data1 = static_cast<unsigned char>(event->data[1] & 0x7Fu);
    const auto data2 = static_cast<unsigned char>(event->data[2] & 0x7Fu);
    switch (status) {
        case 0x80:
            MIDITrnsl_NoteOff(data1, data2);
            return true;
        case 0x90:
            if (data2 != 0)
                MIDITrnsl_NoteOn(data1, data2);
            else
                MIDITrnsl_NoteOff(data1, 0);
            return true;
        case 0xA0:
            MIDITrnsl_NoteAftertouch(data1, data2);
            return true;
        case 0xB0:
            MIDITrnsl_CC(data1, data2);
            return true;
        case 0xC0:
            MIDITrnsl_ProgramNum(data1);
            return true;
        case 0xD0:
            MIDITrnsl_ChnAftertouch(data1);
            return true;
        case 0xE0: {
            // 0..16383 onto -1..1 over the full travel, so that both ends are reached: the centre
            // 0x2000 lands a little above 0.
            const auto travel = static_cast<float>(data2 * 128 + data1);
            MIDITrnsl_PitchWheel((travel / 16383.0f - 0.5f) * 2.0f);
            return true;
        }
        default:
            return false;
    }
}

}  // namespace norava
