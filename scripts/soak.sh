# The long runs of ./test soak, one function each; sourced after common.sh. What they found is told in
# docs/reliability.md.

# What is true of every sound, over ten thousand random states (20 minutes).
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

# A million and more events of a user on every control (a minute and a half).
soak_controls() {
    build asan tests/all
    NORAVA_STORM_EVENTS=1400000 build/asan/tests/gui/test_gui --gtest_filter='*Gallery*'
}

# run_soak [NAME...]: all of them or those named; goes on after a failure.
run_soak() {
    local name status failed= start
    [ $# -gt 0 ] || set -- $(sed -n 's/^soak_\([a-z]*\)() {.*/\1/p' scripts/soak.sh)
    for name in "$@"; do
        declare -F "soak_$name" >/dev/null || fail "there is no long run '$name'"
    done
    for name in "$@"; do
        say "--- soak: $name"
        start=$SECONDS
        set +e
        ( set -e; "soak_$name" )
        status=$?
        set -e
        [ "$status" = 0 ] || failed="$failed $name"
        say "--- $name: $([ "$status" = 0 ] && say passed || say FAILED) in $((SECONDS - start)) s"
    done
    [ -z "$failed" ] || fail "failed:$failed"
}
