#!/bin/bash
# chaos.sh [--seconds N] [--seed S] [--preset P]: runs the real daemon on a bus of its own and behind a real nginx, while
# everything goes wrong at random, and checks what came of it. About a minute of the preset release unless told otherwise.
# Installs what is missing. When something is wrong, the logs are kept, and the last line says where.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

usage() {
    die "usage: chaos.sh [--seconds N] [--seed S] [--preset P]"
}

preset=release
arguments=()
while [ $# -gt 0 ]; do
    case $1 in
    --seconds | --seed) [[ ${2-} =~ ^[1-9][0-9]*$ ]] || usage; arguments+=("$1" "$2") ;;
    --preset) [ -n "${2-}" ] || usage; preset=$2 ;;
    *) usage ;;
    esac
    shift 2
done

# Debian's nginx starts a service of its own when it is installed; nothing here uses that.
install_packages_of "$preset" nginx
require_tests "$preset"
require_sandbox
build "$preset" qwixtd_chaos

# Not every user looks for programs where nginx is.
PATH=$PATH:/usr/sbin
logs=$(mktemp -d "${TMPDIR:-/tmp}/qwixtd-chaos.XXXXXX")
if "$ROOT/build/$preset/tests/qwixtd_chaos" --directory "$logs" "${arguments[@]}"; then
    rm -rf "$logs"
else
    say "chaos.sh: what happened is in $logs/journal.log"
    exit 1
fi
