#!/bin/sh
# Draws docs/report.png: the upper part of the demo ad's report, as Chromium shows it.
# In:   examples/demo, build/release/app/qoro-ad (tools/build.sh release qoro-ad)
# Needs Chromium (tools/setup.sh browser) and Liberation Sans (fonts-liberation).
# Run it after a change of the report's page, look at the picture, and commit it.
set -eu
cd "$(dirname "$0")/.."
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
build/release/app/qoro-ad report examples/demo/ad.json --steps examples/demo/steps.json -o "$folder/report.html"
options=""
# Chromium has no sandbox for root; the page is our own file.
[ "$(id -u)" -ne 0 ] || options="--no-sandbox"
# shellcheck disable=SC2086 # no option, or one
chromium $options --headless --disable-gpu --hide-scrollbars --user-data-dir="$folder/profile" \
    --window-size=1360,1120 --screenshot="$PWD/docs/report.png" "file://$folder/report.html#t=10.8" 2>"$folder/log" || {
    cat "$folder/log" >&2
    exit 1
}
