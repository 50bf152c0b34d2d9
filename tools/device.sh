# shellcheck shell=bash
# What the programs of a device with an ARMv7 processor are built against and run in, for the scripts that source this after
# lib.sh and machine.sh: the root directory of one, with Debian's libraries and headers for armhf. It is never run as a
# whole, and making it needs no root. Kept in build/armhf, or where QWIXTD_SYSROOT says.

device_root=${QWIXTD_SYSROOT:-$ROOT/build/armhf/root}
export QWIXTD_SYSROOT=$device_root

# Run by mmdebstrap for the root $1 while the packages lie in it: keeps what dpkg-shlibdeps asks of an installed library.
keep_package_data='
    data=$1/var/lib/dpkg
    mkdir -p "$data/info"
    echo armhf >"$data/arch"
    for package in "$1"/var/cache/apt/archives/*.deb; do
        control=$(mktemp -d)
        dpkg-deb -e "$package" "$control"
        name=$data/info/$(dpkg-deb -f "$package" Package)
        for kind in symbols shlibs; do
            if [ ! -f "$control/$kind" ]; then continue; fi
            cp "$control/$kind" "$name.$kind"
            dpkg-deb --fsys-tarfile "$package" | tar -t | sed -n "s/^\.//; /\.so/p" >"$name.list"
        done
        rm -r "$control"
        if [ -f "$name.list" ]; then
            echo "Status: install ok installed"
            dpkg-deb -f "$package" Package Architecture Multi-Arch Version Maintainer Description
            echo
        fi >>"$data/status"
    done
'

# fit_root ROOT PLACE: makes the links of a new root lead into it, wherever it stands: those that begin at / would lead to
# this machine's files. What dpkg knows of its files is for the place that it goes to.
fit_root() {
    local link
    while IFS= read -r link; do
        ln -sfnr "$1$(readlink "$link")" "$link"
    done < <(find "$1/lib" "$1/usr/lib" -type l -lname '/*')
    sed -i "s,^,$2," "$1"/var/lib/dpkg/info/*.list
}

# make_device_root: installs the compiler for armhf and the emulator, and makes the root of the release of Debian that this
# machine runs, as the generators of Qt have to be of the same version on both. Does nothing when it is there.
make_device_root() {
    local release compiler archive=$device_root.tar packages
    release=$(. /etc/os-release && printf '%s\n' "${VERSION_CODENAME-}")
    install_packages "${PACKAGES[@]}" "$@" crossbuild-essential-armhf qemu-user-static
    compiler=$(arm-linux-gnueabihf-g++ -dumpversion)
    packages=libc6-dev,libstdc++-${compiler%%.*}-dev,qt6-base-dev,qtbase5-dev,libdbus-1-dev,libcurl4-openssl-dev
    packages+=,libedit-dev,libseccomp-dev
    if [ "$(cat "$device_root/.packages" 2>/dev/null)" = "$release $packages" ]; then
        return
    fi
    if [ ! -f "$device_root/.packages" ] && [ -e "$device_root" ]; then
        die "$device_root was not made here: it is used as it is with cmake --preset device, and not by this script"
    fi
    # Nothing runs in the root, so that whoever builds can make it.
    fetch_release "$release" "$archive" --mode=chrootless --architectures=armhf --variant=extract \
        "--include=$packages" "--extract-hook=$keep_package_data" ||
        die "the packages of the device (Debian $release, armhf) could not be had. They are fetched once, over the network,\
 from the mirror that this machine's package configuration names; above is what mmdebstrap said of it."
    rm -rf --one-file-system "$device_root" "$device_root.part"
    mkdir -p "$device_root.part"
    tar -xf "$archive" -C "$device_root.part" --no-same-owner --exclude='./dev/*'
    rm "$archive"
    fit_root "$device_root.part" "$device_root"
    printf '%s\n' "$release $packages" >"$device_root.part/.packages"
    mv "$device_root.part" "$device_root"
}

# require_device_root PRESET...: ends the script when a build directory is configured for the root of another device, which
# CMake would only see where it configures anew.
require_device_root() {
    local preset root
    for preset in "$@"; do
        root=$(sed -n 's/^QWIXTD_SYSROOT:[A-Z]*=//p' "$ROOT/build/$preset/CMakeCache.txt" 2>/dev/null) || continue
        [ -z "$root" ] || [ "$root" -ef "$device_root" ] ||
            die "build/$preset is configured for the root of a device in $root, and not for $device_root: delete it first"
    done
}
