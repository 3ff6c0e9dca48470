-- Plays one note a second through the instrument behind it: 220 Hz, half a second long.
ardour {
  ["type"] = "dsp",
  name = "Note Source",
  category = "Utility",
  license = "MIT",
  author = "Norava",
  description = [[One note a second]]
}

function dsp_ioconfig()
  return { { midi_in = 1, midi_out = 1, audio_in = 0, audio_out = 0 } }
end

function dsp_init(rate)
  second = rate
end

function dsp_run(_, _, frames)
  if not Session:transport_rolling() then return end
  local clock = Session:transport_sample()
  local count = 0
  for i = 0, frames - 1 do
    local position = (clock + i) % second
    if position == 0 then
      count = count + 1
      midiout[count] = { time = i + 1, data = { 0x90, 57, 60 } }
    elseif position == second // 2 then
      count = count + 1
      midiout[count] = { time = i + 1, data = { 0x80, 57, 0 } }
    end
  end
end
