#pragma once

#include "render/midi_song.h"

// What a player does to the note-offs of a song before an instrument without a pedal gets them.

namespace norava {

// Moves every note-off that comes while its channel's sustain pedal (controller 64, down from 64)
// is held to the moment when the pedal goes up, unless the key has been struck again by then.
void HoldNotesByPedal(MidiSong& song);

// Adds a note-off at the song's end for each key that some channel still holds, so that every
// song falls silent.
void ReleaseHangingNotes(MidiSong& song);

}  // namespace norava
