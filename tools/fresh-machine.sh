#!/bin/bash
# fresh-machine.sh bookworm|trixie [CACHE]: runs the README's two commands on a machine that has nothing but that release
# of Debian, as root and then as a plain user, and the tests once more against Qt 5. Needs root. The release comes from
# the mirror that this machine's package configuration names, and is kept in the directory CACHE; all else goes with the
# script.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/machine.sh"

release=${1-}
require_release "$release"
install_packages git
make_machine "$release" "${@:2:1}"
chroot "$machine" useradd --create-home --shell /bin/bash visitor
for home in root home/visitor; do
    mkdir "$machine/$home/checkout"
    # The working tree as it is, changes that are not committed yet included.
    (cd "$ROOT" && git ls-files -z --cached --others --exclude-standard |
        tar --null --ignore-failed-read -T - -c) | tar -x -C "$machine/$home/checkout" --no-same-owner
done
chroot "$machine" chown -R visitor: /home/visitor

# check USER COMMANDS: ends the script when they fail there.
check() {
    say "== $release, $1: $2"
    on_machine su - "$1" -c 'cd checkout && exec bash -eu' <<<"$2" || die "$release: \"$2\" failed as $1"
}
check root 'tools/demo.sh && tools/test.sh'
check visitor 'tools/demo.sh && tools/test.sh'
check root 'tools/test.sh qt5'
say "$release: ok"
