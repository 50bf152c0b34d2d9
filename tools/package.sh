#!/bin/bash
# package.sh [--armhf]: installs what is missing, makes the Debian packages of the program, the proxy library and the
# simulator for the release of Debian that this machine runs, and checks them. They are left in build/package/packages;
# with --armhf they are for devices with an ARMv7 processor, and left in build/device-package/packages.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/machine.sh"
. "$(dirname "$0")/device.sh"

needs=(dpkg-dev lintian mandoc)
environment=()
case $# in
0)
    preset=package
    install_packages_of package "${needs[@]}"
    ;;
*)
    [ "$*" = --armhf ] || die "usage: package.sh [--armhf]"
    preset=device-package
    make_device_root "${needs[@]}"
    # shellcheck disable=SC2154
    environment=(DEB_HOST_ARCH=armhf "DPKG_ADMINDIR=$device_root/var/lib/dpkg")
    ;;
esac
build "$preset"

directory=$ROOT/build/$preset
packages=$directory/packages
rm -rf "$packages"
with_progress "making the packages" env -C "$directory" "${environment[@]}" cpack || die "cpack could not make the packages"

for page in qwixtd.8 qwixt-devicesim.1; do
    mandoc -T lint "$directory/packaging/$page" || die "mandoc has something to say of $page"
done
lintian --allow-root --fail-on error,warning --tag-display-limit 0 "$packages"/*.deb || die "lintian refuses the packages"
printf '%s\n' "$packages"/*.deb
