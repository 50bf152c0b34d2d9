#!/bin/bash
# package.sh: installs what is missing, makes the Debian packages of the program, the proxy library and the simulator for
# the release of Debian that this machine runs, and checks them. They are left in build/package/packages.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ $# -eq 0 ] || die "usage: package.sh"
install_packages_of package dpkg-dev lintian mandoc
build package

directory=$ROOT/build/package
packages=$directory/packages
rm -rf "$packages"
with_progress "making the packages" env -C "$directory" cpack || die "cpack could not make the packages"

for page in qwixtd.8 qwixt-devicesim.1; do
    mandoc -T lint "$directory/packaging/$page" || die "mandoc has something to say of $page"
done
lintian --allow-root --fail-on error,warning --tag-display-limit 0 "$packages"/*.deb || die "lintian refuses the packages"
printf '%s\n' "$packages"/*.deb
