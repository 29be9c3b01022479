#!/bin/sh
# Draws docs/studio.png: the studio with the demo ad, a stall, a turn and a tap, as Chromium shows it.
# In:   examples/demo, build/release/app/qoro-ad (tools/build.sh release qoro-ad)
# Needs Chromium (tools/setup.sh browser) and Liberation Sans (fonts-liberation).
# Run it after a change of the page, look at the picture, and commit it.
set -eu
cd "$(dirname "$0")/.."
PYTHONPATH=tests/studio:tests/report python3 - <<'EOF'
from browser import Chromium
from running_studio import RunningStudio

studio = RunningStudio("build/release/app/qoro-ad")
try:
    for event in ({"kind": "stall", "at": 3, "seconds": 2}, {"kind": "turn", "at": 8, "orientation": 3},
                  {"kind": "servers", "at": 13, "server": "http://ad.example"}):
        studio.json("POST", "/edit", {"do": "add", "event": event})
    with Chromium() as browser:
        browser.resize(1360, 1000)
        browser.visit(studio.address)
        browser.wait_for("typeof live === 'object' && live.revision > 0 && !data.pending")
        browser.value("go(6.5e6)")
        browser.click("#taps [data-tap=btnClickListener]")
        browser.wait_for("live.redrawn !== null")
        browser.value("live.busy")
        browser.value("scrollTo(0, 0)")
        browser.screenshot("docs/studio.png", 0, 1000)
finally:
    studio.close()
EOF
