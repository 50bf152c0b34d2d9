#!/bin/bash
# fresh-machine.sh bookworm|trixie [CACHE]: runs the README's two commands on a machine that has nothing but that release
# of Debian, as root and then as a plain user, and the tests once more against Qt 5. Needs root. The release comes from
# the mirror that this machine's package configuration names, and is kept in the directory CACHE; all else goes with the
# script.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

release=${1-}
case $release in
bookworm | trixie) ;;
*) die "usage: fresh-machine.sh bookworm|trixie [CACHE]" ;;
esac
cache=${2-${TMPDIR:-/tmp}/qwixtd-fresh-machine}
[ "$(id -u)" -eq 0 ] || die "this needs root: it makes the root directory of another machine"
install_packages mmdebstrap git debian-archive-keyring

# One pristine archive for each release.
archive=$cache/$release.tar
if [ ! -s "$archive" ]; then
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' | head -n 1)
    [ -n "$mirror" ] || die "this machine's package configuration names no mirror of Debian"
    mkdir -p "$cache"
    with_progress "fetching $release" \
        mmdebstrap --variant=minbase --format=tar "$release" "$archive.part" "$mirror" ||
        die "mmdebstrap could not fetch $release"
    mv "$archive.part" "$archive"
fi

machine=$(mktemp -d "${TMPDIR:-/tmp}/qwixtd-machine.XXXXXX")
running=''
clean_up() {
    # Everything on the machine ends with the process that started it.
    [ -z "$running" ] || kill -KILL "$running" 2>/dev/null || true
    wait
    rm -rf --one-file-system "$machine"
}
trap clean_up EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM
tar -xf "$archive" -C "$machine" --exclude='./dev/*'
cp -L /etc/resolv.conf "$machine/etc/resolv.conf"
chroot "$machine" useradd --create-home --shell /bin/bash visitor
for home in root home/visitor; do
    mkdir "$machine/$home/checkout"
    # The working tree as it is, changes that are not committed yet included.
    (cd "$ROOT" && git ls-files -z --cached --others --exclude-standard |
        tar --null --ignore-failed-read -T - -c) | tar -x -C "$machine/$home/checkout" --no-same-owner
done
chroot "$machine" chown -R visitor: /home/visitor

# on_machine USER: what comes in is run by a shell of that user in the checkout, as if the machine had been started:
# with its own root of all mounts, which sandboxes inside it need, and processes that end with it. Never returns.
on_machine() {
    # shellcheck disable=SC2016
    exec unshare --mount --pid --fork --kill-child --propagation private bash -c '
        set -e
        machine=$1 user=$2
        mount --rbind "$machine" "$machine"
        mount --rbind /dev "$machine/dev"
        mount -t proc proc "$machine/proc"
        mount -t sysfs sysfs "$machine/sys"
        cd "$machine"
        mkdir -p .outside
        pivot_root . .outside
        cd /
        umount -l /.outside
        exec env -i TERM=dumb PATH=/usr/sbin:/usr/bin:/sbin:/bin su - "$user" -c "cd checkout && exec bash -eu"
    ' bash "$machine" "$1"
}

# check USER COMMANDS: ends the script when they fail there.
check() {
    say "== $release, $1: $2"
    on_machine "$1" <<<"$2" &
    running=$!
    wait "$running" || die "$release: \"$2\" failed as $1"
    running=''
}
check root 'tools/demo.sh && tools/test.sh'
check visitor 'tools/demo.sh && tools/test.sh'
check root 'tools/test.sh qt5'
say "$release: ok"
