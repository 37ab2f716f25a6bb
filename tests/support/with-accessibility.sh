#!/bin/sh
# with-accessibility.sh COMMAND...: runs a command on a session bus of its own, with the service that screen readers use.
# Exits with 77, "skipped" for ctest, if it is not installed.
set -eu
if ! command -v dbus-run-session > /dev/null || [ ! -x /usr/libexec/at-spi-bus-launcher ]; then
    echo "skipped: dbus or at-spi2-core is not installed" >&2
    exit 77
fi
dir=$(mktemp -d /tmp/accessibility.XXXXXX)
trap 'rm -rf "$dir"' EXIT
mkdir -m 700 "$dir/run"
unset DBUS_SESSION_BUS_ADDRESS AT_SPI_BUS_ADDRESS
XDG_RUNTIME_DIR="$dir/run" QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 dbus-run-session -- "$@"
