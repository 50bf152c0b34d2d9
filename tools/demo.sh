#!/bin/bash
# demo.sh: shows the daemon's whole job on a simulated device, step by step, and checks every step.
# demo.sh --interactive: the same device with the daemon running, driven by what you type.
# demo.sh --web [PORT]: the same once more, in a browser too; the port is any that is free unless given.
# Everything lives in a temporary directory and ends with the script.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

interactive=no web_port=0
case "${1-}" in
'') ;;
--interactive) interactive=yes ;;
--web) interactive=web web_port=${2-0} ;;
*) die "usage: demo.sh [--interactive | --web [PORT]]" ;;
esac
[[ $web_port =~ ^[0-9]{1,5}$ ]] || die "not a port: $web_port"

install_packages "${PACKAGES[@]}"
require_sandbox
build release qwixtd qwixt-devicesim
bin=$ROOT/build/release/bin

# --- What is started, and how it ends ---------------------------------------------------------------------------

work=''
bus_pid='' simulator_pid='' sandbox_pid='' daemon_pid='' tail_pid=''

# Ends a process of ours that may be gone already, and waits for it.
end_process() {
    local pid=$1 turn
    [ -n "$pid" ] || return 0
    kill -TERM "$pid" 2>/dev/null || return 0
    for ((turn = 0; turn < 60; ++turn)); do
        kill -0 "$pid" 2>/dev/null || return 0
        sleep 0.05
    done
    kill -KILL "$pid" 2>/dev/null || true
}

clean_up() {
    trap '' HUP INT TERM
    stop_daemon
    for pid in "$tail_pid" "$simulator_pid" "$bus_pid"; do
        end_process "$pid"
    done
    # Collects them, so that none is left for anybody to see.
    wait 2>/dev/null || true
    if [ -n "$work" ]; then
        rm -rf "$work"
    fi
}

# The daemon is the child of its sandbox, which ends with it.
stop_daemon() {
    end_process "$daemon_pid"
    end_process "$sandbox_pid"
    if [ -n "$sandbox_pid" ]; then
        wait "$sandbox_pid" 2>/dev/null || true
    fi
    daemon_pid='' sandbox_pid=''
}

trap clean_up EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# fail WHAT: ends the demo with what was awaited and what was seen instead.
fail() {
    {
        say "demo: failed: $1"
        say "--- the last lines of the trace ---"
        tail -n 20 "$work/trace" 2>/dev/null || true
        if [ -f "$work/daemon.log" ]; then
            say "--- the last lines of the daemon's log ---"
            tail -n 20 "$work/daemon.log"
        fi
        if [ -s "$work/simulator.log" ]; then
            say "--- the simulator's errors ---"
            tail -n 5 "$work/simulator.log"
        fi
    } >&2
    exit 1
}

# wait_until SECONDS COMMAND...: runs the command again and again until it succeeds.
wait_until() {
    local deadline=$((${EPOCHREALTIME/[.,]/} + $1 * 1000000))
    shift
    until "$@"; do
        if [ "${EPOCHREALTIME/[.,]/}" -ge "$deadline" ]; then
            return 1
        fi
        sleep 0.05
    done
}

start_bus() {
    setpriv --pdeathsig KILL dbus-daemon --nofork --nosyslog --config-file="$ROOT/tools/private-bus.conf" \
        --address="unix:path=$work/bus" >"$work/bus.log" 2>&1 3>&- &
    bus_pid=$!
    export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/bus
    wait_until 10 test -S "$work/bus" || fail "the private bus did not start: $(cat "$work/bus.log")"
}

start_simulator() {
    mkfifo "$work/commands"
    exec 3<>"$work/commands"
    setpriv --pdeathsig KILL "$bin/qwixt-devicesim" --certificate "$work/certificates/server.pem" \
        --key "$work/certificates/server.key" <"$work/commands" >"$work/trace" 2>"$work/simulator.log" 3>&- &
    simulator_pid=$!
    wait_until 10 grep -q '^ready: ' "$work/trace" || fail "the simulator did not start"
    server=$(sed -n 's|^ready: https://||p' "$work/trace")
}

