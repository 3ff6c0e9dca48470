# The slower checks of ./test checks, one function each; sourced after common.sh.

# Tests too slow or too memory-hungry under a sanitizer carry this label.
slow_label='slow'

our_sources() { git ls-files -- 'src/*.h' 'src/*.cpp' 'apps/*.h' 'apps/*.cpp' 'tests/*.h' 'tests/*.cpp' \
    'benchmarks/*.h' 'benchmarks/*.cpp' 'fuzz/*.h' 'fuzz/*.cpp'; }

check_format() {
    our_sources | xargs -r clang-format --dry-run -Werror
}

# clang-tidy reads the other compiler's commands: it does not know all of g++'s options.
check_tidy() {
    cmake --preset clang >/dev/null
    our_sources | grep -E '^(src|apps)/.*\.cpp$' |
        xargs -r -P 2 -n 4 clang-tidy -p build/clang --quiet --warnings-as-errors='*' 2>/dev/null
}

# The other compiler: the same tests, golden audio among them, and the same bytes for the demo tune.
check_clang() {
    build clang
    ctest --preset clang -j 2 -LE "$slow_label"
    same_sound release clang
}

check_asan() {
    build asan
    ctest --preset asan -j 2 -LE "$slow_label"
    same_sound release asan
}

# Address-space randomisation can place memory where this checker cannot follow; setarch switches it off.
check_tsan() {
    build tsan
    setarch "$(uname -m)" -R ctest --preset tsan -j 2 -L 'framework|synth|host|apps'
}

check_rtsan() {
    if ! command -v clang++-22 >/dev/null; then
        say "rtsan: skipped, there is no clang++-22 here (Debian's security updates have it)"
        return 0
    fi
    build rtsan
    ctest --preset rtsan -j 2 -L 'host|synth'
}

# same_sound PRESET PRESET: both builds render the demo tune to the same samples.
same_sound() {
    local preset hash first=
    for preset in "$@"; do
        [ -x "build/$preset/norava-render" ] || build "$preset"
        hash=$("build/$preset/norava-render" build/release/demo.mid --patch assets/demo/demo.patch \
            --tail 1 --hash --quiet)
        say "$preset: $hash"
        [ -z "$first" ] || [ "$hash" = "$first" ] || return 1
        first=$hash
    done
}

# run_checks [NAME...]: all of them or those named; goes on after a failure and counts at the end.
run_checks() {
    local name status failed=
    [ $# -gt 0 ] || set -- $(checks_list)
    for name in "$@"; do
        declare -F "check_$name" >/dev/null || fail "there is no check '$name' ($(checks_list))"
    done
    for name in "$@"; do
        say "--- check: $name"
        # A plain subshell, not one after ||: there the first failing command would not end it.
        set +e
        ( set -e; "check_$name" )
        status=$?
        set -e
        [ "$status" = 0 ] || failed="$failed $name"
    done
    [ -z "$failed" ] || fail "failed:$failed"
    say "All checks passed: $*"
}
