#!/bin/sh
# Runs a command on an X server of its own with a session bus of its own, and takes both down afterwards:
# tools/with_display.sh COMMAND…
set -eu
scratch=$(mktemp -d)
# A server that begins anew when its last client leaves turns away whoever comes at that moment.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -noreset -nolisten tcp 3>"$scratch/display" 2>"$scratch/xvfb.log" &
server=$!
# Waited for: a server that is still going takes the next one's socket with it.
trap 'kill $server 2>/dev/null || true; wait $server 2>/dev/null || true; rm -rf "$scratch"' EXIT
trap 'exit 143' TERM
trap 'exit 130' INT
waited=0
until [ -s "$scratch/display" ]; do
    kill -0 $server 2>/dev/null && [ $waited -lt 100 ] || {
        echo "with_display: Xvfb did not start: $(tail -n 1 "$scratch/xvfb.log")" >&2
        exit 1
    }
    waited=$((waited + 1))
    sleep 0.1
done
DISPLAY=":$(cat "$scratch/display")"
export DISPLAY
unset WAYLAND_DISPLAY
export GDK_BACKEND=x11
# No assistive technology reads the windows of this server, unless the caller says so (GTK_A11Y=atspi): the session bus
# then brings the accessibility bus up, and takes it down with itself.
export GTK_A11Y=${GTK_A11Y-none}
dbus-run-session -- "$@"
