#!/bin/sh
# Runs a command with its own X server and session bus, and stops both afterwards:
# tools/with_display.sh COMMAND…
set -eu
scratch=$(mktemp -d)
# -noreset: a server that resets after its last client disconnects rejects clients meanwhile.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -noreset -nolisten tcp 3>"$scratch/display" 2>"$scratch/xvfb.log" &
server=$!
# Waits for the exit: a server that is still shutting down would delete the next one's socket.
trap 'kill $server 2>/dev/null || true; wait $server 2>/dev/null || true; rm -rf "$scratch"' EXIT
trap 'exit 143' TERM
trap 'exit 130' INT
waited=0
until [ -s "$scratch/display" ]; do
    if ! kill -0 $server 2>/dev/null || [ $waited -ge 100 ]; then
        echo "with_display: Xvfb did not start: $(tail -n 1 "$scratch/xvfb.log")" >&2
        exit 1
    fi
    waited=$((waited + 1))
    sleep 0.1
done
DISPLAY=":$(cat "$scratch/display")"
export DISPLAY
unset WAYLAND_DISPLAY
export GDK_BACKEND=x11
# By default no assistive technology runs on this server, unless the caller sets GTK_A11Y=atspi: then the session bus
# starts the accessibility bus and stops it on exit.
export GTK_A11Y="${GTK_A11Y-none}"
# The bus and the services that it starts write about themselves, and that the X server has gone; this is not the
# command's output.
cat >"$scratch/bus" <<END
#!/bin/sh
exec dbus-daemon "\$@" >"$scratch/bus.log" 2>&1
END
chmod +x "$scratch/bus"
dbus-run-session --dbus-daemon="$scratch/bus" -- "$@"
