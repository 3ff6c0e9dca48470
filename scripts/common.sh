# What ./run, ./test, ./bench and .ci/run share: saying things, installing packages, building a preset.
# Sourced by bash with the repository's root as the working directory.

say() { printf '%s\n' "$*"; }

# Ends the script with one line on standard error and status 2: something outside the code is missing.
fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 2
}

# packages_of SET...: the names that scripts/packages.txt lists for the sets.
packages_of() {
    local set
    for set in "$@"; do
        sed -n "s/^$set  *//p" scripts/packages.txt
    done
}

# missing_packages NAME...: those that dpkg does not hold as installed.
missing_packages() {
    local name
    for name in "$@"; do
        if [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" != installed ]; then
            printf '%s ' "$name"
        fi
    done
}

# apt_get ARGUMENT...: apt-get as root, which may mean through sudo when that asks for no password.
apt_get() {
    local -a as_root=()
    if [ "$(id -u)" != 0 ]; then
        as_root=(sudo -n)
    fi
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -q -o DPkg::Lock::Timeout=300 "$@" </dev/null
}

may_install() {
    [ "$(id -u)" = 0 ] || sudo -n true 2>/dev/null
}

# need_packages SET...: installs what is missing. Asks no server when nothing is.
need_packages() {
    if ! command -v dpkg-query >/dev/null; then
        say "This is no Debian system, so nothing is installed by itself. The build needs what Debian calls:"
        say "  $(packages_of "$@" | tr '\n' ' ')"
        return 0
    fi
    local missing
    missing=$(missing_packages $(packages_of "$@"))
    [ -n "$missing" ] || return 0
    command -v apt-get >/dev/null || fail "there is no apt-get here to install: $missing"
    may_install || fail "needs these packages and may not install them; as root: apt-get install $missing"
    say "Installing $missing"
    # The package lists may be absent or old: only when the first try fails are they fetched.
    apt_get install -y --no-install-recommends $missing >/dev/null 2>&1 && return 0
    apt_get update >/dev/null || fail "cannot fetch the package lists (apt-get update)"
    apt_get install -y --no-install-recommends $missing >/dev/null ||
        fail "cannot install: $missing"
}

need_command() {
    command -v "$1" >/dev/null || fail "there is no $1 on this machine ($2)"
}

# build PRESET [TARGET...]: configures when needed and builds, quietly unless something goes wrong.
build() {
    local preset=$1 log="build/$1.log"
    shift
    need_command cmake "Debian package cmake"
    need_command ninja "Debian package ninja-build"
    mkdir -p build
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configuring build/$preset"
        cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; fail "cannot configure build/$preset"; }
    fi
    say "Building build/$preset"
    local -a targets=()
    [ $# = 0 ] || targets=(--target "$@")
    if ! cmake --build "build/$preset" -j 2 "${targets[@]}" >"$log" 2>&1; then
        grep -E -A 12 'error|FAILED|Error' "$log" | head -n 80 >&2
        fail "the build of build/$preset failed; all it said is in $log"
    fi
}

# names_of KIND: what scripts/KINDs.sh defines as KIND_NAME, in its order.
names_of() { sed -n "s/^$1_\([a-z]*\)() {.*/\1/p" "scripts/$1s.sh" | tr '\n' ' '; }

# run_each KIND [NAME...]: all of a kind or those named; goes on after a failure, and tells at the end how long each took.
run_each() {
    local kind=$1 name status failed= times= start
    shift
    . "scripts/${kind}s.sh"
    [ $# -gt 0 ] || set -- $(names_of "$kind")
    for name in "$@"; do
        declare -F "${kind}_$name" >/dev/null || fail "there is no $kind '$name' ($(names_of "$kind"))"
    done
    for name in "$@"; do
        say "--- $kind: $name"
        start=$SECONDS
        # A plain subshell, not one after ||: there the first failing command would not end it.
        set +e
        ( set -e; "${kind}_$name" )
        status=$?
        set -e
        [ "$status" = 0 ] || failed="$failed $name"
        times="$times $name $((SECONDS - start)) s,"
        say "--- $name: $([ "$status" = 0 ] && say passed || say FAILED) in $((SECONDS - start)) s"
    done
    say "Times:${times%,}"
    [ -z "$failed" ] || fail "failed:$failed"
    say "Passed: $*"
}

# run_fuzz [fast] [SECONDS | runs=COUNT] [TARGET...]: a minute each of all of them, with all checkers, unless told otherwise.
run_fuzz() {
    local preset=fuzz limit=--seconds=60
    [ "${1-}" != fast ] || { preset=fuzz-fast; shift; }
    case "${1-}" in
        runs=*[0-9]) limit=--$1; shift ;;
        [0-9]*) limit=--seconds=$1; shift ;;
    esac
    build "$preset" fuzzers
    python3 scripts/fuzz.py "build/$preset" "$limit" "$@"
}
