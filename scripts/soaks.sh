# The long runs of ./test soak, one function each; sourced after common.sh. What they found is told in
# docs/reliability.md.

# What is true of every sound, over ten thousand random states (seven minutes).
soak_states() {
    build release tests/all
    NORAVA_RANDOM_STATES=10000 build/release/tests/synth/test_synth --gtest_filter='RandomStates.*'
}

# A minute of everything at once, under the thread checker and under the address checker.
soak_storm() {
    build tsan norava tests/all
    NORAVA_STORM_SECONDS=60 setarch "$(uname -m)" -R build/tsan/tests/host/test_host --gtest_filter='Storm.*'
    build asan norava tests/all
    NORAVA_STORM_SECONDS=60 build/asan/tests/host/test_host --gtest_filter='Storm.*'
}

# New inputs for what reads bytes from outside, for many hours: a thousand million each where an execution is short, an hour
# each of the others, and half an hour of the short ones with the checkers of memory and undefined behaviour.
soak_fuzz() {
    run_fuzz fast runs=1000000000 state_block fxp midi_file
    run_fuzz 1800 state_block fxp midi_file
    run_fuzz 3600 program_file program_text targa host_calls editor_events
}
