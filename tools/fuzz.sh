#!/bin/bash
# fuzz.sh [--seconds N] [--runs N] [FUZZER...]: installs what is missing, builds the fuzzers with clang, and runs those
# named, or all, two at a time: for N seconds each, 30 unless given, or for N inputs each (or whichever ends first). What
# they learn stays in build/fuzz/corpus for the next time, what breaks them in build/fuzz/findings. The exit status is 0
# when nothing broke.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

atOnce=2
longestInput=512
secondsPerInput=20

# The number that follows an option.
number() {
    [[ ${2-} =~ ^[1-9][0-9]*$ ]] || die "$1 needs a number above 0"
    printf '%s\n' "$2"
}

seconds=''
runs=''
fuzzers=()
while [ $# -gt 0 ]; do
    case $1 in
    --seconds)
        seconds=$(number "$@")
        shift
        ;;
    --runs)
        runs=$(number "$@")
        shift
        ;;
    -*) die "no such option: $1" ;;
    *) fuzzers+=("$1") ;;
    esac
    shift
done
if [ -z "$seconds$runs" ]; then
    seconds=30
fi

mapfile -t known < <(cd "$ROOT/tests/fuzz" && printf '%s\n' fuzz_*.cpp | sed 's/\.cpp$//')
if [ ${#fuzzers[@]} -eq 0 ]; then
    fuzzers=("${known[@]}")
fi
for fuzzer in "${fuzzers[@]}"; do
    printf '%s\n' "${known[@]}" | grep -Fqx -- "$fuzzer" ||
        die "there is no fuzzer \"$fuzzer\"; there are: ${known[*]}"
done

install_packages_of fuzz clang libclang-rt-dev
build fuzz "${fuzzers[@]}"

output=$ROOT/build/fuzz
mkdir -p "$output/findings"
# A fuzzer that is ended by what it found leaves its temporary files behind.
TMPDIR=$(mktemp -d)
export TMPDIR
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$TMPDIR"' EXIT
trap 'exit 130' INT TERM

# Becomes one fuzzer, its words into a file. Leaks are looked for when it ends: after each input it takes much longer.
# Short stacks of allocations make it faster; a replay shows whole ones.
become() {
    local fuzzer=$1
    local arguments=("-max_len=$longestInput" -len_control=10 -detect_leaks=0 -print_final_stats=1
        "-timeout=$secondsPerInput"
        "-artifact_prefix=$output/findings/$fuzzer-")
    [ -z "$seconds" ] || arguments+=("-max_total_time=$seconds")
    [ -z "$runs" ] || arguments+=("-runs=$runs")
    [ ! -f "$ROOT/tests/fuzz/$fuzzer.dict" ] || arguments+=("-dict=$ROOT/tests/fuzz/$fuzzer.dict")
    mkdir -p "$output/corpus/$fuzzer"
    export ASAN_OPTIONS=malloc_context_size=6:quarantine_size_mb=32
    exec "$output/fuzzers/$fuzzer" "${arguments[@]}" \
        "$output/corpus/$fuzzer" "$ROOT/tests/fuzz/corpus/$fuzzer" >"$output/$fuzzer.log" 2>&1 9>&- </dev/null
}

# A finding is what the log names last. A leak has none: it shows at the end, and the corpus is given again to find it.
report() {
    local fuzzer=$1 status=$2 log=$output/$1.log finding
    if [ "$status" -eq 0 ]; then
        say "$fuzzer: nothing found in $(sed -n 's/^Done \(.*\)$/\1/p' "$log")"
        return
    fi
    finding=$(sed -n 's/^.*Test unit written to //p' "$log" | tail -n 1)
    grep -vE '^#[0-9]+|^INFO: ' "$log" | head -n 60 >&2 || true
    say "$fuzzer: failed, all it said is in $log"
    [ -z "$finding" ] || say "$fuzzer: this input breaks it: $finding
  replay: build/fuzz/fuzzers/$fuzzer $finding"
    ! grep -q 'LeakSanitizer: detected' "$log" || say "$fuzzer: it leaks
  to find the input: build/fuzz/fuzzers/$fuzzer -runs=100000 build/fuzz/corpus/$fuzzer"
}

declare -A fuzzerOf
failed=0
running=0
wait_for_one() {
    local pid status=0
    wait -n -p pid || status=$?
    running=$((running - 1))
    report "${fuzzerOf[$pid]}" "$status"
    [ "$status" -eq 0 ] || failed=1
}

for fuzzer in "${fuzzers[@]}"; do
    [ "$running" -lt "$atOnce" ] || wait_for_one
    say "$fuzzer runs${seconds:+ for $seconds s}${runs:+ until $runs inputs}"
    become "$fuzzer" &
    fuzzerOf[$!]=$fuzzer
    running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
    wait_for_one
done
exit "$failed"
