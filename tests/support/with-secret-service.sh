#!/bin/sh
# with-secret-service.sh COMMAND...: runs a command with a private, unlocked secret store, which is deleted afterwards.
# Exits with 77, "skipped" for ctest, if the tools for it are not installed.
set -eu
for tool in dbus-run-session gnome-keyring-daemon gdbus; do
    if ! command -v $tool > /dev/null; then
        echo "skipped: $tool is not installed" >&2
        exit 77
    fi
done
dir=$(mktemp -d /tmp/keyring.XXXXXX)
trap 'rm -rf "$dir"' EXIT
mkdir -m 700 "$dir/run" "$dir/data" "$dir/config" "$dir/home"
export HOME="$dir/home" XDG_DATA_HOME="$dir/data" XDG_RUNTIME_DIR="$dir/run" XDG_CONFIG_HOME="$dir/config"
# With a display, a locked key ring would open a dialog and wait for its password.
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
# shellcheck disable=SC2016 # the inner shell expands its own arguments
dbus-run-session -- sh -c '
    printf %s test | gnome-keyring-daemon --unlock --components=secrets > /dev/null 2>&1
    gdbus wait --session --timeout 60 org.freedesktop.secrets || exit 99
    "$@"' sh "$@"
