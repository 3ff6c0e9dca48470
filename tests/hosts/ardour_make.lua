-- A session with one track: notes, then the instrument. Played for a moment, one parameter moved, then saved.
local folder = os.getenv("NORAVA_WORK") .. "/session"
AudioEngine:set_backend("None (Dummy)", "", "")
local session = create_session(folder, "session", 48000)
assert(session, "no session")

local info = ARDOUR.LuaAPI.new_plugin_info("Norava", ARDOUR.PluginType.LXVST)
assert(not info:isnil(), "the instrument is not in the list of plug-ins")
local midi = ARDOUR.ChanCount(ARDOUR.DataType("midi"), 1)
local stereo = ARDOUR.ChanCount(ARDOUR.DataType("audio"), 2)
local tracks = session:new_midi_track(midi, stereo, true, info, nil, nil, 1, "strings",
  ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
local track = tracks:front()
local notes = ARDOUR.LuaAPI.new_luaproc(session, "Note Source")
assert(not notes:isnil(), "no note source")
assert(track:add_processor_by_index(notes, 0, nil, true) == 0, "the note source was refused")
local instrument = track:nth_plugin(1)
assert(instrument:name() == "Norava" and instrument:active(), "the instrument is not active")

-- The instrument starts with a program of its bank; the other scripts expect these values of a plain one again: the
-- defaults of everything that shapes pitch and level, and "Amp Release" at 0.25.
local plain = { [0] = 0.5, [1] = 0.5, [2] = 0, [3] = 1, [4] = 1, [5] = 0.25, [17] = 0, [20] = 0, [22] = 0, [113] = 0.5 }
for index, value in pairs(plain) do
  assert(ARDOUR.LuaAPI.set_processor_param(instrument, index, value), "no parameter " .. index)
end
session:request_roll(ARDOUR.TransportRequestSource.TRS_UI)
sleep(3)
print("rolling: " .. tostring(session:transport_rolling()) .. ", at frame " .. session:transport_sample())
assert(session:transport_sample() > 48000, "the transport does not roll")
-- Channel 0 of the track's meter is MIDI.
local level = track:peak_meter():meter_level(1, ARDOUR.MeterType.MeterMaxPeak)
print("level while playing: " .. level .. " dB")
assert(level > -60, "silent while playing")
assert(level < 12, "too loud while playing")

session:request_stop(false, false, ARDOUR.TransportRequestSource.TRS_UI)
sleep(1)
session:save_state("")
close_session()
print("all done")
quit()
