# shellcheck shell=bash
# Machines that have nothing but a release of Debian, for the scripts that source this after lib.sh. Needs root. A machine
# is a directory that goes with the script, and all its processes end with it.

machine=''
running=''
control_group=''

# require_release NAME: ends the script unless the name is that of a release that is supported.
require_release() {
    case $1 in
    bookworm | trixie) ;;
    *) die "usage: $(basename "$0") bookworm|trixie [CACHE]" ;;
    esac
}

# Ends whatever runs on the machine, which ends with its first process, and waits for that.
stop_machine() {
    [ -n "$running" ] || return 0
    local first
    first=$(cat "/proc/$running/task/$running/children" 2>/dev/null) || true
    # The shell would report what it kills.
    { kill -KILL "${first:-$running}" && wait "$running"; } 2>/dev/null || true
    running=''
}

clean_up_machine() {
    trap '' HUP INT TERM
    stop_machine
    [ -z "$control_group" ] || remove_control_group
    [ -z "$machine" ] || rm -rf --one-file-system "$machine"
}

# fetch_release RELEASE ARCHIVE OPTION...: fetches a release of Debian into a tar file, from the mirror that this machine's
# package configuration names and with further options of mmdebstrap. Fails when it cannot be had.
fetch_release() {
    local release=$1 archive=$2 mirror
    shift 2
    install_packages mmdebstrap debian-archive-keyring
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' | head -n 1)
    [ -n "$mirror" ] || die "this machine's package configuration names no mirror of Debian"
    mkdir -p "$(dirname "$archive")"
    with_progress "fetching $release" mmdebstrap --format=tar "$@" "$release" "$archive.part" "$mirror" || return
    mv "$archive.part" "$archive"
}

# make_machine RELEASE [CACHE]: sets machine, the root directory of a new one. The release is kept in the directory CACHE.
make_machine() {
    local release=$1 cache=${2-${TMPDIR:-/tmp}/qwixtd-fresh-machine} archive
    [ "$(id -u)" -eq 0 ] || die "this needs root: it makes the root directory of another machine"
    # One pristine archive for each release.
    archive=$cache/$release.tar
    if [ ! -s "$archive" ]; then
        fetch_release "$release" "$archive" --variant=minbase || die "mmdebstrap could not fetch $release"
    fi

    trap clean_up_machine EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
    machine=$(mktemp -d "${TMPDIR:-/tmp}/qwixtd-machine.XXXXXX")
    # Its users look into their own root directory.
    chmod 755 "$machine"
    tar -xf "$archive" -C "$machine" --exclude='./dev/*'
    cp -L /etc/resolv.conf "$machine/etc/resolv.conf"
}

# on_machine COMMAND...: runs the command there as root, as if the machine had been started: with its own root of all
# mounts, which sandboxes inside it need, and processes that end with it. Fails as the command does.
on_machine() {
    # shellcheck disable=SC2016
    setpriv --pdeathsig KILL unshare --mount --pid --fork --kill-child --propagation private bash -c '
        set -e
        machine=$1
        shift
        mount --rbind "$machine" "$machine"
        mount --rbind /dev "$machine/dev"
        mount -t proc proc "$machine/proc"
        mount -t sysfs sysfs "$machine/sys"
        cd "$machine"
        mkdir -p .outside
        pivot_root . .outside
        cd /
        umount -l /.outside
        exec env -i TERM=dumb PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"
    ' bash "$machine" "$@" <&0 &
    running=$!
    local status=0
    wait "$running" || status=$?
    running=''
    return "$status"
}

# with_control_groups COMMANDS [ARGUMENT...]: runs a shell's commands where the control groups are mounted at its $1.
with_control_groups() {
    local commands=$1
    shift
    # shellcheck disable=SC2016
    unshare --mount --propagation private bash -c '
        set -e
        groups=$(mktemp -d)
        mount -t cgroup2 cgroup2 "$groups"
        '"$commands"'
        umount -l "$groups"
        rmdir "$groups"
    ' bash "$@"
}

remove_control_group() {
    # shellcheck disable=SC2016
    with_control_groups 'find "$groups/$1" -depth -type d -exec rmdir {} +' "$control_group" || true
}

# boot_machine: starts the machine's service manager, with a loopback interface of its own as the only network, and waits
# until what starts with the machine has started. The machine needs the packages systemd and dbus.
boot_machine() {
    control_group=$(basename "$machine")
    # shellcheck disable=SC2016
    with_control_groups 'mkdir "$groups/$1"' "$control_group" || die "no control group can be made here"
    # The manager sees no device of this machine, and cannot change its kernel's settings.
    # shellcheck disable=SC2016
    setpriv --pdeathsig KILL unshare --mount --net --uts --ipc --pid --fork --kill-child --propagation private bash -c '
        set -e
        machine=$1
        mount --rbind "$machine" "$machine"
        mount -t tmpfs -o mode=755 tmpfs "$machine/dev"
        for device in full null random tty urandom zero; do
            touch "$machine/dev/$device"
            mount --bind "/dev/$device" "$machine/dev/$device"
        done
        ln -s /proc/self/fd "$machine/dev/fd"
        mkdir "$machine/dev/pts" "$machine/dev/shm"
        ln -s pts/ptmx "$machine/dev/ptmx"
        mount -t devpts -o newinstance,ptmxmode=0666,mode=620 devpts "$machine/dev/pts"
        mount -t tmpfs tmpfs "$machine/dev/shm"
        mount -t tmpfs -o mode=755 tmpfs "$machine/run"
        mount -t proc proc "$machine/proc"
        mount --bind "$machine/proc/sys" "$machine/proc/sys"
        mount -o remount,bind,ro "$machine/proc/sys"
        mount -t sysfs -o ro sysfs "$machine/sys"
        mount -t cgroup2 cgroup2 "$machine/sys/fs/cgroup"
        echo $$ >"$machine/sys/fs/cgroup/$2/cgroup.procs"
        exec unshare --cgroup bash -c '\''
            set -e
            umount "$1/sys/fs/cgroup"
            mount -t cgroup2 cgroup2 "$1/sys/fs/cgroup"
            cd "$1"
            mkdir -p .outside
            pivot_root . .outside
            cd /
            umount -l /.outside
            rmdir /.outside
            exec env -i container=machine /usr/lib/systemd/systemd
        '\'' bash "$machine"
    ' bash "$machine" "$control_group" </dev/null >/dev/null 2>&1 &
    running=$!
    local deadline=$((SECONDS + 60)) state=''
    until [ "$state" = running ] || [ "$state" = degraded ]; do
        [ "$SECONDS" -lt "$deadline" ] || die "the machine's service manager did not start (${state:-no answer})"
        sleep 0.2
        state=$(on_booted_machine systemctl is-system-running 2>/dev/null) || true
    done
}

# on_booted_machine COMMAND...: runs the command beside what the service manager runs.
on_booted_machine() {
    local first
    first=$(cat "/proc/$running/task/$running/children") || return 1
    # Waited for, so that a signal for the script is not kept waiting.
    setpriv --pdeathsig KILL nsenter --target "${first% }" --mount --net --uts --ipc --pid --cgroup \
        env -i TERM=dumb PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@" <&0 &
    wait "$!"
}
