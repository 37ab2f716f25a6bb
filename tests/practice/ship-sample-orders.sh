#!/bin/sh
# Runs the program on a new practice desk and checks the files that it leaves.
set -eu
desk=$(mktemp -d)
trap 'rm -rf "$desk"' EXIT
fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }

unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM # with a display it would open its window
if [ "$(uname)" = Darwin ]; then # there is always a display
    "$1" --practice --data "$desk" --ship "$(dirname "$0")/../../practice/orders.json"
else
    "$1" --practice --data "$desk"
fi
for label in "$desk"/printed/*.zpl; do
    head -c 3 "$label" | grep -q '\^XA' || fail "$label is no label"
done
[ "$(find "$desk/printed" -name '*.zpl' | wc -l)" -eq 5 ] || fail 'not every parcel has a label'
[ "$(find "$desk/printed" -name '*.pdf' | wc -l)" -eq 2 ] || fail 'the customs papers are missing: the commercial invoice and the document of FedEx'
found=no
for paper in "$desk"/printed/*.pdf; do
    if pdftotext "$paper" - | grep -q 'Total Due:'; then found=yes; fi
done
[ "$found" = yes ] || fail 'no paper is a commercial invoice'
[ "$(sqlite3 "$desk/mailing_log.sqlite" 'SELECT count(*) FROM shipments WHERE zpl IS NOT NULL AND test_mode')" -eq 5 ] ||
    fail 'the mailing log does not hold every label'
[ "$(wc -l <"$desk/Mail Log Export.csv")" -eq 6 ] || fail 'the export does not hold every row'
! grep -rq shippo_test "$desk" || fail 'the key stands in a file'

printf '[{"to": {"name": "half an address"}}]' >"$desk/bad.json"
if "$1" --practice --data "$desk" --ship "$desk/bad.json" 2>"$desk/said"; then fail 'a bad orders file was taken'; fi
grep -q 'missing key "\[0\].to.company"' "$desk/said" || fail "the mistake is not named: $(cat "$desk/said")"
