#!/bin/sh
# Writes docs/proxies.md, the table of every member of every device service proxy, from the proxies' sources.
# With --check it writes nothing and fails when the file is stale. Either way it fails when the doc comment of a
# member does not name the D-Bus types that the member sends.
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
table=$root/docs/proxies.md

# Reads header and source of each class in turn.
# shellcheck disable=SC2016
program='
BEGIN {
    busTypes["bool"] = "b"; busTypes["int"] = "i"; busTypes["qlonglong"] = "x"; busTypes["double"] = "d"
    busTypes["QString"] = "s"; busTypes["QStringList"] = "as"; busTypes["QByteArray"] = "ay"
    busTypes["QVariantMap"] = "a{sv}"; busTypes["QVariantList"] = "av"
}

function fail(message) {
    print FILENAME ": " message > "/dev/stderr"
    failed = 1
}

function trim(text) {
    gsub(/^ +| +$/, "", text)
    return text
}

function quoted(text) {
    sub(/^[^"]*"/, "", text)
    sub(/".*/, "", text)
    return text
}

# What stands in the brackets that open right behind the first match of the pattern.
function bracketed(text, pattern,    i, depth, letter) {
    if (!match(text, pattern "\\("))
        return ""
    text = substr(text, RSTART + RLENGTH)
    depth = 1
    for (i = 1; i <= length(text); i++) {
        letter = substr(text, i, 1)
        depth += (letter == "(") - (letter == ")")
        if (depth == 0)
            return substr(text, 1, i - 1)
    }
    fail("an open bracket in: " text)
}

# The D-Bus types of what is sent: an expression that makes bytes, or a parameter under its own name.
function sentTypes(arguments, first, parameters,    count, i, parts, name, types, result) {
    count = split(parameters, parts, ",")
    for (i = 1; i <= count; i++) {
        gsub(/const |&/, "", parts[i])
        name = trim(parts[i])
        sub(/.* /, "", name)
        sub(/ [^ ]*$/, "", parts[i])
        types[name] = trim(parts[i])
    }
    count = split(arguments, parts, ",")
    for (i = first; i <= count; i++) {
        name = trim(parts[i])
        if (name ~ /^Argument::map\(/)
            name = bracketed(name, "Argument::map")
        if (name ~ /^(Json::write|serialized)\(|\.toUtf8\(\)$/)
            result = result "ay"
        else if (types[name] in busTypes)
            result = result busTypes[types[name]]
        else
            fail("no D-Bus type is known for " name)
    }
    return result
}

function shapeOf(result, body) {
    if (body ~ /asyncCall\(/)
        return "asynchronous call"
    if (body ~ /Reply::logged\(/)
        return body ~ /Reply::json/ ? "JSON getter, logging" : "logging getter"
    if (body ~ /Reply::json/)
        return "JSON getter"
    if (body ~ /Reply::value</)
        return "value getter"
    if (body ~ /Reply::/)
        return "structured getter"
    return body ~ /Json::write\(|serialized\(/ ? "JSON command" : "command"
}

function row(member, shape, types,    kind) {
    print "| `" class "` | `" service "` | `" path "` | `" interface "` | `" member "` | " shape " | " types " |"
    kind = shape ~ /command/ ? "command" : shape ~ /getter/ ? "getter" : shape
    if (!((class, kind, member) in counted)) {
        counted[class, kind, member] = 1
        totals[kind]++
    }
}

function definition(text,    body, head, signature, member, arguments, key) {
    head = substr(text, 1, index(text, "{") - 1)
    body = substr(text, index(text, "{"))
    if (body ~ /unsubscribe\(/ || body !~ /([cC]all|subscribe)\(/)
        return
    arguments = bracketed(body, body ~ /subscribe\(/ ? "subscribe" : body ~ /asyncCall\(/ ? "asyncCall" : "call")
    sub(/^(mode|\*this), /, "", arguments)
    member = arguments
    sub(/,.*/, "", member)
    if (member ~ /^Name::/)
        sub(/^Name::/, "", member)
    else
        member = quoted(member)
    if (body ~ /subscribe\(/) {
        if (!((class, "Signal " member) in documented))
            fail("the signal " member " is not documented")
        row(member, "signal subscription", code(documented[class, "Signal " member]))
        return
    }
    signature = sentTypes(arguments, 2, bracketed(head, "::[A-Za-z]+"))
    key = member "(" signature ")"
    if (!((class, key) in documented))
        fail("no doc comment says " key)
    row(member, shapeOf(head, body), code(signature) (documented[class, key] == "" ? "" : " → " code(documented[class, key])))
}

function code(types) {
    return types == "" ? "none" : "`" types "`"
}

# The two files of a class begin.
FNR == 1 && /#pragma once/ { class = ""; waiting = "" }
/^namespace [A-Za-z]+/ && FILENAME ~ /\.h$/ { space = $2 }
/^class [A-Za-z]+ : / { class = space "::" $2 }

# "/// name(types) -> types: text" and "/// Signal name(types): text"
FILENAME ~ /\.h$/ && class != "" && /^    \/\/\/ (Signal )?[A-Za-z]+\([^)]*\)( ->|:)/ {
    text = substr($0, 9)
    sub(/: .*/, "", text)
    if (text ~ /^Signal /) {
        key = text
        sub(/\(.*/, "", key)
        sub(/^[^(]*\(/, "", text)
        sub(/\).*/, "", text)
        documented[class, key] = text
    } else {
        key = text
        sub(/ -> .*/, "", key)
        if (text ~ / -> /)
            sub(/.* -> /, "", text)
        else
            text = ""
        if (!((class, key) in documented) || text != "")
            documented[class, key] = text
    }
}

FILENAME ~ /\.cpp$/ && /QLatin1String serviceName/ { service = quoted($0) }
FILENAME ~ /\.cpp$/ && /QLatin1String objectPath/ { path = quoted($0) }
FILENAME ~ /\.cpp$/ && /QLatin1String interfaceName/ { interface = quoted($0); classes++ }
# A definition stands on one line, or its body on lines of its own.
FILENAME ~ /\.cpp$/ && /^[A-Za-z].* [A-Za-z]+::[A-Za-z]+\(.*\)( const)?( \{.*\})?$/ {
    if (/\}$/)
        definition($0)
    else
        waiting = $0
    next
}
waiting != "" {
    waiting = waiting " " $0
    if (/^\}/) {
        definition(waiting)
        waiting = ""
    }
}

END {
    print ""
    print classes " classes; overloads counted once: " totals["command"] " commands, " totals["getter"] " getters, " totals["asynchronous call"] " asynchronous calls, " totals["signal subscription"] " signals."
    exit failed
}
'

generate() {
    cat <<'TEXT'
# The device service proxies

Made from the sources by `tools/proxy-table.sh`; a test fails when it is stale. The D-Bus types are those of the
arguments sent and, behind the arrow, of the answer read. A JSON getter reads, and a JSON command sends, JSON text in
a byte array (`ay`).

| Class | Service | Path | Interface | Member | Shape | D-Bus signature |
|---|---|---|---|---|---|---|
TEXT
    cd "$root/proxies"
    for source in */*proxy.cpp; do
        printf '%s\n%s\n' "${source%.cpp}.h" "$source"
    done | xargs awk "$program"
}

fresh=$(mktemp)
trap 'rm -f "$fresh"' EXIT
LC_ALL=C generate >"$fresh"
if [ "${1-}" = --check ]; then
    diff -u "$table" "$fresh" || {
        echo "docs/proxies.md is stale: run tools/proxy-table.sh" >&2
        exit 1
    }
else
    mkdir -p "$(dirname "$table")"
    cp "$fresh" "$table"
    chmod 644 "$table"
fi
