#!/usr/bin/env python3
"""Opens the report of the demo ad in Chromium: report_test.py PATH-OF-QORO-AD. Status 77 without Chromium."""

import csv
import io
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

SOURCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
SKIPPED = 77


def make_report(program, folder):
    path = os.path.join(folder, "report.html")
    demo = os.path.join(SOURCES, "examples", "demo")
    scenario = os.path.join(folder, "demo.json")
    # A build without the desktop cannot read the video: the duration is given.
    subprocess.run([program, "simulate", "--ad", os.path.join(demo, "ad.json"),
                    "--steps", os.path.join(demo, "steps.json"), "--video", "duration=14",
                    "--write-scenario", scenario], check=True, stdout=subprocess.DEVNULL)
    subprocess.run([program, "report", scenario, "-o", path], check=True)
    return path


class ReportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.report = make_report(sys.argv[1], cls.folder.name)
        cls.browser = Browser()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.addClassCleanup(cls.browser.__exit__)

    def setUp(self):
        self.browser.events.clear()
        self.browser.emulate()
        self.browser.resize(1360, 900)
        self.browser.open(self.report)

    def tearDown(self):
        self.assertEqual(self.browser.complaints(), [])
        self.assertEqual(self.browser.requests(), [])

    def now(self):
        return float(self.browser.value("document.getElementById('scrubber').value")) / 1e6

    def text(self, selector):
        return self.browser.value(f"document.querySelector('{selector}').innerText")

    def test_shows_every_part(self):
        for selector in ("#screen svg", "#story svg", "#figures dd", "#trace li", "#ledger tbody tr",
                         "#matrix .card svg", ".lane.closes .item.close", ".trackers .item", "#findings li"):
            self.assertGreater(self.browser.value(f"document.querySelectorAll('{selector}').length"), 0, selector)
        self.assertIn("5.4 s", self.text("#figures"))

    def test_arrow_keys_go_from_moment_to_moment(self):
        self.browser.value("document.getElementById('scrubber').focus()")
        self.browser.press("Home")
        self.assertEqual(self.now(), 0)
        self.browser.press("ArrowRight")
        first = self.now()
        self.assertGreater(first, 0)
        self.browser.press("ArrowRight")
        self.assertGreater(self.now(), first)
        self.browser.press("ArrowLeft")
        self.assertEqual(self.now(), first)
        self.browser.press("End")
        self.assertEqual(self.now(), 17)
        said = self.browser.value("document.getElementById('scrubber').getAttribute('aria-valuetext')")
        self.assertEqual(said, "17.0 seconds, No ad is open.")

    def test_the_picture_follows_the_time(self):
        def has_countdown():
            return self.browser.value("[...document.querySelectorAll('#screen text')]"
                                      ".some(text => text.textContent === '5')")

        self.browser.value("setTime(400000)")
        self.assertTrue(has_countdown())
        self.assertIn("close cannot be tapped", self.text("#now"))
        self.browser.value("setTime(6000000)")
        self.assertFalse(has_countdown())
        self.assertIn("close can be tapped", self.text("#now"))
        box = self.browser.value("document.querySelector('#screen svg').viewBox.baseVal.width")
        self.assertGreater(box, 812, "the device is turned")

    def test_arrow_keys_within_a_lane_show_its_lines(self):
        before = self.now()
        self.browser.value("document.querySelector('.trackers .item[tabindex=\"0\"]').focus()")
        self.browser.press("End")
        self.assertIn("close", self.browser.value("document.activeElement.getAttribute('aria-label')"))
        self.assertIn("/t/close", self.text("#line"))
        self.assertEqual(self.now(), before, "the time stays until the item is chosen")
        self.browser.press("Enter", text="\r")
        self.assertEqual(self.now(), 12.3)

    def test_plays_at_speed_and_stops_at_the_end(self):
        self.browser.value("setTime(15000000); document.getElementById('speed').value = '8'")
        self.browser.click("#play")
        self.browser.wait_for("document.getElementById('scrubber').value === '17000000'")
        self.browser.wait_for("document.getElementById('play').getAttribute('aria-label') === 'Play'")

    def test_plays_from_event_to_event_with_reduced_motion(self):
        self.browser.emulate(prefers_reduced_motion="reduce")
        self.browser.value("setTime(0); document.getElementById('speed').value = '1'")
        self.browser.click("#play")
        self.browser.wait_for("document.getElementById('scrubber').value > 1000000")
        self.assertTrue(self.browser.value("moments.includes(Number(document.getElementById('scrubber').value))"))
        self.browser.click("#play")

    def test_the_ledger_sorts_both_ways_and_is_copied_as_csv(self):
        def column(number):
            return self.browser.value(
                f"[...document.querySelectorAll('#ledger tbody tr')].map(row => row.children[{number}].innerText)")

        head = "#ledger th:nth-child(3) button"
        self.browser.click(head)
        sent = [float(text) for text in column(2) if text != "–"]
        self.assertEqual(sent, sorted(sent))
        self.assertEqual(column(2)[-1], "–", "what was not sent is last")
        sorted_by = "document.querySelector('#ledger th:nth-child(3)').getAttribute('aria-sort')"
        self.assertEqual(self.browser.value(sorted_by), "ascending")
        self.browser.click(head)
        self.assertEqual([float(text) for text in column(2) if text != "–"], sorted(sent, reverse=True))
        table = list(csv.reader(io.StringIO(self.browser.value("ledgerAsCsv(data.trackers)"))))
        self.assertEqual(table[0], ["Tracker", "Due, s", "Sent, s", "Late, s", "Outcome", "Address"])
        self.assertEqual(len(table), len(column(0)) + 1)
        self.assertEqual({len(row) for row in table}, {6})

    def test_the_matrix_shows_each_holding(self):
        for number in range(4):
            self.browser.value(f"document.querySelectorAll('#holdings input')[{number}].click()")
            self.assertGreaterEqual(self.browser.value("document.querySelectorAll('#matrix .card').length"), 20)
            width = self.browser.value("document.querySelector('#matrix svg').viewBox.baseVal.width")
            height = self.browser.value("document.querySelector('#matrix svg').viewBox.baseVal.height")
            self.assertEqual(width > height, number > 0)

    def test_fits_a_narrow_window(self):
        self.browser.resize(360, 800)
        self.assertLessEqual(self.browser.value("document.documentElement.scrollWidth"), 360)

    def test_each_control_has_a_name_and_can_be_reached_with_the_tab_key(self):
        nameless = self.browser.value("[...document.querySelectorAll('button, a, input, select')].filter(each => "
                                      "!each.innerText && !each.ariaLabel && !each.labels?.length && "
                                      "!each.hasAttribute('aria-labelledby')).map(each => each.outerHTML)")
        self.assertEqual(nameless, [])
        stops = self.browser.value("[...document.querySelectorAll('.lane:not(.axis) ol')].map(lane => "
                                   "lane.querySelectorAll('button[tabindex=\"0\"]').length)")
        self.assertLessEqual(max(stops), 1, "a lane is one stop")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: report_test.py PATH-OF-QORO-AD")
    if not shutil.which("chromium"):
        print("skipped: Chromium is not installed (tools/setup.sh browser)")
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1])
