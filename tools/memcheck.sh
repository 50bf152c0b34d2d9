#!/bin/bash
# memcheck.sh [CTEST ARGUMENT...]: runs the end-to-end tests with the daemon under valgrind, all of them unless told
# otherwise. Fails when a test does, and when a daemon used memory that is not its own or was never set, or leaked. Installs
# what is missing. When something is wrong, valgrind's reports are kept, and the last line says where.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[[ ${TMPDIR-} != *' '* ]] || die "TMPDIR may hold no space"
install_packages_of memcheck valgrind
require_sandbox
build memcheck tests/endtoend/all

reports=$(mktemp -d "${TMPDIR:-/tmp}/qwixtd-memcheck.XXXXXX")
export QWIXTD_RUN_UNDER="valgrind --log-file=$reports/%p.log --error-exitcode=99 --trace-children=yes --fair-sched=yes \
    --leak-check=full --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect --num-callers=30"
# Qt Test ends what takes longer; CTest has a bound of its own.
export QTEST_FUNCTION_TIMEOUT=3000000
failed=0
ctest --test-dir "$ROOT/build/memcheck" --output-on-failure --no-tests=error -j "$(nproc)" -L '^endtoend$' "$@" |
    show_signs_of_life "testing" || failed=1

# A daemon that a signal ends has no exit status for valgrind to change, so what it wrote decides.
shopt -s nullglob
logs=("$reports"/*.log)
[ ${#logs[@]} -gt 0 ] || die "no daemon ran under valgrind"
mapfile -t wrong < <(grep -L 'ERROR SUMMARY: 0 errors ' "${logs[@]}")
if [ ${#wrong[@]} -gt 0 ]; then
    head -n 60 "${wrong[0]}" >&2
    say "${#wrong[@]} of ${#logs[@]} daemons were found wrong, or were killed before valgrind had looked: ${wrong[*]}"
    failed=1
fi
if [ "$failed" -ne 0 ]; then
    say "memcheck.sh: failed; the reports are in $reports"
    exit 1
fi
rm -rf "$reports"
say "memcheck.sh: nothing found in ${#logs[@]} daemons"
