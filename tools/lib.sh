# shellcheck shell=bash
# Shared by the scripts of this directory, which source it. Needs bash and pipefail. Sets ROOT, the project's directory.

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What building, testing and the demo need, beyond what every Debian system has.
# shellcheck disable=SC2034
PACKAGES=(cmake ninja-build g++ pkg-config qt6-base-dev libdbus-1-dev libcurl4-openssl-dev
          libedit-dev libseccomp-dev openssl dbus bubblewrap ca-certificates systemd)

say() {
    printf '%s\n' "$*"
}

die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# The progress of a command whose output comes in, under the name WHAT: on a terminal one line that moves, elsewhere a
# line every few seconds. Counts what ninja and apt-get say of their steps.
show_progress() {
    local what=$1 line='' count='' done=0 total=0 next=$((SECONDS + 5)) status=0
    [ -t 1 ] || say "$what"
    while [ "$status" -ne 1 ]; do
        status=0
        IFS= read -r -t 1 line || status=$?
        if [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]]; then
            done=${BASH_REMATCH[1]} total=${BASH_REMATCH[2]}
        elif [[ $line =~ \ ([0-9]+)\ newly\ installed ]]; then
            total=$((3 * BASH_REMATCH[1]))
        elif [[ $line =~ ^(Get:|Unpacking |Setting up ) ]]; then
            done=$((done + 1))
        fi
        count=''
        if [ "$total" -gt 0 ]; then
            count=": $done of $total"
        fi
        if [ -t 1 ]; then
            printf '\r\033[K%s%s' "$what" "$count"
        elif [ "$SECONDS" -ge "$next" ]; then
            say "$what$count"
            next=$((SECONDS + 5))
        fi
    done
    [ ! -t 1 ] || printf '\n'
}

# Passes lines on as they come, and says after every 5 s of silence that WHAT goes on.
show_signs_of_life() {
    local what=$1 line='' status=0
    while [ "$status" -ne 1 ]; do
        status=0
        IFS= read -r -t 5 line || status=$?
        if [ "$status" -gt 1 ]; then
            # What came of a line so far is kept for its end.
            say "$what ($SECONDS s)"
            printf '%s' "$line"
        elif [ "$status" -eq 0 ] || [ -n "$line" ]; then
            say "$line"
        fi
    done
}

# with_progress WHAT COMMAND...: runs a command under show_progress, and shows the end of what it wrote when it fails.
with_progress() {
    local what=$1 output status=0
    shift
    output=$(mktemp)
    "$@" 2>&1 9>&- </dev/null | tee "$output" | show_progress "$what" || status=$?
    if [ "$status" -ne 0 ]; then
        tail -n 100 "$output" >&2
    fi
    rm -f "$output"
    return "$status"
}

# The daemon of the demo and of the tests trusts a bundle that lies over the system's, for it alone.
require_sandbox() {
    local problem
    problem=$(bwrap --dev-bind / / --die-with-parent true 2>&1) ||
        die "no sandbox can be made here (${problem:-bwrap failed}), and the tests and the demo need one:\
 allow user namespaces on this machine, or run in a container that is allowed to make them."
}

# Prints those of the named packages that are not installed.
missing_packages() {
    local package status
    for package in "$@"; do
        status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) || status=
        if [ "$status" != installed ]; then
            printf '%s\n' "$package"
        fi
    done
}

# Installs those of the named packages that are missing; says nothing when none is.
install_packages() {
    local missing
    command -v dpkg-query >/dev/null 2>&1 || die "this needs a Debian system: there is no dpkg-query"
    mapfile -t missing < <(missing_packages "$@")
    if [ ${#missing[@]} -eq 0 ]; then
        return
    fi
    if [ "$(id -u)" -ne 0 ]; then
        die "these packages are missing: ${missing[*]}
Run this once as root, or install them: apt-get install ${missing[*]}"
    fi
    # A package index that cannot be updated may still know all that is missing.
    with_progress "reading the package index" apt-get update -q ||
        say "the package index could not be updated; going on with what it has"
    with_progress "installing ${missing[*]}" \
        env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}" ||
        die "apt-get could not install: ${missing[*]}"
}

# install_packages_of PRESET [PACKAGE...]: installs what building and testing the preset needs, and the further packages.
install_packages_of() {
    local packages=("${PACKAGES[@]}" "${@:2}")
    if [ "$1" = qt5 ]; then
        packages+=(qtbase5-dev)
    fi
    install_packages "${packages[@]}"
}

# Installs what the tests of the simulator's page need: a browser, and from npm what drives it. Returns false, with the
# reason, when that cannot be had: all else can be tested without it.
install_browser() {
    local directory=$ROOT/tests/web lock=node_modules/.package-lock.json packages=()
    [ -f "$directory/package.json" ] || return 0
    command -v chromium >/dev/null 2>&1 || packages+=(chromium)
    command -v npm >/dev/null 2>&1 || packages+=(nodejs npm)
    if [ ${#packages[@]} -gt 0 ] && ! (install_packages "${packages[@]}"); then
        say "the page is not tested in a browser: ${packages[*]} could not be installed"
        return 1
    fi
    if [ "$directory/package-lock.json" -nt "$directory/$lock" ]; then
        with_progress "installing what drives the browser" npm ci --prefix "$directory" || {
            say "the page is not tested in a browser: npm could not install what drives it"
            return 1
        }
        touch "$directory/$lock"
    fi
}

# require_tests PRESET: ends the script when the preset is none, or has no tests.
require_tests() {
    local presets
    presets=$(cd "$ROOT" && ctest --list-presets | sed -n 's/^  "\([^"]*\)".*/\1/p')
    grep -Fqx -- "$1" <<<"$presets" ||
        die "there is no preset \"$1\" with tests; those with tests are: ${presets//$'\n'/ }"
}

# build PRESET [TARGET...]: configures on first use and when the presets have changed, and builds what is out of date.
# Says nothing when nothing is.
build() {
    local preset=$1 directory=$ROOT/build/$1
    shift
    mkdir -p "$directory"
    # One at a time: two scripts may be asked for at once.
    exec 9>"$directory/.lock"
    if ! flock -n 9; then
        say "waiting for another build of $preset"
        flock 9
    fi
    if [ ! -f "$directory/build.ninja" ] || [ "$ROOT/CMakePresets.json" -nt "$directory/build.ninja" ] ||
        [ "$ROOT/tests/web/node_modules/.package-lock.json" -nt "$directory/build.ninja" ]; then
        with_progress "configuring $preset" cmake -S "$ROOT" --preset "$preset" || die "cannot configure $preset"
    fi
    if ! grep -q 'no work to do' < <(ninja -C "$directory" -n "$@" 9>&- 2>/dev/null); then
        with_progress "building $preset" ninja -C "$directory" "$@" || die "cannot build $preset"
    fi
    exec 9>&-
}
