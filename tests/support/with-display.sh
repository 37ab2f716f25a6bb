#!/bin/sh
# with-display.sh COMMAND…: runs the command on a private virtual display with a window manager, which gives windows the
# focus. Exits with 77 if the display server or the window manager is not installed.
set -eu
command -v Xvfb >/dev/null && command -v openbox >/dev/null || exit 77
number=$(mktemp)
Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp 3>"$number" >/dev/null 2>&1 &
server=$!
manager=''
trap 'kill $manager "$server" 2>/dev/null || :; rm -f "$number"' EXIT
tries=0
while [ ! -s "$number" ]; do
    tries=$((tries + 1))
    [ "$tries" -le 600 ] || exit 77
    sleep 0.1
done
DISPLAY=:$(cat "$number")
export DISPLAY
openbox >/dev/null 2>&1 &
manager=$!
QT_QPA_PLATFORM=xcb "$@"
