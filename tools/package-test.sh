#!/bin/bash
# package-test.sh bookworm|trixie [CACHE]: makes the packages on this machine, installs them on a machine that has nothing
# but that release of Debian and its service manager running, and checks that the daemon does its job there as it is
# installed, and that nothing is left when they are purged. Needs root. The release is kept in the directory CACHE.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/machine.sh"

release=${1-}
require_release "$release"
"$ROOT/tools/package.sh"
make_machine "$release" "${@:2:1}"
# shellcheck disable=SC2154
cp -r "$ROOT/build/package/packages" "$machine/packages"
cp "$ROOT/tests/packaging/packages.sh" "$machine/packages"

# What the packages need is fetched now: the machine has no network when it runs, and what is there by then is its own.
# What a widget's developer has is there as well.
with_progress "installing what the packages need on $release" on_machine bash -euc '
    apt-get update -q
    export DEBIAN_FRONTEND=noninteractive
    needs="systemd, dbus, openssl, g++, pkg-config"
    for package in /packages/*.deb; do
        needs="$needs, $(dpkg-deb -f "$package" Depends)"
    done
    apt-get satisfy -y -q --no-install-recommends "$needs"
' || die "the packages cannot have what they need on $release"
boot_machine
on_booted_machine bash /packages/packages.sh || die "the packages fail on $release"
say "$release: ok"
