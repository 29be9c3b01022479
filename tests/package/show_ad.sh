#!/bin/sh
# Uses examples/host as its user does, on the current display: starts it, clicks "Show ad", waits until the ad has ended,
# and closes the window: show_ad.sh HOST AD.json [OPTION]
set -eu
output=$(mktemp)
"$@" >"$output" &
host=$!
trap 'kill $host 2>/dev/null || true; rm -f "$output"' EXIT

# waits_for COMMAND…: tries it for a minute
waits_for()
{
    tries=0
    until "$@"; do
        tries=$((tries + 1))
        if [ $tries -ge 600 ] || ! kill -0 $host 2>/dev/null; then
            cat "$output"
            echo "show_ad: waited in vain for: $*" >&2
            exit 1
        fi
        sleep 0.1
    done
}
ad_is_shown()
{
    xdotool search --onlyvisible --name "^Advertisement$" >/dev/null 2>&1
}
# A click on a window that has just opened may come before its button.
click_shows_ad()
{
    ad_is_shown && return
    window=$(xdotool search --onlyvisible --name "^The host application$" 2>/dev/null) || return 1
    eval "$(xdotool getwindowgeometry --shell "$window")"
    xdotool mousemove --window "$window" $((WIDTH / 2)) $((HEIGHT / 2 - 15)) click 1
    sleep 0.5
    ad_is_shown
}
waits_for click_shows_ad
waits_for grep -q "^The ad was" "$output"
cat "$output"
window=$(xdotool search --onlyvisible --name "^The host application$")
xdotool windowclose "$window"
waits_for sh -c "! kill -0 $host 2>/dev/null"
wait $host
