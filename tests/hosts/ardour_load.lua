-- The saved session again: the instrument is there with its state.
local folder = os.getenv("NORAVA_WORK") .. "/session"
AudioEngine:set_backend("None (Dummy)", "", "")
local session = load_session(folder, "session")
assert(session, "no session")
local instrument = session:route_by_name("strings"):nth_plugin(1)
assert(not instrument:isnil() and instrument:name() == "Norava", "the instrument is gone")
assert(instrument:to_insert():plugin(0):parameter_count() == 114, "wrong number of parameters")
for index, expected in pairs({ [0] = 0.5, [5] = 0.25, [20] = 0 }) do
  local value = ARDOUR.LuaAPI.get_processor_param(instrument, index, true)
  assert(math.abs(value - expected) < 1e-6, "parameter " .. index .. " is " .. value)
end
close_session()
print("all done")
quit()
