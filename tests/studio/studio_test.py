#!/usr/bin/env python3
"""Works with the studio in a browser, by pointing and typing: studio_test.py PATH-OF-QORO-AD chromium|firefox [TEST…].
Status 77 without the browser."""

import json
import os
import sys
import unittest

from running_studio import RunningStudio, SKIPPED, SOURCES, has_studio
from tag_server import TagServer, inline

sys.path.insert(0, os.path.join(SOURCES, "tests", "report"))

from browser import AXE, BROWSERS  # noqa: E402 - the path must be known first


class StudioTest(unittest.TestCase):
    """All cases share the browser, which run() sets."""

    browser = None

    @classmethod
    def setUpClass(cls):
        cls.studio = RunningStudio(sys.argv[1], "creatives/minimal.json", iCloseBtnCountdown=1)
        cls.addClassCleanup(cls.studio.close)

    def setUp(self):
        self.studio.json("POST", "/edit", {"do": "reset"})
        self.browser.events.clear()
        self.browser.emulate()
        self.browser.resize(1360, 1000)
        self.visit(self.studio)

    def tearDown(self):
        # A refused Play is an answer that the console lists, and so is the end of a page's stream of news.
        complaints = [text for text in self.browser.complaints() if "409" not in text and "/news?" not in text]
        self.assertEqual(complaints, [])
        elsewhere = [address for address in self.browser.requests()
                     if not address.startswith(f"http://{self.studio.host}/") and not address.startswith("blob:")]
        self.assertEqual(elsewhere, [], "the page asks its own server only")

    def visit(self, studio):
        self.browser.visit(studio.address)
        self.browser.wait_for("typeof live === 'object' && live.revision > 0")

    def kinds(self):
        return self.browser.value("live.state.events.filter(({id}) => id > 0).map(({kind}) => kind)")

    def wait_for_kinds(self, *kinds):
        self.browser.wait_for(f"JSON.stringify(live.state.events.filter(e => e.id > 0).map(e => e.kind)) === "
                              f"{json.dumps(json.dumps(list(kinds), separators=(',', ':')))} && live.touched === null")
        # The lanes are drawn after the screen.
        self.browser.wait_for("document.querySelectorAll('.lane.steps .event').length === live.state.events.length")

    def said(self):
        return self.browser.value("document.getElementById('studio-said').textContent")

    def on_axis(self, time):
        """A place in the lanes at a time in seconds."""
        self.browser.scroll_to("#palette")
        left, width, top = self.browser.value(
            "(({left, width, top}) => [left, width, top])(document.querySelector('#lanes .axis .track')"
            ".getBoundingClientRect())")
        end = self.browser.value("sessionEnd / 1e6")
        return round(left + width * time / end), round(top + 40)

    def drag(self, start, end):
        part = round((start[0] + end[0]) / 2), round((start[1] + end[1]) / 2)
        self.browser.drag([start, part, end, end])

    def drag_to(self, selector, time):
        place = self.on_axis(time)
        self.drag(self.browser.middle(selector), place)

    def tap(self, name):
        """Clicks the middle of a control in the drawn device."""
        self.browser.scroll_to("#screen")
        x, y = self.browser.value(f"""(() => {{
            const [, [x, y, w, h]] = tappableNow().find(([name]) => name === {name!r});
            const {{x: left, y: top}} = new DOMPoint(x + w / 2, y + h / 2)
                .matrixTransform(document.querySelector("#screen svg > g > g").getScreenCTM());
            return [left, top];
        }})()""")
        self.browser.click_at(round(x), round(y))

    def test_a_click_on_the_close_button_closes_the_ad_at_that_time(self):
        self.browser.value("go(3e6)")
        self.assertTrue(self.browser.value("sightAt(3.5e6).open"))
        self.tap("btnClose")
        self.wait_for_kinds("touch")
        self.assertFalse(self.browser.value("sightAt(3.5e6).open"))
        self.assertEqual(self.browser.value("session.now"), 3000000, "the time stays")
        self.assertIn("3 s", self.browser.value("document.getElementById('figures').innerText"))
        self.assertIn("Close", self.said())
        self.assertGreater(self.browser.value("live.redrawn"), 0)

    def test_a_click_on_a_turned_device_reaches_its_control(self):
        self.drag_to("#palette [data-kind=turn]", 2)
        self.wait_for_kinds("turn")
        self.browser.value("go(3e6)")
        self.assertTrue(self.browser.value("isTurned(3e6)"))
        self.tap("btnClose")
        self.wait_for_kinds("turn", "touch")
        self.assertIn('"hit":"btnClose"', self.browser.value("JSON.stringify(data.lines)"))
        self.assertFalse(self.browser.value("sightAt(3.5e6).open"))

    def test_a_control_is_tapped_with_the_keyboard(self):
        self.browser.value("go(3e6)")
        self.browser.value("document.querySelector('#taps [data-tap=btnClose]').focus()")
        self.browser.press("Enter")
        self.wait_for_kinds("touch")
        self.assertFalse(self.browser.value("sightAt(3.5e6).open"))

    def test_each_kind_is_dragged_onto_the_axis(self):
        for kind in ("stall", "turn", "servers", "videoFails", "call", "leave", "volume"):
            with self.subTest(kind):
                self.studio.json("POST", "/edit", {"do": "reset"})
                self.browser.wait_for("live.state.events.every(({id}) => id < 0)")
                self.drag_to(f"#palette [data-kind={kind}]", 2)
                self.wait_for_kinds(kind)
                at = self.browser.value("live.state.events.find(({id}) => id > 0).at")
                self.assertAlmostEqual(at, 2, delta=0.15)
        self.assertEqual(self.browser.value("document.querySelectorAll('.ghost, .drop-line').length"), 0)

    def test_what_is_dropped_beside_the_axis_is_not_added(self):
        self.drag(self.browser.scroll_to("#palette [data-kind=stall]"), (60, 60))
        self.browser.value("live.busy")
        self.assertEqual(self.kinds(), [])
        self.assertEqual(self.browser.value("document.querySelectorAll('.ghost, .drop-line').length"), 0)

    def test_a_kind_is_chosen_and_placed_with_the_keyboard(self):
        self.browser.value("go(0); document.querySelector('#palette [data-kind=stall]').focus()")
        self.browser.press("Enter")
        self.assertEqual(self.browser.value("document.activeElement.id"), "scrubber")
        self.browser.press("PageDown")
        self.browser.value("setTime(2e6)")
        self.browser.press("Enter")
        self.wait_for_kinds("stall")
        self.assertEqual(self.browser.value("live.state.events.find(({id}) => id > 0).at"), 2)
        self.assertTrue(self.browser.value("data.video.some(([, state]) => state === 'stalled')"))
        self.assertIn("Stall 3 s: added at 2 s", self.said())

    def test_escape_puts_the_chosen_kind_back(self):
        self.browser.click("#palette [data-kind=stall]")
        self.assertEqual(self.browser.value("document.querySelector('[aria-pressed=true]').dataset.kind"), "stall")
        self.browser.press("Escape")
        self.assertIsNone(self.browser.value("document.querySelector('[aria-pressed=true]')"))
        self.browser.press("Enter")
        self.browser.value("live.busy")
        self.assertEqual(self.kinds(), [])

    def test_a_step_is_moved_by_dragging_and_by_keys_and_removed(self):
        self.drag_to("#palette [data-kind=stall]", 3)
        self.wait_for_kinds("stall")
        place = self.on_axis(7)
        self.drag(self.browser.middle(".event.stall"), place)
        self.browser.wait_for("Math.abs(live.state.events.find(({id}) => id > 0).at - 7) < 0.15")
        before = self.browser.value("live.state.events.find(({id}) => id > 0).at")
        self.browser.wait_for("document.querySelector('.event.stall') !== null")
        self.browser.value("document.querySelector('.event.stall').focus()")
        self.browser.press("ArrowRight", shift=True)
        self.browser.wait_for(f"live.state.events.find(({{id}}) => id > 0).at > {before}")
        after = self.browser.value("live.state.events.find(({id}) => id > 0).at")
        self.assertAlmostEqual(after - before, 0.1, places=6)
        self.browser.wait_for("document.activeElement.classList.contains('stall')")
        self.browser.press("Delete")
        self.wait_for_kinds()

    def test_undo_and_redo(self):
        self.browser.value("addEvent('stall', 3e6)")
        self.wait_for_kinds("stall")
        self.browser.click("#undo")
        self.wait_for_kinds()
        self.browser.press("y", ctrl=True)
        self.wait_for_kinds("stall")

    def test_the_chosen_step_has_a_form(self):
        self.browser.value("addEvent('stall', 3e6)")
        self.wait_for_kinds("stall")
        self.browser.wait_for("document.querySelector('#event-editor [name=seconds]') !== null")
        self.browser.value("(input => {input.value = '5'; input.dispatchEvent(new Event('change'));})"
                           "(document.querySelector('#event-editor [name=seconds]'))")
        self.browser.wait_for("live.state.events.find(({id}) => id > 0).seconds === 5")
        self.browser.wait_for("document.querySelector('.event.stall')?.textContent === 'Stall 5 s'")

    def test_the_trace_is_filtered_and_leads_to_its_time(self):
        self.browser.value("(select => {select.value = 'js'; select.dispatchEvent(new Event('change'));})"
                           "(document.getElementById('trace-kind'))")
        shown = self.browser.value("[...document.querySelectorAll('#trace li:not([hidden]) .what')]"
                                   ".map(each => each.textContent)")
        self.assertEqual(set(shown), {"js"})
        self.browser.value("go(0); document.getElementById('trace').focus()")
        self.browser.press("ArrowDown")
        self.browser.press("ArrowDown")
        time = self.browser.value("session.now")
        self.assertIn(time, self.browser.value(
            "data.lines.filter(([, fields]) => fields.what === 'js').map(([at]) => at)"))
        self.assertEqual(self.browser.value("document.querySelector('#trace [aria-current]').innerText").split()[1],
                         "js")

    def test_a_changed_page_and_ad_are_shown_with_the_time_and_the_steps(self):
        self.browser.value("addEvent('stall', 3e6)")
        self.wait_for_kinds("stall")
        self.browser.value("go(4e6)")
        path = os.path.join(os.path.dirname(self.studio.ad), "minimal.html")
        with open(path) as file:
            page = file.read()
        with open(path, "w") as file:
            file.write(page.replace("<head>", "<head><title>New page</title>"))
        self.browser.wait_for("pageTitle() === 'New page'")
        self.assertEqual(self.kinds(), ["stall"])
        self.assertEqual(self.browser.value("session.now"), 4000000)
        self.browser.wait_for("!data.pending && document.querySelectorAll('#matrix .card').length > 0")

    def test_a_broken_ad_is_a_line_on_the_page_until_it_is_mended(self):
        path = self.studio.ad
        with open(path) as file:
            good = file.read()
        with open(path, "w") as file:
            file.write(good.replace("{", "{,", 1))
        self.browser.wait_for("!document.getElementById('studio-complaint').hidden")
        self.assertIn("minimal.json", self.browser.value("document.getElementById('studio-complaint').innerText"))
        self.assertGreater(self.browser.value("document.querySelectorAll('#screen svg').length"), 0)
        with open(path, "w") as file:
            file.write(good)
        self.browser.wait_for("document.getElementById('studio-complaint').hidden")

    def test_a_tag_is_fetched_again(self):
        self.assertFalse(self.browser.value("document.getElementById('studio-fetch').checkVisibility()"), "no tag")
        server = TagServer()
        self.addCleanup(server.close)
        server.documents["/tag.xml"] = inline(5)
        studio = RunningStudio(sys.argv[1], server.address + "/tag.xml")
        self.addCleanup(studio.close)
        self.visit(studio)
        self.browser.value("addEvent('stall', 1e6)")
        self.wait_for_kinds("stall")
        server.documents["/tag.xml"] = inline(3)
        self.browser.click("#studio-fetch")
        self.browser.wait_for("data.summary.closeButtonTappable < 4")
        self.browser.wait_for("document.getElementById('studio-said').textContent === 'The tag has been fetched again.'")
        self.assertEqual(self.kinds(), ["stall"])
        # The other studio's requests, and its end, are none of this one's.
        self.visit(self.studio)
        self.browser.events.clear()

    def test_findings_devices_and_frames_follow(self):
        self.browser.wait_for("!data.pending")
        self.assertEqual(self.browser.value("document.getElementById('findings').innerText"), "None.")
        self.assertGreater(self.browser.value("document.querySelectorAll('#matrix .card svg').length"), 20)
        self.assertGreater(self.browser.value("data.stills.length"), 0)

    def test_play_without_a_display_says_so(self):
        self.browser.click("#studio-play")
        self.browser.wait_for("document.getElementById('studio-said').textContent.includes('display')")

    def test_saves_by_links_with_the_token(self):
        for name in ("save-scenario", "save-report", "save-findings", "save-findings-json"):
            path = self.browser.value(f"document.getElementById({name!r}).getAttribute('href')")
            self.assertEqual(self.studio.ask("GET", "/" + path, X_Token=None)[0], 200, path)

    def test_two_windows_show_the_same(self):
        self.studio.json("POST", "/edit", {"do": "add", "event": {"kind": "volume", "at": 2}})
        self.wait_for_kinds("volume")

    def test_each_control_has_a_name_and_can_be_reached_with_the_tab_key(self):
        self.browser.value("addEvent('servers', 3e6)")
        self.wait_for_kinds("servers")
        self.assertEqual(self.browser.nameless(), [])
        stops = self.browser.value("document.querySelectorAll('.lane.steps button[tabindex=\"0\"]').length")
        self.assertEqual(stops, 1, "the lane is one stop")

    def test_fits_a_narrow_window(self):
        self.browser.resize(360, 800)
        self.browser.wait_for("document.documentElement.scrollWidth <= 360")

    def test_axe_finds_nothing(self):
        if not os.path.exists(AXE):
            self.skipTest("axe-core is not installed (tools/setup.sh browser)")
        self.browser.wait_for("!data.pending")
        # With a form, a chosen step, controls to tap, and an ad that cannot be read.
        self.browser.value("go(2e6); addEvent('servers', 3e6)")
        self.wait_for_kinds("servers")
        self.assertTrue(self.browser.value("document.querySelector('#event-editor select').checkVisibility() && "
                                           "document.querySelector('#taps button').checkVisibility()"))
        self.browser.value("complain('ad.json: line 1', 'The ad cannot be read.')")
        for scheme in ("light", "dark"):
            self.browser.emulate(prefers_color_scheme=scheme)
            self.assertEqual(self.browser.axe(), [], scheme)


def run(program, browser, names):
    """Runs the named cases, or all. Returns the process's exit status."""
    lacks = browser.missing() and f"{browser.missing()} (tools/setup.sh browser)"
    if not has_studio(program):
        lacks = "this build has no desktop"
    if lacks:
        print(f"skipped: {lacks}")
        return SKIPPED
    with browser() as StudioTest.browser:
        return not unittest.main(argv=sys.argv[:1] + names, exit=False).result.wasSuccessful()


if __name__ == "__main__":
    if len(sys.argv) < 3 or sys.argv[2] not in BROWSERS:
        sys.exit("usage: studio_test.py PATH-OF-QORO-AD chromium|firefox [TEST…]")
    sys.exit(run(sys.argv[1], BROWSERS[sys.argv[2]], sys.argv[3:]))