# A certificate bundle with the throw-away authority lies over the system's, for the daemon alone.
start_daemon() {
    : >"$work/sandbox"
    env -u JOURNAL_STREAM QWIXTD_SERVER_HOST="$server" "$ROOT/tools/run-daemon.sh" \
        "$work/certificates/bundle.pem" "$work/sandbox" "$bin/qwixtd" >>"$work/daemon.log" 2>&1 3>&- </dev/null &
    sandbox_pid=$!
    wait_until 10 grep -q child-pid "$work/sandbox" || fail "the daemon did not start"
    daemon_pid=$(sed -n 's/.*"child-pid": *\([0-9]*\).*/\1/p' "$work/sandbox" | head -n 1)
}

work=$(mktemp -d "${TMPDIR:-/tmp}/qwixt-demo.XXXXXX")
: >"$work/daemon.log"
: >"$work/trace"
"$ROOT/tools/make-certificates.sh" "$work/certificates" || die "cannot make certificates"
start_bus

# --- A person at the prompt -------------------------------------------------------------------------------------

# On a terminal the simulator is the prompt: it shows the daemon's lines, too, and none tears what is being typed.
prompt_on_terminal() {
    server=127.0.0.1:$((20000 + RANDOM % 10000))
    rm "$work/daemon.log"
    mkfifo "$work/daemon.log"
    # Kept open, so that the daemon need not wait for a reader.
    exec 5<>"$work/daemon.log"
    say "A simulated device, its developer server at https://$server, and the daemon. All that passes is shown."
    say "Try: help, or in this order: set-remote-id device-1, set-key any-key, create-widget clock,"
    say "register clock \"My clock\" face, list, internet off, delete-widget clock, internet on. End with quit."
    start_daemon
    setpriv --pdeathsig KILL "$bin/qwixt-devicesim" --certificate "$work/certificates/server.pem" \
        --key "$work/certificates/server.key" --port "${server#*:}" --show "$work/daemon.log" 5>&-
}

# Elsewhere commands come line by line from standard input, and the trace is what a file has of it.
obey_standard_input() {
    start_simulator
    setpriv --pdeathsig KILL tail -q -n +2 -s 0.1 -f "$work/trace" "$work/daemon.log" 2>/dev/null 3>&- &
    tail_pid=$!
    start_daemon
    sleep 0.5
    while kill -0 "$simulator_pid" 2>/dev/null && IFS= read -r line; do
        printf '%s\n' "$line" >&3
        # Long enough for the answer to stand above the next.
        sleep 0.4
    done
}

# The simulator runs the daemon, so that the page can start and stop it. Without a terminal nothing is read, and a signal
# or the page's own quit ends it.
show_in_browser() {
    local reading=()
    [ -t 0 ] && [ -t 1 ] || reading=(--keep-running)
    cat >"$work/qwixtd" <<END
#!/bin/sh
exec '$ROOT/tools/run-daemon.sh' '$work/certificates/bundle.pem' '$work/sandbox' '$bin/qwixtd'
END
    chmod +x "$work/qwixtd"
    say "A simulated device, its developer server and the daemon. Open the page that is named below; or type help here."
    setpriv --pdeathsig KILL "$bin/qwixt-devicesim" --certificate "$work/certificates/server.pem" \
        --key "$work/certificates/server.key" --web "$web_port" --qwixtd "$work/qwixtd" "${reading[@]}"
}

if [ "$interactive" = web ]; then
    show_in_browser
    exit 0
fi
if [ "$interactive" = yes ]; then
    if [ -t 0 ] && [ -t 1 ]; then
        prompt_on_terminal
    else
        obey_standard_input
    fi
    exit 0
fi

start_simulator

# --- The story --------------------------------------------------------------------------------------------------

key=demo-$RANDOM$RANDOM-key
step=0
mark=1

# From here on seen() and not_seen() look at new trace lines only.
begin() {
    mark=$(($(wc -l <"$work/trace") + 1))
}

new_lines() {
    tail -n "+$mark" "$work/trace"
}

has_line() {
    grep -Eq -- "$1" < <(new_lines)
}

order() {
    printf '%s\n' "$*" >&3
}

# seen SECONDS PATTERN: waits for a line of the trace and puts it into $line.
seen() {
    wait_until "$1" has_line "$2" || fail "step $((step + 1)): nothing like '$2' within $1 s"
    line=$(grep -E -m 1 -- "$2" < <(new_lines))
}

# not_seen SECONDS PATTERN: watches that long for a line that must not come.
not_seen() {
    if wait_until "$1" has_line "$2"; then
        fail "step $((step + 1)): not expected: $(grep -E -m 1 -- "$2" < <(new_lines))"
    fi
}

# Of a trace line, what follows the time and the kind.
text() {
    cut -c 21- <<<"$1"
}

