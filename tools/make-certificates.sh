#!/bin/sh
# make-certificates.sh DIR: a throw-away certificate authority and a server certificate for localhost and
# 127.0.0.1, for the simulator and the tests. Leaves in DIR:
#   authority.pem  the authority's certificate; its key is deleted once it has signed
#   server.pem     the server's certificate
#   server.key     the server's key
#   bundle.pem     the system's certificate bundle, if there is one, and the authority
# Does nothing when all four are there. Prints nothing unless it fails.
set -eu

if [ $# -ne 1 ]; then
    echo "usage: make-certificates.sh DIR" >&2
    exit 2
fi
dir=$1
system_bundle=/etc/ssl/certs/ca-certificates.crt
days=30

mkdir -p "$dir"
if [ -s "$dir/authority.pem" ] && [ -s "$dir/server.pem" ] && [ -s "$dir/server.key" ] && [ -s "$dir/bundle.pem" ]; then
    exit 0
fi
if ! command -v openssl >/dev/null 2>&1; then
    echo "make-certificates.sh: the openssl command is missing" >&2
    exit 1
fi

work=$(mktemp -d "$dir/.making.XXXXXX")
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

# Runs openssl and shows what it said only when it failed.
quietly() {
    if ! "$@" >"$work/said" 2>&1; then
        cat "$work/said" >&2
        exit 1
    fi
}

umask 077
quietly openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days $days \
    -subj "/CN=Throw-away authority of a simulated device" \
    -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign,cRLSign" \
    -keyout "$work/authority.key" -out "$work/authority.pem"
quietly openssl req -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes \
    -subj "/CN=localhost" -keyout "$work/server.key" -out "$work/server.csr"
cat >"$work/server.ext" <<END
basicConstraints=CA:FALSE
keyUsage=critical,digitalSignature
extendedKeyUsage=serverAuth
subjectAltName=DNS:localhost,IP:127.0.0.1
END
quietly openssl x509 -req -in "$work/server.csr" -CA "$work/authority.pem" -CAkey "$work/authority.key" \
    -CAcreateserial -days $days -extfile "$work/server.ext" -out "$work/server.pem"

if [ -r "$system_bundle" ]; then
    cat "$system_bundle" "$work/authority.pem" >"$work/bundle.pem"
else
    cp "$work/authority.pem" "$work/bundle.pem"
fi
# A daemon that runs as another user has to read the bundle; the key stays its maker's.
chmod 644 "$work/authority.pem" "$work/server.pem" "$work/bundle.pem"
for name in authority.pem server.pem server.key bundle.pem; do
    mv "$work/$name" "$dir/$name"
done
