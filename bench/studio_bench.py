#!/usr/bin/env python3
"""How long a click in the studio takes to become a picture: studio_bench.py PATH-OF-QORO-AD (a release build).

The ad is the demo with a video of 30 s. Two figures: the server's answer to an edit, as an HTTP client sees it; and in
Chromium, from the click on the drawn device to the frame after the new picture (performance.now).
"""

import os
import shutil
import sys

for folder in ("report", "studio"):
    sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", folder))

import http.client  # noqa: E402 - the path of the tests' modules must be known first
import json  # noqa: E402
import time  # noqa: E402

from browser import Chromium  # noqa: E402
from running_studio import RunningStudio  # noqa: E402

ROUNDS = 60


def show(name, times):
    times = sorted(times)
    print(f"{name}: median {times[len(times) // 2]:.1f} ms, 90 % below {times[len(times) * 9 // 10]:.1f} ms, "
          f"least {times[0]:.1f} ms, most {times[-1]:.1f} ms")


def touch(n):
    return {"do": "add", "event": {"kind": "touch", "at": 1 + n % 28, "point": [30, 70]}}


def measure_server(studio):
    connection = http.client.HTTPConnection(studio.host)
    times = []
    for n in range(ROUNDS):
        begin = time.perf_counter()
        connection.request("POST", "/edit", json.dumps(touch(n)),
                           {"X-Token": studio.token, "Content-Type": "application/json"})
        connection.getresponse().read()
        times.append((time.perf_counter() - begin) * 1000)
    return times


def measure_browser(studio):
    times = []
    with Chromium() as browser:
        browser.resize(1360, 1000)
        browser.visit(studio.address)
        browser.wait_for("typeof live === 'object' && live.revision > 0 && !data.pending")
        x, y = browser.scroll_to("#screen")
        for n in range(ROUNDS):
            browser.value(f"live.redrawn = null; go({1 + n % 28}e6)")
            browser.click_at(x, y - 150)
            browser.wait_for("live.redrawn !== null")
            browser.value("live.busy")
            times.append(browser.value("live.redrawn"))
    return times


if len(sys.argv) != 2:
    sys.exit("usage: studio_bench.py PATH-OF-QORO-AD")
# Of a video elsewhere 30 s are assumed.
running = RunningStudio(sys.argv[1], strVideoUrl="http://ad.example/video-of-30-s.mp4")
try:
    data = running.json("GET", "/session")["data"]
    print(f"session of {data['end'] / 1e6:.0f} s, {len(data['lines'])} lines of trace")
    show("server's answer", measure_server(running))
    if shutil.which("chromium"):
        running.json("POST", "/edit", {"do": "reset"})
        show("click to picture", measure_browser(running))
finally:
    running.close()
