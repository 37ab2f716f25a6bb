#!/bin/sh
# draw-screens.sh PROGRAM: draws every screen; the program fails at a state that it does not reach.
set -eu
pictures=$(mktemp -d)
trap 'rm -rf "$pictures"' EXIT
"$1" --practice --screenshots "$pictures"
test -s "$pictures/new-label-live.png"
