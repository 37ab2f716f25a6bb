#!/bin/sh
# update-real-program.sh PROGRAM NEXT HOST: an installed copy of PROGRAM finds the newer build NEXT in the feed of HOST,
# which is this machine here, downloads it when Return is pressed, and restarts as NEXT. Needs a display
# (tests/support/with-display.sh). Exit status 77 when a tool is missing.
set -eu
program=$1 next=$2 host=$3
for tool in xdotool curl openssl zip unzip; do
    command -v "$tool" >/dev/null || exit 77
done
here=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
server='' installed=$work/Applications/Parcelory.app

running() { # prints the process of the installed program
    for process in /proc/[0-9]*; do
        [ "$(readlink "$process/exe" 2>/dev/null)" != "$installed/bin/parcelory" ] || echo "${process#/proc/}"
    done
}
tidy() {
    for process in $server $(running); do
        kill "$process" 2>/dev/null || :
    done
    rm -rf "$work"
}
trap tidy EXIT

fail() {
    echo "$1" >&2
    cat "$work/said" >&2
    exit 1
}
until_true() { # WHAT COMMAND…: the command is tried for half a minute
    what=$1
    shift
    tries=0
    until "$@"; do
        tries=$((tries + 1))
        [ "$tries" -le 120 ] || fail "waited in vain for $what"
        sleep 0.25
    done
}

# What is published, and who serves it under the host's name.
mkdir -p "$work/site" "$work/tmp" "$installed/bin"
echo 'Everything is newer.' | "$here/tools/make-update" "$next" 99.0 "https://$host/app" "$work/site/app"
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1 -subj "/CN=$host" \
    -addext "subjectAltName=DNS:$host" -keyout "$work/key.pem" -out "$work/certificate.pem" 2>/dev/null
(cd "$work/site" && exec openssl s_server -WWW -accept 127.0.0.1:0 -key "$work/key.pem" -cert "$work/certificate.pem") \
    >"$work/server" 2>&1 </dev/null &
server=$!
: >"$work/said"
until_true 'the web server' grep -q '^ACCEPT ' "$work/server"
port=$(sed -n 's/^ACCEPT .*://p' "$work/server")
printf 'connect-to = "%s:443:127.0.0.1:%s"\ncacert = "%s"\n' "$host" "$port" "$work/certificate.pem" >"$work/.curlrc"

# The installed version, in a home of its own.
cp "$program" "$installed/bin/parcelory"
export HOME="$work" TMPDIR="$work/tmp" XDG_DATA_HOME="$work/data" XDG_CONFIG_HOME="$work/config" \
    DBUS_SESSION_BUS_ADDRESS=disabled:
"$installed/bin/parcelory" >"$work/said" 2>&1 </dev/null &
old=$!

press_return() { # Download, and when it is there Update & Restart
    if xdotool search --onlyvisible --name '^Update Available$' >/dev/null 2>&1; then
        xdotool key Return
    fi
    ! kill -0 "$old" 2>/dev/null
}
is_new() { "$installed/bin/parcelory" --version 2>/dev/null | grep -q ' 99.0$' && [ -n "$(running)" ]; }
has_window() { xdotool search --onlyvisible --name '^Parcelory' >/dev/null 2>&1; }
has_ended() { [ -z "$(running)" ]; }

until_true 'the end of the old version' press_return
until_true 'the new version' is_new
until_true 'its window' has_window
[ "$(ls "$work/Applications") $(find "$work/tmp" -name 'kx*')" = 'Parcelory.app ' ] || fail 'something was left behind'
until_true 'its end' sh -c 'xdotool key ctrl+q; sleep 0.25; ! kill -0 '"$(running)"' 2>/dev/null'
until_true 'its end' has_ended
