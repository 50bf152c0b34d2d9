#!/bin/bash
# tsan.sh [CTEST ARGUMENT...]: runs the tests of the daemon and of its parts under the thread sanitizer, all of them unless
# told otherwise, and a minute of random schedules of the manager. Fails when a test does, and on each report of a race.
# The sanitizer takes the locks of a Qt that was not compiled with it for none, so the first run compiles one from Debian's
# source package, which takes five minutes of two idle cores, and keeps it in ~/.cache/qwixtd. Installs what is missing.
# When something is wrong, the reports are kept, and the last line says where.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

cache=${XDG_CACHE_HOME:-$HOME/.cache}/qwixtd
# What the sanitizer can arrange with the kernel; more ends each program at its start.
mostRandomBits=28

# make_source DIRECTORY: unpacks Debian's source package of Qt 6 into DIRECTORY/source. The machine's own package
# configuration may name no sources, and stays as it is.
make_source() {
    local directory=$1 apt
    mkdir -p "$directory/apt/lists/partial" "$directory/apt/archives/partial"
    apt-get indextargets 'Created-By: Packages' 'Origin: Debian' --format \
        'deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $(REPO_URI) $(RELEASE) $(COMPONENT)' |
        sort -u >"$directory/apt/sources.list"
    apt=(apt-get -o "Dir::Etc::SourceList=$directory/apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
        -o "Dir::State::Lists=$directory/apt/lists" -o "Dir::Cache=$directory/apt" -o APT::Sandbox::User=root)
    with_progress "reading the index of source packages" "${apt[@]}" update -q || die "no index of source packages"
    (cd "$directory" && with_progress "fetching the source of Qt" "${apt[@]}" source -q --download-only "qt6-base=$version") ||
        die "cannot fetch the source of Qt"
    rm -rf "$directory/source"
    dpkg-source --no-check -x "$directory"/qt6-base_*.dsc "$directory/source" >/dev/null 2>&1 ||
        die "cannot unpack the source of Qt"
}

# make_qt DIRECTORY: makes DIRECTORY/qt, the parts of Qt that the project needs. What they can bundle is compiled with the
# sanitizer too, so that it is seen; the tools, moc above all, are those of the machine, which are many times faster.
make_qt() {
    local directory=$1 feature arguments=()
    for feature in sanitize_thread dbus_linked; do
        arguments+=("-DFEATURE_$feature=ON")
    done
    for feature in gui widgets sql xml concurrent qmake androiddeployqt glib icu zstd brotli libproxy gssapi sctp lttng \
        http dnslookup dtls ocsp topleveldomain socks5 system_zlib system_pcre2 system_doubleconversion system_libb2; do
        arguments+=("-DFEATURE_$feature=OFF")
    done
    if command -v ccache >/dev/null 2>&1; then
        arguments+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    with_progress "configuring Qt" cmake -S "$directory/source" -B "$directory/build" -G Ninja \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo '-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1' \
        '-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -g1' -DCMAKE_INSTALL_PREFIX="$directory/qt" -DBUILD_WITH_PCH=OFF \
        -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DINPUT_openssl=runtime \
        -DQT_HOST_PATH=/usr -DQT_FORCE_FIND_TOOLS=ON "${arguments[@]}" ||
        die "cannot configure Qt"
    with_progress "building Qt" ninja -C "$directory/build" || die "cannot build Qt"
    with_progress "installing Qt" ninja -C "$directory/build" install || die "cannot install Qt"
    rm -rf "$directory"/{build,source,apt} "$directory"/qt6-base_*
}

bits=$(cat /proc/sys/vm/mmap_rnd_bits)
[ "$bits" -le "$mostRandomBits" ] ||
    die "the thread sanitizer cannot work with vm.mmap_rnd_bits=$bits: set it with sysctl to $mostRandomBits"
install_packages_of tsan dpkg-dev libssl-dev debian-archive-keyring
require_sandbox

# One Qt for each version: its tools are the machine's.
version=$(dpkg-query -W -f '${source:Version}' qt6-base-dev)
directory=$cache/qt-tsan-${version//[^[:alnum:].-]/_}
mkdir -p "$directory"
exec 8>"$directory/.lock"
flock 8
if [ ! -e "$directory/complete" ]; then
    make_source "$directory"
    make_qt "$directory"
    touch "$directory/complete"
fi
exec 8>&-

export CMAKE_PREFIX_PATH=$directory/qt
cache_of_build=$ROOT/build/tsan/CMakeCache.txt
if [ -f "$cache_of_build" ] && ! grep -Fqx "Qt6Core_DIR:PATH=$directory/qt/lib/cmake/Qt6Core" "$cache_of_build"; then
    # Made with another Qt.
    rm -rf "$ROOT/build/tsan"
fi
build tsan tests/{fetch,manager,service,schedules,endtoend}/all

reports=$(mktemp -d "${TMPDIR:-/tmp}/qwixtd-tsan.XXXXXX")
export TSAN_OPTIONS="log_path=$reports/report suppressions=$ROOT/tools/tsan.supp second_deadlock_stack=1"
# Qt Test ends what takes longer; CTest has a bound of its own.
export QTEST_FUNCTION_TIMEOUT=3000000
failed=0
# Left out: tst_vthread measures the stack of a thread, to which the sanitizer adds its own. The process that tst_log makes
# to end by SIGABRT allocates in the handler, of which the sanitizer warns; it has one thread.
ctest --test-dir "$ROOT/build/tsan" --output-on-failure --no-tests=error -j "$(nproc)" \
    -L '^(fetch|manager|service|schedules|endtoend)$' -E '^tst_(vthread|log)$' "$@" |
    show_signs_of_life "testing" || failed=1

# A daemon ends without the exit handlers by which the sanitizer would fail it, so what it wrote decides.
shopt -s nullglob
found=("$reports"/*)
if [ ${#found[@]} -gt 0 ]; then
    head -n 60 "${found[0]}" >&2
    say "${#found[@]} processes were found wrong"
    failed=1
fi
if [ "$failed" -ne 0 ]; then
    say "tsan.sh: failed; the reports are in $reports"
    exit 1
fi
rmdir "$reports"
say "tsan.sh: nothing found"
