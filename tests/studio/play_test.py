#!/usr/bin/env python3
"""Presses Play in the studio's page, on a display: tools/with_display.sh play_test.py PATH-OF-QORO-AD. Status 77 without
Chromium or xdotool. QORO_WEB_SANDBOX_OPTION is passed on where pages have no sandbox (tools/web_sandbox_option.sh)."""

import os
import shutil
import subprocess
import sys
import time
import unittest

from running_studio import RunningStudio, SKIPPED, SOURCES, has_studio

sys.path.insert(0, os.path.join(SOURCES, "tests", "report"))

from browser import Chromium  # noqa: E402 - the path must be known first

PATIENCE = 120
MARK = "QORO_STUDIO_UNDER_TEST"


def marked(value):
    """The processes that have inherited a mark, also those that have lost their parent."""
    found = {}
    for each in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{each}/environ", "rb") as environment, open(f"/proc/{each}/comm") as name:
                if f"{MARK}={value}".encode() in environment.read().split(b"\0"):
                    found[int(each)] = name.read().strip()
        except OSError:
            pass
    return found


class PlayTest(unittest.TestCase):
    browser = None

    def setUp(self):
        self.mark = self.id()
        options = [option for option in [os.environ.get("QORO_WEB_SANDBOX_OPTION")] if option]
        self.studio = RunningStudio(sys.argv[1], "creatives/minimal.json", options, {MARK: self.mark}, with_display=True)
        self.closed = None
        self.addCleanup(lambda: self.closed or self.studio.close())
        self.browser.visit(self.studio.address)
        self.browser.wait_for("typeof live === 'object' && live.revision > 0")

    def wait_until(self, condition):
        end = time.monotonic() + PATIENCE
        while not condition():
            self.assertLess(time.monotonic(), end, f"{self.said()}; {marked(self.mark)}")
            time.sleep(0.05)

    def said(self):
        return self.browser.value("document.getElementById('studio-said').textContent")

    def play(self):
        """Returns the ad's window when its page runs."""
        self.browser.click("#studio-play")
        self.wait_until(lambda: self.said() == "The ad plays in its window.")
        window = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--class", "^qoro-ad$"], check=True,
                                capture_output=True, text=True, timeout=PATIENCE).stdout.split()
        self.assertEqual(len(window), 1)
        self.wait_until(lambda: any(name.startswith("WebKitWeb") for name in marked(self.mark).values()))
        return window[0]

    def test_the_ad_plays_in_a_window_and_leaves_nothing_behind(self):
        window = self.play()
        self.browser.click("#studio-play")
        self.wait_until(lambda: "playing already" in self.said())
        # Without a window manager the keyboard has no window until one is chosen; a young one may not listen yet.
        def close():
            subprocess.run(["xdotool", "windowfocus", window, "key", "Escape"], check=False, timeout=PATIENCE,
                           stderr=subprocess.DEVNULL)
            return self.said() == "The ad's window is closed."

        self.wait_until(close)
        self.wait_until(lambda: list(marked(self.mark)) == [self.studio.process.pid])

    def test_the_end_of_the_studio_closes_the_window(self):
        self.play()
        self.closed = self.studio.close()
        self.assertEqual(self.closed, (0, "", ""))
        self.wait_until(lambda: not marked(self.mark))


if __name__ == "__main__":
    if len(sys.argv) < 2 or not os.environ.get("DISPLAY"):
        sys.exit("usage: tools/with_display.sh play_test.py PATH-OF-QORO-AD [TEST…]")
    lacks = Chromium.missing() or ("" if shutil.which("xdotool") else "xdotool is not installed")
    if not lacks and not has_studio(sys.argv[1]):
        lacks = "this build has no desktop"
    if lacks:
        print(f"skipped: {lacks}")
        sys.exit(SKIPPED)
    with Chromium() as PlayTest.browser:
        passed = unittest.main(argv=sys.argv[:1] + sys.argv[2:], exit=False).result.wasSuccessful()
    sys.exit(not passed)
