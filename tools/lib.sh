# shellcheck shell=bash
# Shared by the scripts of this folder, which source it. Needs bash. Sets ROOT, the project's folder.

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What building, testing and the demo need, beyond what every Debian system has.
# shellcheck disable=SC2034
PACKAGES=(cmake ninja-build g++ pkg-config qtbase5-dev libcurl4-openssl-dev libedit-dev
          openssl dbus bubblewrap ca-certificates)

say() {
    printf '%s\n' "$*"
}

die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# Runs a command and shows the end of what it wrote only when it fails.
quietly() {
    local output
    if ! output=$("$@" 2>&1); then
        tail -n 100 <<<"$output" >&2
        return 1
    fi
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
    say "installing ${missing[*]}"
    # A package index that cannot be updated may still know all that is missing.
    quietly apt-get update -q || say "the package index could not be updated; going on with what it has"
    quietly env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}" ||
        die "apt-get could not install: ${missing[*]}"
}

# build PRESET [TARGET...]: configures on first use and builds what is out of date. Says nothing when nothing is.
build() {
    local preset=$1 folder=$ROOT/build/$1
    shift
    mkdir -p "$folder"
    # One at a time: two scripts may be asked for at once.
    exec 9>"$folder/.lock"
    flock 9
    if [ ! -f "$folder/build.ninja" ]; then
        say "configuring $preset"
        (cd "$ROOT" && quietly cmake --preset "$preset" 9>&-) || die "cannot configure $preset"
    fi
    if ! grep -q 'no work to do' < <(ninja -C "$folder" -n "$@" 9>&- 2>/dev/null); then
        say "building $preset"
        quietly ninja -C "$folder" "$@" 9>&- || die "cannot build $preset"
    fi
    exec 9>&-
}
