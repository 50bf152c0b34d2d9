#!/bin/bash
# run-daemon.sh BUNDLE STATUS PROGRAM [OPTION...]: becomes the sandbox of PROGRAM, for which alone the certificates of
# BUNDLE lie over the system's; the options are bubblewrap's. The file STATUS says what the sandbox knows of the program:
# its process id stands behind "child-pid". The program ends with the process that started this script. The words of the
# environment variable QWIXTD_RUN_UNDER stand before the program, as valgrind or strace and their options do.
bundle=$1 program=$3
exec {status}>"$2"
shift 3
read -ra under <<<"${QWIXTD_RUN_UNDER-}"
exec setpriv --pdeathsig KILL bwrap --dev-bind / / --die-with-parent --json-status-fd "$status" "$@" \
    --bind "$bundle" /etc/ssl/certs/ca-certificates.crt "${under[@]}" "$program"
