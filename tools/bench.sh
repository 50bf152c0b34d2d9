#!/bin/bash
# bench.sh [--smoke] [--json FILE] [GROUP...]: measures what the daemon costs, each figure beside a floor that is measured
#   in the same run, and prints one table; FILE may be - for JSON in place of the table. Takes some minutes, and needs a
#   machine that does nothing else. --smoke takes everything below once, small and without a judgement.
# bench.sh fleet [--devices N] [--requests N] [--outage SECONDS] [--hold SECONDS] [--plot FILE]: many daemons and one
#   server: all boot at once, an outage while requests wait, and the recovery.
# bench.sh micro [OPTION...]: small parts of the daemon by time and by instructions; the options are Google Benchmark's.
# Installs what is missing, and builds the preset release. Ends with 1 when a figure cannot be taken.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

programs=$ROOT/build/release/bench-programs

# Debian's nginx starts a service of its own when it is installed; nothing here uses that.
prepare() {
    install_packages_of release nginx libbenchmark-dev valgrind binutils
    require_sandbox
    if ! grep -qx 'QWIXTD_BUILD_BENCH:BOOL=ON' "$ROOT/build/release/CMakeCache.txt" 2>/dev/null; then
        mkdir -p "$ROOT/build/release"
        with_progress "configuring release" flock "$ROOT/build/release/.lock" \
            cmake -S "$ROOT" --preset release -DQWIXTD_BUILD_BENCH=ON || die "cannot configure release"
    fi
    build release "$@"
} >&2 # standard output is for the figures

# count_instructions FILTER: those of one turn of each micro-benchmark of such a name, which asks callgrind to count them.
count_instructions() {
    local name count=''
    printf '%-50s %12s\n' 'benchmark' 'instructions'
    while read -r name; do
        count=$(valgrind --tool=callgrind --collect-atstart=no --callgrind-out-file=/dev/null \
            "$programs/qwixtd_micro" "--benchmark_filter=^$name\$" --benchmark_min_time=0.000000001 2>&1 |
            awk '/Collected : / { print $NF }')
        [[ $count =~ ^[1-9][0-9]*$ ]] || die "callgrind counts nothing in $name"
        printf '%-50s %12s\n' "$name" "$count"
    done < <("$programs/qwixtd_micro" --benchmark_list_tests "--benchmark_filter=$1")
    [ -n "$count" ] || die "there is no micro-benchmark $1"
}

micro() {
    "$programs/qwixtd_micro" "$@"
    count_instructions .
}

smoke() {
    scratch=$(mktemp -d "${TMPDIR:-/tmp}/qwixtd-bench.XXXXXX")
    trap 'rm -rf "$scratch"' EXIT
    "$programs/qwixtd_bench" --smoke --json "$scratch/figures.json"
    grep -q '"rows"' "$scratch/figures.json" || die "the figures are not in their file"
    "$programs/qwixtd_fleet" --devices 3 --requests 2 --outage 6 --plot "$scratch/fleet.svg"
    grep -q '</svg>' "$scratch/fleet.svg" || die "the plot is not in its file"
    "$programs/qwixtd_micro" --benchmark_min_time=0.001
    count_instructions body
}

# Not every user looks for programs where nginx is.
PATH=$PATH:/usr/sbin
case ${1-} in
fleet)
    prepare qwixtd_fleet
    exec "$programs/qwixtd_fleet" "${@:2}"
    ;;
micro)
    prepare qwixtd_micro
    micro "${@:2}"
    ;;
--smoke)
    [ $# -eq 1 ] || die "--smoke stands alone"
    prepare qwixtd_bench qwixtd_fleet qwixtd_micro
    smoke
    ;;
*)
    prepare qwixtd_bench
    exec "$programs/qwixtd_bench" "$@"
    ;;
esac
