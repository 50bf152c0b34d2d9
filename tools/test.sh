#!/bin/bash
# test.sh [PRESET] [CTEST ARGUMENT...]: installs what is missing, builds and runs the tests; PRESET is release
# unless given. The exit status and the last lines are CTest's.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

preset=release
if [ $# -gt 0 ] && [ "${1#-}" = "$1" ]; then
    preset=$1
    shift
fi

install_packages_of "$preset"
require_tests "$preset"
require_sandbox
if [ "$preset" = release ]; then
    install_browser || true
fi
build "$preset"
cd "$ROOT"
if [ -t 1 ]; then
    exec ctest --preset "$preset" --progress "$@"
fi
ctest --preset "$preset" "$@" | show_signs_of_life "testing"
