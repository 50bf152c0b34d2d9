#!/bin/bash
# armhf.sh [--qt 5|6]: builds the daemon for a device with an ARMv7 processor and tests it on this machine, under an
# emulator. Installs what is missing and fetches the device's libraries once; from then on it needs no network. At the end
# it says how large the program is, what it needs, and how many tests passed, failed and were not run, and why not.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/machine.sh"
. "$(dirname "$0")/device.sh"

# How a test program takes part: "device" runs it as a program of the device, "daemon" runs this machine's build of it with
# the device's daemon in the place of its own, and any other words say why it does not run.
part_of() {
    case $1 in
    tst_qwixtd_* | tst_testsupport)
        say daemon ;;
    tst_builtinserverhost | tst_configureoptions | tst_installedcomponents | tst_platformlibrary | tst_proxyinstall)
        say "configures and builds on this machine, for this machine" ;;
    tst_tools)
        say "runs scripts of this machine, and no program of the device" ;;
    tst_devicesim | tst_devicesim_terminal | tst_proxyarguments)
        say "starts further programs through Qt, which does not work under the emulator" ;;
    tst_buspolicy | tst_installeddocuments | tst_recipe)
        say "tests files that are the same on every processor" ;;
    web_page)
        say "starts the programs without the emulator" ;;
    tst_serviceunit)
        say "the emulator makes other system calls than the program that it runs" ;;
    tst_busabuse)
        say "measures memory and time, which would be the emulator's" ;;
    tst_shippedprogram)
        say "reads the program with this machine's tools" ;;
    tst_* | schedules)
        say device ;;
    *)
        say "is no program of the device" ;;
    esac
}

case $* in
'' | '--qt 6') qt=6 suffix='' native=release packages=() ;;
'--qt 5') qt=5 suffix=-qt5 native=qt5 packages=(qtbase5-dev) ;;
*) die "usage: armhf.sh [--qt 5|6]" ;;
esac
program=$ROOT/build/device$suffix/bin/qwixtd
tests=$ROOT/build/device-tests$suffix
ours=$ROOT/build/$native
started=$tests/started

# tests_of DIRECTORY: the names of the tests that a build has.
tests_of() {
    ctest --test-dir "$1" --show-only | sed -n 's/^ *Test *#[0-9]*: //p'
}

# tests_for PART: the names of the tests of the device's build that take part in this way.
tests_for() {
    local name
    tests_of "$tests" | while IFS= read -r name; do
        [ "$(part_of "$name")" != "$1" ] || say "$name"
    done
}

# make_starter PROGRAM: makes a program that runs this one of the device under the emulator and notes that it did, and
# prints its path. The emulator's file has the program's name, as /proc names the process by its file.
make_starter() {
    local name
    name=$(basename "$1")
    mkdir -p "$started/emulator"
    cp --update "$(command -v qemu-arm-static)" "$started/emulator/$name"
    # shellcheck disable=SC2154
    printf '#!/bin/sh\necho >>"%s"\nexec "%s" -L "%s" "%s" "$@"\n' \
        "$started/starts" "$started/emulator/$name" "$device_root" "$1" >"$started/$name"
    chmod 755 "$started/$name"
    say "$started/$name"
}

# run_tests DIRECTORY NAMES [OPTION...]: runs the tests of these names, with further options of the sandbox. Its processes
# are its own: a program that the emulator lets down can end no other. The emulator takes ten times the processor time of a
# program that runs by itself (measured: the start of the daemon, 164 ms and 16 ms), and so the tests have ten times the
# time.
run_tests() {
    local directory=$1 names=$2 bounds=() file
    shift 2
    mkdir -p "$started/bounds"
    while IFS= read -r file; do
        sed 's/ TIMEOUT "\([0-9]*\)"/ TIMEOUT "\10"/' "$file" >"$started/bounds/${file//\//_}"
        bounds+=(--ro-bind "$started/bounds/${file//\//_}" "$file")
    done < <(find "$directory/tests" -name CTestTestfile.cmake)
    bwrap --dev-bind / / --unshare-pid --proc /proc --die-with-parent "${bounds[@]}" "$@" \
        ctest --test-dir "$directory" --output-on-failure --parallel "$(nproc)" --no-tests=error \
        -R "^(${names//$'\n'/|})\$" </dev/null | show_signs_of_life "testing"
}

# count DIRECTORY: sums up what the test programs of the last run counted. CTest forgets it when it is asked for anything.
count() {
    awk '/^Totals: / { passed += $2; failed += $4; skipped += $6 }
         END { printf "%d passed, %d failed, %d skipped\n", passed, failed, skipped }' \
        "$1/Testing/Temporary/LastTest.log"
}

make_device_root "${packages[@]}"
require_device_root "device$suffix" "device-tests$suffix"
require_sandbox
build "device$suffix"
build "device-tests$suffix" qwixtd
device_tests=$(tests_for device)
daemon_tests=$(tests_for daemon)
mapfile -t targets <<<"${device_tests/schedules/qwixtd_schedules}"
build "device-tests$suffix" qwixtd_debuglog qwixtd_witnessed "${targets[@]}"
mapfile -t targets <<<"$daemon_tests"
build "$native" qwixtd qwixtd_debuglog qwixtd_witnessed "${targets[@]}"

# The bundle of all authorities is read anew at each request, which takes long under the emulator. The tests add theirs to
# it, and need no other.
mkdir -p "$started"
rm -f "$started/starts"
: >"$started/no-authorities"
over=(--ro-bind "$started/no-authorities" /etc/ssl/certs/ca-certificates.crt
      --ro-bind "$(make_starter "$program")" "$ours/bin/qwixtd")
for name in qwixtd_debuglog qwixtd_witnessed; do
    over+=(--ro-bind "$(make_starter "$tests/tests/$name")" "$ours/tests/$name")
done

status=0
say "== the device's test programs, under the emulator"
# A test that needs this setting of the allocator would start itself anew with it, which the emulator does not let it.
run_tests "$tests" "$device_tests" --setenv GLIBC_TUNABLES glibc.malloc.tcache_count=0 || status=1
device_count=$(count "$tests")
say "== the device's daemon, under the emulator, in the tests of this machine"
run_tests "$ours" "$daemon_tests" "${over[@]}" || status=1
daemon_count=$(count "$ours")
starts=$(wc -l 2>/dev/null <"$started/starts") || die "the tests did not start the device's daemon"

arm-linux-gnueabihf-strip -o "$started/stripped" "$program"
say "== not run"
# This machine's build has tests that the device's leaves out.
while IFS= read -r name; do
    part=$(part_of "$name")
    case $part in
    device | daemon)
        grep -Fqx -- "$name" <<<"$device_tests"$'\n'"$daemon_tests" || say "$name: the device's build leaves it out" ;;
    *)
        say "$name: $part" ;;
    esac
done < <({ tests_of "$ours" && tests_of "$tests"; } | awk '!seen[$0]++')
say "== $program, Qt $qt"
say "stripped: $(stat -c %s "$started/stripped") bytes"
say "needs: $(arm-linux-gnueabihf-readelf -d "$program" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | paste -s -d ' ')"
say "the device's test programs: $device_count"
say "the device's daemon, started $starts times: $daemon_count"
exit "$status"
