# The slower checks of ./test checks, one function each; sourced after common.sh.

our_sources() { git ls-files -- 'src/*.h' 'src/*.cpp' 'apps/*.h' 'apps/*.cpp' 'tests/*.h' 'tests/*.cpp' \
    'benchmarks/*.h' 'benchmarks/*.cpp' 'fuzz/*.h' 'fuzz/*.cpp'; }

check_format() {
    our_sources | xargs -r clang-format --dry-run -Werror
}

# clang-tidy reads the other compiler's commands: it does not know all of g++'s options.
check_tidy() {
    cmake --preset clang >/dev/null
    python3 scripts/tidy.py . build/clang 2
}

# The other compiler: the same tests, golden audio among them, and the same bytes for the demo tune.
check_clang() {
    build clang
    ctest --preset clang -j 2
    same_sound release clang
}

check_asan() {
    build asan
    ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1 \
        ctest --preset asan -j 2
    same_sound release asan
}

# All rooms where two threads may meet: dsp, fx and parameters know of none. Address-space
# randomisation can place memory where this checker cannot follow; setarch switches it off.
check_tsan() {
    build tsan tests/all
    setarch "$(uname -m)" -R ctest --preset tsan -j 2 \
        -L '^(framework|files|presets|presets_panel|synth|gui|editor|host|host_adapter|apps)$' -LE '^slow$'
}

check_rtsan() {
    ( need_packages rtsan ) || true
    if ! compgen -G "$(clang++-22 -print-resource-dir 2>/dev/null)/lib/linux/libclang_rt.rtsan-*.a" >/dev/null; then
        say "rtsan: skipped, there are no clang-22 and libclang-rt-22-dev here (Debian's security updates have them)"
        return 0
    fi
    build rtsan norava test_host test_synth
    ctest --preset rtsan -j 2 -L '^(host|synth)$'
}

# Memory that nobody has written to, and leaks, in what needs no display and no second thread to be
# fast. This checker does not keep the processor's denormal mode, so the test of that mode stays out.
check_valgrind() {
    build release tests/all
    local entry name filter
    for entry in 'files/test_files *' 'parameters/test_parameters *' 'framework/test_framework -*Denormals*' \
        'fx/test_fx *' 'synth/test_synth State*:Parameter*:Render*:Golden*' 'host/adapter/test_host_adapter *' \
        'presets/test_presets -*Faults*:*Hostile*' 'gui/test_gui -*X11*:*Gallery*:*Lifetime*'; do
        read -r name filter <<<"$entry"
        valgrind -q --error-exitcode=9 --leak-check=full --show-leak-kinds=definite \
            --errors-for-leak-kinds=definite "build/release/tests/$name" --gtest_brief=1 "--gtest_filter=$filter"
    done
}

# The toolkit for Windows, as far as a cross compiler goes: built, and linked into a program with a window.
check_mingw() {
    build mingw norava_gui norava_files
    x86_64-w64-mingw32-g++-posix -std=c++20 -Isrc -static -o build/mingw/own_window.exe tests/ports/own_window.cpp \
        build/mingw/src/gui/libnorava_gui.a build/mingw/src/files/libnorava_files.a -lgdi32 -lole32 -lshell32 -luuid
}

# The toolkit for macOS, as far as another system's AppKit goes: read, not built.
check_cocoa() {
    local source flags
    flags=$(gnustep-config --objc-flags | tr ' ' '\n' | grep -E '^-(D|fconstant)')
    for source in src/gui/platform/*.mm; do
        g++ -x objective-c++ -std=c++20 -fsyntax-only -fobjc-exceptions $flags -isystem /usr/include/GNUstep -Isrc \
            -Wall -Wextra -Wshadow -Wno-unused-parameter -Werror "$source"
    done
}

# The kept inputs, once each, by the fuzzers themselves. New inputs are for ./test fuzz and ./test soak: what they find
# is a reason to work, not to refuse a change that has nothing to do with it.
check_fuzz() {
    run_fuzz runs=0
}

# same_sound PRESET PRESET: both builds render the demo tune to the same samples.
same_sound() {
    local preset hash first=
    for preset in "$@"; do
        [ -x "build/$preset/norava-render" ] && [ -f build/release/demo.mid ] || build "$preset"
        hash=$("build/$preset/norava-render" build/release/demo.mid --patch assets/demo/demo.patch \
            --tail 1 --hash --quiet)
        say "$preset: $hash"
        [ -z "$first" ] || [ "$hash" = "$first" ] || return 1
        first=$hash
    done
}
