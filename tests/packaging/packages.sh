#!/bin/bash
# packages.sh: checks the packages that lie beside it, as root on a machine that is there for nothing else. Its service
# manager runs, and all that the packages depend on is installed. tools/package-test.sh makes such a machine.
set -euo pipefail
cd "$(dirname "$0")"

export DEBIAN_FRONTEND=noninteractive
export DBUS_SYSTEM_BUS_ADDRESS=unix:path=/run/dbus/system_bus_socket
port=9443
key=packages-$RANDOM$RANDOM-key
work=/run/packages
trace=$work/trace
device=''

given() {
    printf '%s\n' "$*"
}

fail() {
    {
        printf 'failed: %s\n--- the last lines of the trace ---\n' "$*"
        tail -n 15 "$trace" 2>/dev/null || true
        printf -- '--- the last lines of the journal ---\n'
        journalctl --no-pager -n 30 -o short-monotonic || true
    } >&2
    exit 1
}

# wait_until WHAT COMMAND...: runs the command again and again until it succeeds, for 30 s at most.
wait_until() {
    local what=$1 deadline=$((SECONDS + 30))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$deadline" ] || fail "$what"
        sleep 0.1
    done
}

# equal WHAT EXPECTED ACTUAL
equal() {
    [ "$2" = "$3" ] || fail "$1: expected \"$2\", got \"$3\""
}

# Every file and directory but those of the package manager and the logs, and every account.
state() {
    find / -xdev \( -path /var/lib/dpkg -o -path /var/lib/apt -o -path /var/cache -o -path /var/log -o -path /tmp \
        -o -path /etc/passwd- -o -path /etc/group- -o -path /etc/shadow- -o -path /etc/gshadow- \) -prune \
        -o -printf '%p %M %u:%g %l\n' | sort
    cat /etc/passwd /etc/group
}

property() {
    systemctl show --value -p "$1" qwixtd.service
}

# process FIELD: a field of /proc/PID/status of the daemon.
process() {
    sed -n "s/^$1:\t\([^\t]*\).*/\1/p" "/proc/$(property MainPID)/status"
}

traced() {
    grep -Eq -- "$1" "$trace"
}

# start_device PORT CERTIFICATES: the device's services and a developer server. The daemon finds them when it starts.
start_device() {
    rm -f "$work/commands"
    mkfifo "$work/commands"
    exec 3<>"$work/commands"
    : >"$trace"
    qwixt-devicesim --port "$1" --certificate "$2/server.pem" --key "$2/server.key" --api-key "$key" --remote-id d9 \
        --widget clock <&3 >>"$trace" 2>&1 &
    device=$!
    wait_until "the simulator does not start" traced '^ready: '
    systemctl restart qwixtd
}

stop_device() {
    echo quit >&3
    wait "$device" || fail "the simulator ended with status $?"
    exec 3>&-
}

# registers TYPE: a widget asks, and hears that it is registered.
registers() {
    wait_until "the daemon has no list" traced 'com\.vorlet\.qwixtd\.daemonDidStarted\(\)'
    echo "register clock \"Wall clock\" $1" >&3
    wait_until "no registration is announced" traced "applicationRegistered\(\"clock\", \"app-[0-9]+\", \"$1\"\)"
}

# Hundredths of a second of processor time that the daemon has used.
processor_time() {
    awk '{ print $14 + $15 }' "/proc/$(property MainPID)/stat"
}

# show_cost WITH: prints what a request costs, and what memory the daemon holds when nothing waits: what it alone has
# written, and its share of all that it uses. Ends the device.
show_cost() {
    local requests=50 before after number
    before=$(processor_time)
    for ((number = 0; number < requests; ++number)); do
        echo "register w$number \"Widget $number\" face" >&3
    done
    wait_until "not every widget is registered" traced "applicationRegistered\(\"w$((requests - 1))\""
    after=$(processor_time)
    stop_device
    awk -v with="$1" -v time=$(((after - before) * 10)) -v requests="$requests" '
        /^Pss:/ { proportional = $2 }
        /^Private_Dirty:/ { private = $2 }
        END {
            printf "   %s: %.1f ms of processor time a request; %d KB private, %d KB proportional memory\n",
                with, time / requests, private, proportional
        }' "/proc/$(property MainPID)/smaps_rollup"
}

mkdir "$work"
# What the device brings: its services may own their names.
cat >/etc/dbus-1/system.d/device.conf <<'END'
<busconfig>
  <policy user="root"><allow own="vorlet.daemon"/><allow own="widget.manager"/></policy>
</busconfig>
END
before=$(state)

given "The packages are installed on a running system."
apt-get install -q -y "$PWD"/*.deb >"$work/apt.log" 2>&1 || fail "$(cat "$work/apt.log")"
equal "the unit" "active enabled" "$(systemctl is-active qwixtd) $(systemctl is-enabled qwixtd)"
equal "starts that failed" 0 "$(property NRestarts)"
equal "the daemon's user" "$(id -u qwixtd)" "$(process Uid)"
equal "new privileges refused" 1 "$(process NoNewPrivs)"
equal "calls of the system filtered" 2 "$(process Seccomp)"
equal "capabilities" 0000000000000000 "$(process CapBnd)"
equal "the version" "$(dpkg-query -W -f '${Version}' qwixtd)" \
    "$(readelf -p .note.package /usr/bin/qwixtd | sed -n 's/.*"version":"\([^"]*\)".*/\1/p')"