# Milliseconds of the day in a trace line.
time_of() {
    local h m s ms
    IFS=':.' read -r h m s ms <<<"${1%% *}"
    printf '%d' $((((10#$h * 60 + 10#$m) * 60 + 10#$s) * 1000 + 10#$ms))
}

told() {
    step=$((step + 1))
    printf '%2d. %s\n' "$step" "$*"
}

request='^[0-9:.]+ http +'

begin
start_daemon
seen 10 'com\.qwixtd is on the bus'
seen 10 'vorlet\.daemon apiKey\(\) -> \(""\)'
seen 10 'vorlet\.daemon remoteId\(\)'
not_seen 1 "$request"
told "The device boots without an API key: the daemon reads an empty key and waits; no request in 1 s."

begin
order set-remote-id device-7
order set-key "$key"
seen 10 "${request}GET /api/v1/qwixt/apps -> 200"
fetched=$(text "$line")
seen 10 'com\.vorlet\.qwixtd\.daemonDidStarted\(\)'
told "Set-up finishes: $fetched; then the signal daemonDidStarted."

begin
order create-widget clock
order register clock '"Wall clock"' face
seen 10 "${request}POST .*id=device-7&identifier=clock&name=Wall clock&type=face -> 200"
seen 10 'qwixtd\.applicationRegistered\("clock", "app-[0-9]+", "face"\)'
clock=$(grep -o -m 1 'app-[0-9]*' <<<"$line")
told "A widget registers: $(text "$line")."

begin
order update "$clock" clock '"Kitchen clock"' face
seen 10 "${request}PUT .*app_id=$clock&name=Kitchen clock&type=face -> 200"
told "The widget changes its name: $(text "$line")."

begin
order update "$clock" clock '"Kitchen clock"' face
seen 10 'updateQwixtApplication.* -> answered'
not_seen 1 "$request"
told "The same update again: answered on the bus, and no request in 1 s."

begin
order fail 1 503
order create-widget rain
order register rain '"Rain radar"' map
seen 10 "${request}POST .*identifier=rain&.* -> 503"
failed=$line
seen 10 "${request}POST .*identifier=rain&.* -> 200"
waited=$(($(time_of "$line") - $(time_of "$failed")))
if [ "$waited" -lt 0 ]; then
    waited=$((waited + 86400000))
fi
if [ "$waited" -lt 4700 ] || [ "$waited" -gt 8000 ]; then
    fail "step $((step + 1)): the retry came after $waited ms"
fi
seen 10 'qwixtd\.applicationRegistered\("rain", '
rain=$(grep -o -m 1 'app-[0-9]*' <<<"$line")
told "The server fails once with 503: the register is sent again after $waited ms, and then $(text "$line")."

begin
order internet off
seen 10 'says internetAvailabilityChanged\(false\)'
order create-widget notes
order register notes '"Notes"' list
seen 10 'registerQwixtApplication.* -> answered'
not_seen 1 "$request"
order internet on
seen 10 "${request}POST .*identifier=notes&.* -> 200"
seen 10 'qwixtd\.applicationRegistered\("notes", '
told "The internet goes: a register waits, no request in 1 s. It comes back: $(text "$line")."

begin
order delete-widget clock
seen 10 "${request}DELETE .*app_id=$clock&type= -> 200"
seen 10 "qwixtd\.applicationDeleted\(\"clock\", \"$clock\", \"\"\)"
told "A widget is deleted, and its application with it: $(text "$line")."

begin
stop_daemon
seen 10 'com\.qwixtd is gone from the bus'
order delete-widget rain
seen 10 'says widgetDeleted\(".*", "rain"\)'
start_daemon
seen 10 "${request}GET /api/v1/qwixt/apps -> 200"
seen 10 "${request}DELETE .*app_id=$rain&type=map -> 200"
seen 10 "qwixtd\.applicationDeleted\(\"rain\", \"$rain\", \"map\"\)"
told "A widget goes while the daemon is off; at the next start its application is cleaned up: $(text "$line")."

begin
order list
seen 10 'the server holds 1 application\(s\)'
seen 10 'device "device-7" identifier "notes" name "Notes" type "list"'
encoded=$(printf ':%s' "$key" | base64)
if grep -F -q -e "$key" -e "$encoded" "$work/trace" "$work/daemon.log"; then
    fail "step $((step + 1)): the API key stands in an output"
fi
told "The server is left with the one application of the one widget; the API key was in no output."

say "demo: ok"
