#!/bin/sh
# swap.sh PID INSTALLED NEWAPP: waits for the program to end, puts the new application in the place of the installed one
# and starts it. Whatever fails, and whichever of its processes is killed, a whole application stays in its place.
PID=$1
INSTALLED=$2
NEWAPP=$3
OLD="$INSTALLED.old-$$"
NEXT="$INSTALLED.new-$$"

tidy() {
    rm -rf "$NEXT"
    folder=$(dirname "$NEWAPP")
    case $folder in
    */kxupdate-*) rm -rf "$folder" ;;
    esac
}
trap tidy EXIT

start() {
    sleep 0.3
    if [ "$(uname)" = Darwin ]; then
        /usr/bin/open "$INSTALLED"
    else
        "$INSTALLED/bin/parcelory" >/dev/null 2>&1 </dev/null &
    fi
}

# The clerk has asked for a restart: without the new application, the old one comes back.
fail() {
    trap - HUP INT TERM
    start
    exit 1
}

while kill -0 "$PID" 2>/dev/null; do
    sleep 0.3
done
[ -d "$NEWAPP" ] || fail
# It may have waited for days, and something may have tidied up meanwhile.
[ -x "$NEWAPP/bin/parcelory" ] || [ -x "$NEWAPP/Contents/MacOS/Parcelory" ] || fail

# From another file system this is a copy, which can fail half-way; the two moves below are then mere renames.
mv "$NEWAPP" "$NEXT" || fail

# In a process of its own, because between the two there is no application in place: whichever of the two processes is
# killed, the other one completes the swap or takes it back.
trap '' HUP INT TERM
(mv "$INSTALLED" "$OLD" && mv "$NEXT" "$INSTALLED") &
if ! wait "$!"; then
    if [ -d "$OLD" ]; then
        rm -rf "$INSTALLED"
        mv "$OLD" "$INSTALLED"
    fi
    fail
fi
trap - HUP INT TERM # the new application would inherit the deafness
rm -rf "$OLD"

if [ -x /usr/bin/xattr ]; then
    /usr/bin/xattr -dr com.apple.quarantine "$INSTALLED" 2>/dev/null || :
fi
start