printf '   /usr/bin/qwixtd: %d bytes\n' "$(stat -c %s /usr/bin/qwixtd)"

given "A widget registers, at a server that the system's authorities vouch for."
for authority in systems own; do
    sh /usr/share/doc/qwixt-devicesim/examples/make-certificates.sh "$work/$authority"
done
cat "$work/systems/authority.pem" >>/etc/ssl/certs/ca-certificates.crt
echo "QWIXTD_SERVER_HOST=localhost:$port" >>/etc/default/qwixtd
start_device "$port" "$work/systems"
registers face
show_cost "system's bundle"

given "With the short bundle, the daemon does not trust a server that the rest of the system trusts."
mkdir -p /etc/qwixtd /etc/systemd/system/qwixtd.service.d
cp "$work/own/authority.pem" /etc/qwixtd/authorities.pem
cp /usr/share/doc/qwixtd/examples/short-bundle.conf /etc/systemd/system/qwixtd.service.d
systemctl daemon-reload
openssl s_server -accept "$port" -cert "$work/systems/server.pem" -key "$work/systems/server.key" -www \
    </dev/null >"$work/server.log" 2>&1 &
server=$!
start_device $((port + 1)) "$work/systems"
wait_until "the daemon does not refuse the server" grep -q 'alert unknown ca' "$work/server.log"
openssl s_client -connect "127.0.0.1:$port" -verify_return_error </dev/null >"$work/client.log" 2>&1 ||
    fail "the rest of the system refuses the server, too: $(cat "$work/client.log")"
kill "$server"
stop_device

given "It does its job at a server that its own authority vouches for."
start_device "$port" "$work/own"
registers dial
show_cost "short bundle"

given "Without the file of the short bundle, the unit does not start."
rm /etc/qwixtd/authorities.pem
if systemctl restart qwixtd 2>/dev/null; then
    fail "the unit started"
fi
rm -r /etc/qwixtd /etc/systemd/system/qwixtd.service.d
systemctl daemon-reload
systemctl restart qwixtd

given "No journal holds the API key."
encoded=$(printf ':%s' "$key" | base64)
if grep -F -q -e "$key" -e "$encoded" < <(journalctl --no-pager -o cat); then
    fail "the API key is in the journal"
fi
grep -Fq 'Application registered' < <(journalctl --no-pager -o cat -u qwixtd) || fail "the journal has no lines of the daemon"

given "An upgrade starts the new program and keeps the environment."
first=$(property MainPID)
dpkg -i qwixtd_*.deb >"$work/dpkg.log" 2>&1 || fail "$(cat "$work/dpkg.log")"
equal "the unit" "active enabled" "$(systemctl is-active qwixtd) $(systemctl is-enabled qwixtd)"
[ "$(property MainPID)" != "$first" ] || fail "the old program still runs"
grep -Fqx "QWIXTD_SERVER_HOST=localhost:$port" /etc/default/qwixtd || fail "the environment is lost"

given "An upgrade leaves a unit disabled that was disabled."
systemctl disable --now qwixtd 2>/dev/null
dpkg -i qwixtd_*.deb >"$work/dpkg.log" 2>&1 || fail "$(cat "$work/dpkg.log")"
equal "the unit" "inactive disabled" "$(systemctl is-active qwixtd) $(systemctl is-enabled qwixtd)"
systemctl enable --now qwixtd 2>/dev/null

given "A program is built with the library."
cat >"$work/widget.cpp" <<'END'
#include <vorletproxies.h>
#include <QCoreApplication>
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    return Daemon::NetworkProxy(nullptr, QDBusConnection::systemBus()).isValid() ? 0 : 1;
}
END
read -r -a flags < <(pkg-config --cflags --libs VorletProxies)
g++ -std=c++17 "$work/widget.cpp" -o "$work/widget" "${flags[@]}" || fail "the program cannot be built"
if LC_ALL=C.UTF-8 "$work/widget"; then
    fail "the program sees a service of the device where there is none"
fi

given "Removal stops the daemon and keeps the environment; a purge leaves nothing."
pid=$(property MainPID)
apt-get remove -q -y qwixtd >"$work/apt.log" 2>&1 || fail "$(cat "$work/apt.log")"
[ ! -d "/proc/$pid" ] || fail "the daemon still runs"
[ -f /etc/default/qwixtd ] || fail "the environment is gone"
apt-get purge -q -y qwixtd qwixt-devicesim libvorletproxies-dev >"$work/apt.log" 2>&1 || fail "$(cat "$work/apt.log")"
diff <(echo "$before") <(state) >"$work/left" || fail "left behind: $(cat "$work/left")"
