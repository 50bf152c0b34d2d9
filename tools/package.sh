#!/bin/bash
# package.sh [--armhf]: installs what is missing, makes the Debian packages of the program, the proxy library and the
# simulator for the release of Debian that this machine runs, and checks them. They are left in build/package/packages;
# with --armhf they are for devices with an ARMv7 processor, and left in build/device-package/packages.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/machine.sh"
. "$(dirname "$0")/device.sh"

# check_dependencies PACKAGE: ends the script unless the package depends on each package of the device's root that has a
# library of its programs, and on no library that is not there: what dpkg finds on this machine instead is of no use.
check_dependencies() {
    # shellcheck disable=SC2154
    local package=$1 dpkg=$device_root/var/lib/dpkg files libraries library owners name names
    names=$(dpkg-deb -f "$package" Depends | tr ',|' '\n' | sed 's/^ *//; s/ .*//; s/:.*//')
    while IFS= read -r name; do
        case $name in
        lib*)
            grep -Fqx -- "Package: $name" "$dpkg/status" ||
                die "$package depends on $name, which is no library of the device in $device_root" ;;
        esac
    done <<<"$names"
    files=$(mktemp -d)
    dpkg-deb -x "$package" "$files"
    libraries=''
    if [ -d "$files/usr/bin" ]; then
        libraries=$(find "$files/usr/bin" -type f -exec arm-linux-gnueabihf-readelf -d {} + |
            sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    fi
    rm -r "$files"
    [ -n "$libraries" ] || [[ $package = *-dev_* ]] || die "no program of $package names a library that it needs"
    for library in $libraries; do
        owners=$(grep -l -- "/$library\$" "$dpkg/info/"*.list | sed 's,.*/,,; s,\.list$,,') ||
            die "$package needs $library, which is not in $device_root"
        grep -Fqx -- "$owners" <<<"$names" || die "$package needs $library and does not depend on $owners, which has it"
    done
}

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
    require_device_root "$preset"
    environment=(DEB_HOST_ARCH=armhf "DPKG_ADMINDIR=$device_root/var/lib/dpkg")
    ;;
esac
build "$preset"

directory=$ROOT/build/$preset
packages=$directory/packages
rm -rf "$packages"
with_progress "making the packages" env -C "$directory" "${environment[@]}" cpack || die "cpack could not make the packages"

if [ "$preset" = device-package ]; then
    for package in "$packages"/*.deb; do
        check_dependencies "$package"
    done
fi
for page in qwixtd.8 qwixt-devicesim.1; do
    mandoc -T lint "$directory/packaging/$page" || die "mandoc has something to say of $page"
done
lintian --allow-root --fail-on error,warning --tag-display-limit 0 "$packages"/*.deb || die "lintian refuses the packages"
printf '%s\n' "$packages"/*.deb
