#!/bin/sh
# swap.sh PID INSTALLED NEWAPP: waits for the program to end, replaces the installed application with the new
# application and starts it. If a step fails or either process is killed, a complete application stays installed.
PID=$1
INSTALLED=$2
NEWAPP=$3
OLD="$INSTALLED.old-$$"
NEXT="$INSTALLED.new-$$"

APP=$INSTALLED # the application to start

tidy() {
    [ "$APP" = "$NEXT" ] || rm -rf "$NEXT"
    folder=$(dirname "$NEWAPP")
    case $folder in
    */kxupdate-*) [ "$APP" = "$NEWAPP" ] || rm -rf "$folder" ;;
    esac
}
trap tidy EXIT

start() {
    sleep 0.3
    if [ "$(uname)" = Darwin ]; then
        open "$APP"
    else
        "$APP/bin/parcelory" >/dev/null 2>&1 </dev/null &
    fi
}

holds_program() {
    [ -x "$1/bin/parcelory" ] || [ -x "$1/Contents/MacOS/Parcelory" ]
}

# The clerk asked for a restart: if the swap fails, start the old application again. If someone has moved it meanwhile,
# keep the new application where it is and start it there.
fail() {
    trap - HUP INT TERM
    if ! holds_program "$INSTALLED"; then
        if holds_program "$NEWAPP"; then APP=$NEWAPP; else APP=$NEXT; fi
        rm -f "$(dirname "$NEWAPP")/lock" # without it, no program deletes the folder as a leftover
    fi
    start
    exit 1
}

while kill -0 "$PID" 2>/dev/null; do
    sleep 0.3
done
[ -d "$NEWAPP" ] || fail
# The update may have waited for days; a cleanup of temporary files may have removed parts of it.
holds_program "$NEWAPP" || fail

# From another file system this is a copy, which can fail halfway; the two moves below are then plain renames.
mv "$NEWAPP" "$NEXT" || fail

# If someone has moved the installed application meanwhile, the new application takes its former place.
# Between the two moves no application is installed. A second process does them: if either process is killed, the other
# process completes the swap or reverts it.
trap '' HUP INT TERM
({ [ ! -e "$INSTALLED" ] || mv "$INSTALLED" "$OLD"; } && mv "$NEXT" "$INSTALLED") &
if ! wait "$!"; then
    if [ -d "$OLD" ]; then
        rm -rf "$INSTALLED"
        mv "$OLD" "$INSTALLED"
    fi
    fail
fi
trap - HUP INT TERM # otherwise the new application would ignore these signals, too
rm -rf "$OLD"

if [ -x /usr/bin/xattr ]; then
    /usr/bin/xattr -dr com.apple.quarantine "$INSTALLED" 2>/dev/null || :
fi
start
