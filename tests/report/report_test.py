#!/usr/bin/env python3
"""Opens reports in a browser: report_test.py PATH-OF-QORO-AD chromium|firefox. Status 77 without the browser."""

import csv
import io
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

from browser import AXE, BROWSERS, SKIPPED

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCES = os.path.join(HERE, "..", "..")
SECOND = 1000000


def make_reports(program, folder):
    """Of the demo ad, of a session in which much goes wrong, and of two ads in a row: their paths."""
    demo = os.path.join(SOURCES, "examples", "demo")
    scenario = os.path.join(folder, "demo.json")
    # A build without the desktop cannot read the video: the duration is given.
    subprocess.run([program, "simulate", "--ad", os.path.join(demo, "ad.json"),
                    "--steps", os.path.join(demo, "steps.json"), "--video", "duration=14",
                    "--write-scenario", scenario], check=True, stdout=subprocess.DEVNULL)
    paths = {}
    for name, source in (("demo", scenario), ("rough", os.path.join(HERE, "rough.json")),
                         ("pod", os.path.join(HERE, "pod.json"))):
        paths[name] = os.path.join(folder, name + ".html")
        subprocess.run([program, "report", source, "-o", paths[name]], check=True)
    return paths


def with_data(path, change):
    """A copy of a report, with its data changed."""
    with open(path, encoding="utf-8") as file:
        page = file.read()
    begin = page.index('id="data">') + len('id="data">')
    end = page.index("</script>", begin)
    data = json.loads(page[begin:end])
    change(data)
    copy = path.replace(".html", "-changed.html")
    with open(copy, "w", encoding="utf-8") as file:
        file.write(page[:begin] + json.dumps(data).replace("<", "\\u003c") + page[end:])
    return copy


class ReportCase(unittest.TestCase):
    """All cases share the reports and the browser, which run() sets."""

    report = "demo"
    reports = {}
    folder = ""
    browser = None

    def setUp(self):
        self.browser.events.clear()
        self.browser.emulate()
        self.browser.resize(1360, 900)
        self.browser.open(self.reports[self.report])

    def tearDown(self):
        self.assertEqual(self.browser.complaints(), [])
        self.assertEqual(self.browser.requests(), [])

    def now(self):
        return float(self.value("document.getElementById('scrubber').value")) / SECOND

    def set_clock(self):
        """Pictures follow each other only when the test calls nextFrame() with a time in milliseconds."""
        self.value("performance.now = () => 0; globalThis.requestAnimationFrame = frame => "
                   "{ globalThis.nextFrame = frame; }; 0")

    def value(self, expression):
        return self.browser.value(expression)

    def text(self, selector):
        return self.value(f"document.querySelector('{selector}').innerText")

    def count(self, selector):
        return self.value(f"document.querySelectorAll('{selector}').length")

    def labels(self, selector):
        return self.value(f"[...document.querySelectorAll('{selector}')].map(each => each.getAttribute('aria-label'))")

    def focused(self):
        return self.value("document.activeElement.id || document.activeElement.className || "
                          "document.activeElement.tagName")


class PageOfTheDemo(ReportCase):
    def test_shows_every_part(self):
        for selector in ("#screen svg", "#story svg", "#figures dd", "#trace li", "#ledger tbody tr",
                         "#matrix .card svg", ".lane.closes .item.close", ".trackers .item", "#findings li"):
            self.assertGreater(self.count(selector), 0, selector)
        self.assertIn("5.4 s", self.text("#figures"))

    def test_arrow_keys_go_from_moment_to_moment(self):
        self.value("document.getElementById('scrubber').focus()")
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
        said = self.value("document.getElementById('scrubber').getAttribute('aria-valuetext')")
        self.assertEqual(said, "17.0 seconds, No ad is open.")
        self.browser.press("PageDown")
        self.assertEqual(self.now(), 16)

    def test_the_mouse_moves_the_scrubber_and_presses_the_buttons(self):
        self.browser.click("#scrubber")
        self.assertAlmostEqual(self.now(), 8.5, delta=0.1)
        before = self.now()
        self.browser.click("#on")
        self.assertGreater(self.now(), before)
        self.browser.click("#back")
        self.assertLessEqual(self.now(), before)

    def test_a_screen_reader_hears_the_moment_once(self):
        live = "document.querySelector('{}').ariaLive"
        self.value("document.getElementById('on').focus()")
        self.browser.press("Enter")
        self.assertEqual(self.value(live.format("#now")), "polite", "the button itself says nothing")
        self.browser.click("#play")
        self.assertEqual(self.value(live.format("#now")), "off", "not sixty times a second")
        self.browser.click("#play")
        self.value("document.getElementById('scrubber').focus()")
        self.browser.press("ArrowRight")
        self.assertEqual(self.value(live.format("#now")), "off", "the slider says it")
        self.assertEqual(self.value(live.format("#clock")), "off")
        self.assertEqual(self.value("document.querySelector('#screen > svg').getAttribute('aria-describedby')"), "now")

    def test_the_picture_follows_the_time(self):
        def has_countdown():
            return self.value("[...document.querySelectorAll('#screen text')].some(text => text.textContent === '5')")

        self.value("setTime(400000)")
        self.assertTrue(has_countdown())
        self.assertIn("close cannot be tapped", self.text("#now"))
        self.value("setTime(6000000)")
        self.assertFalse(has_countdown())
        self.assertIn("close can be tapped", self.text("#now"))
        box = self.value("document.querySelector('#screen svg').viewBox.baseVal.width")
        self.assertGreater(box, 812, "the device is turned")

    def test_the_picture_shows_controls_where_they_are(self):
        self.browser.click("#show-taps")
        self.value("setTime(10000000)")
        # A build without the desktop cuts the title off in the middle: its texts are as wide as the simulator's.
        texts = self.value("[...document.querySelectorAll('#screen text')].map(each => each.textContent)")
        self.assertTrue(any(text.startswith("See ") and text.endswith("amps") for text in texts), texts)
        # The picture of the close button lies on the place that the session gives for a touch.
        away = self.value("""(() => {
            const middle = element => (box => [box.x + box.width / 2, box.y + box.height / 2])
                (element.getBoundingClientRect());
            const [x, y] = middle(document.querySelector("#screen .tappable.close"));
            return Math.min(...[...document.querySelectorAll("#screen image")].map(image => {
                const [u, v] = middle(image);
                return Math.hypot(u - x, v - y);
            }));
        })()""")
        self.assertLess(away, 1)

    def test_the_picture_shows_where_the_viewer_touches(self):
        self.value("setTime(2500000)")
        place = self.value("(touch => [touch.cx.baseVal.value, touch.cy.baseVal.value])"
                           "(document.querySelector('#screen .touch'))")
        self.assertEqual(place, [350, 230])
        self.value("setTime(2300000)")
        self.assertEqual(self.count("#screen .touch"), 0)

    def test_the_picture_marks_what_can_be_tapped_and_the_safe_areas(self):
        # The demo's own device has no insets.
        self.browser.open(with_data(self.reports["demo"], lambda data: data["device"].update(
            portrait=[44, 0, 34, 0], landscape=[0, 44, 21, 44])))
        self.value("setTime(400000)")
        self.assertEqual(self.count("#screen .tappable, #screen .unsafe"), 0)
        self.browser.click("#show-taps")
        self.browser.click("#show-safe")
        self.assertGreater(self.count("#screen .tappable"), 0)
        self.assertEqual(self.count("#screen .tappable.close"), 0, "the close cannot be tapped yet")
        self.assertEqual(self.count("#screen .unsafe"), 1)
        self.value("setTime(6000000)")
        self.assertEqual(self.count("#screen .tappable.close"), 1)

    def test_a_moment_of_the_story_is_shown(self):
        self.browser.click("#story li:first-child button")
        self.assertEqual(self.now(), 0)
        self.assertEqual(self.focused(), "scrubber")

    def test_the_address_names_a_time(self):
        self.value("globalThis.isOld = true; location.hash = '#t=9.8'; setTimeout(() => location.reload()); 0")
        self.browser.wait_for("!globalThis.isOld && document.readyState === 'complete' && "
                              "document.getElementById('scrubber')?.value === '9800000'")
        self.value("location.hash = '#t=5'")
        self.browser.wait_for("document.getElementById('scrubber').value === '5000000'")

    def test_plays_at_the_chosen_speed(self):
        self.set_clock()
        self.value("setTime(1000000)")
        for speed, before, now in (("1", 1, 1.1), ("4", 1.1, 1.5), ("0.25", 1.5, 1.525)):
            self.value(f"document.getElementById('speed').value = '{speed}'")
            self.assertEqual(self.now(), before)
            self.browser.click("#play")
            self.value("nextFrame(100)")
            self.assertAlmostEqual(self.now(), now)
            self.browser.click("#play")
            self.value("nextFrame(200)")
            self.assertAlmostEqual(self.now(), now, msg="it is paused")

    def test_stops_at_the_end(self):
        self.value("setTime(15000000); document.getElementById('speed').value = '8'")
        self.browser.click("#play")
        self.browser.wait_for("document.getElementById('scrubber').value === '17000000'")
        self.browser.wait_for("document.getElementById('play').getAttribute('aria-label') === 'Play'")

    def test_the_space_bar_plays_and_pauses(self):
        self.value("setTime(0); document.getElementById('speed').value = '8'; "
                   "document.getElementById('scrubber').focus()")
        self.browser.press(" ")
        self.browser.wait_for("document.getElementById('scrubber').value > 100000")
        self.assertFalse(self.value("moments.includes(Number(document.getElementById('scrubber').value))"),
                         "it moves smoothly")
        self.browser.press(" ")
        self.assertEqual(self.labels("#play"), ["Play"])

    def test_plays_from_event_to_event_with_reduced_motion(self):
        self.browser.emulate(prefers_reduced_motion="reduce")
        self.set_clock()
        self.value("setTime(0); document.getElementById('speed').value = '1'")
        self.browser.click("#play")
        self.value("nextFrame(1250)")
        self.assertEqual(self.now() * SECOND, self.value("moments.findLast(at => at <= 1250000)"))
        self.browser.click("#play")
        moving = self.value("[...document.querySelectorAll('*')].filter(each => "
                            "getComputedStyle(each).transitionDuration !== '0s' || "
                            "getComputedStyle(each).animationName !== 'none').length")
        self.assertEqual(moving, 0)

    def test_arrow_keys_within_a_lane_show_its_lines(self):
        before = self.now()
        self.value("document.querySelector('.trackers .item[tabindex=\"0\"]').focus()")
        self.browser.press("End")
        self.assertIn("close", self.value("document.activeElement.getAttribute('aria-label')"))
        self.assertIn("/t/close", self.text("#line"))
        self.assertEqual(self.now(), before, "the time stays until the item is chosen")
        self.browser.press("ArrowLeft")
        self.assertNotIn("/t/close", self.text("#line"))
        self.browser.press("ArrowRight")
        self.browser.press("Enter")
        self.assertEqual(self.now(), 12.3)

    def test_choosing_an_item_goes_to_its_time(self):
        self.browser.click(".closes .item.close")
        self.assertEqual(self.now(), 5.4)

    def test_hovering_an_item_shows_its_lines(self):
        self.assertEqual(self.text("#line"), "")
        self.browser.point_at(".trackers li:last-child .item.point")
        self.assertIn("/t/close", self.text("#line"))

    def test_the_trace_follows_the_time_and_is_read_line_by_line(self):
        self.value("setTime(5000000); document.getElementById('trace').focus()")
        current = "data.lines[rows.indexOf(document.querySelector('#trace [aria-current]'))][0]"
        self.assertLessEqual(self.value(current), 5000000)
        for time in (9000000, 5000000):
            self.value(f"setTime({time})")
            self.assertTrue(self.value("rows.every((row, n) => row.classList.contains('past') === "
                                       f"data.lines[n][0] <= {time})"), time)
        place = "rows.indexOf(document.querySelector('#trace [aria-current]'))"
        before = self.value(place)
        self.browser.press("ArrowDown")
        self.assertGreater(self.value(place), before)
        self.assertEqual(self.value(current) / SECOND, self.now())
        self.assertNotEqual(self.text("#line"), "")

    def test_the_ledger_sorts_both_ways(self):
        def column(number):
            return self.value(
                f"[...document.querySelectorAll('#ledger tbody tr')].map(row => row.children[{number}].innerText)")

        head = "#ledger th:nth-child(3) button"
        self.browser.click(head)
        sent = [float(text) for text in column(2) if text != "–"]
        self.assertEqual(sent, sorted(sent))
        self.assertEqual(column(2)[-1], "–", "what was not sent is last")
        sorted_by = "document.querySelector('#ledger th:nth-child(3)').getAttribute('aria-sort')"
        self.assertEqual(self.value(sorted_by), "ascending")
        self.browser.click(head)
        self.assertEqual([float(text) for text in column(2) if text != "–"], sorted(sent, reverse=True))
        self.assertEqual(self.value(sorted_by), "descending")
        self.browser.click("#ledger tbody a")
        self.assertEqual(self.focused(), "scrubber")
        self.assertEqual(self.now(), float(self.text("#ledger tbody a")))

    def test_the_matrix_shows_each_holding(self):
        for number in range(4):
            self.browser.click(f"#holdings label:nth-of-type({number + 1}) input")
            self.assertGreaterEqual(self.count("#matrix .card"), 20)
            width = self.value("document.querySelector('#matrix svg').viewBox.baseVal.width")
            height = self.value("document.querySelector('#matrix svg').viewBox.baseVal.height")
            self.assertEqual(width > height, number > 0)
            self.assertGreater(self.count("#matrix path.unsafe"), 0, "safe areas")

    def test_the_matrix_marks_faults(self):
        def keep_some(data):
            for entry in data["matrix"][::2]:
                entry["faults"] = []

        self.browser.open(with_data(self.reports["demo"], keep_some))
        cards = self.count("#matrix .card")
        faulty = self.count("#matrix .card.faulty")
        self.assertGreater(faulty, 0)
        self.assertEqual(self.count("#matrix .card.faulty:not(:has(.mark))"), 0)
        self.browser.click("#only-faults")
        self.assertEqual(self.count("#matrix .card"), faulty)
        self.assertLess(faulty, cards)

    def test_a_finding_with_a_moment_leads_there(self):
        def give_moments(data):
            data["findings"] = [
                {"rule": "close-late", "severity": "error", "sentence": "It closes <b>late</b>", "at": 5400000},
                {"rule": "plain-text", "severity": "note", "sentence": "An address", "at": None}]

        self.browser.open(with_data(self.reports["demo"], give_moments))
        self.assertEqual(self.count("#findings li"), 2)
        self.assertEqual(self.count("#findings a"), 1)
        self.assertEqual(self.text("#findings a"), "It closes <b>late</b> (5.4 s)")
        self.assertTrue(self.value("document.querySelector('#findings li').classList.contains('error')"))
        self.browser.click("#findings a")
        self.assertEqual(self.now(), 5.4)
        self.assertEqual(self.focused(), "scrubber")

    def test_the_video_of_the_moment_gives_the_frame(self):
        def give_frames(data):
            frame = "data:image/gif;base64,R0lGODlhAQABAIAAAAAAAAAAACwAAAAAAQABAAACAkQBADs="
            data["sources"] = ["http://m/1.mp4", "http://m/2.mp4"]
            data["stills"] = [[0, frame + "#first", 0], [8, frame + "#later", 0], [0, frame + "#other", 1]]
            data["video"] = [[0, "playing", 0, 14, 0], [10000000, "playing", 0, 5, 1]]

        self.browser.open(with_data(self.reports["demo"], give_frames))
        frame = "document.querySelector('#screen image').getAttribute('href').split('#')[1]"
        for time, name in ((1, "first"), (7, "later"), (11, "other")):
            self.value(f"setTime({time * SECOND})")
            self.assertEqual(self.value(frame), name, time)


class PageOfARoughSession(ReportCase):
    report = "rough"

    def test_the_lanes_show_what_went_wrong(self):
        lanes = self.labels("#lanes ol")
        for lane in ("Viewer", "Device", "Video", "Close can be tapped", "Trackers", "Events to the page", "Network",
                     "Main thread blocked"):
            self.assertIn(lane, lanes)
        items = dict(self.value("[...document.querySelectorAll('.lane:not(.axis)')].map(lane => "
                                "[lane.querySelector('.name').textContent, "
                                "[...lane.querySelectorAll('.item')].map(each => each.ariaLabel)])"))
        self.assertEqual(len(items["Disturbances"]), 1, "a server that fails is nothing that the viewer does")
        self.assertFalse([label for label in items["Viewer"] if "servers" in label], items["Viewer"])
        self.assertFalse([label for label in items["Network"] if " js " in label], items["Network"])
        video = self.labels("#lanes .tall .item")
        self.assertTrue([label for label in video if label.startswith("stalled: ")], video)
        self.assertIn("not yet: 0.0 s to", " ".join(self.labels(".closes .no-close")))
        self.assertEqual(len(self.labels(".item.blocks")), 1)
        self.assertIn("main thread blocked for 0.5 s", self.labels(".item.blocks")[0])
        self.assertIn("http://ad.example/page.html: answered after 0.2 s", self.labels(".item.waits"))

    def test_a_bar_that_is_hovered_shows_what_it_is_and_the_lines_of_its_begin(self):
        self.browser.point_at(".item.stalled")
        shown = self.text("#line").splitlines()
        self.assertEqual(shown[0], "stalled: 2.3 s to 3.8 s")
        self.assertIn("video interrupted", shown[-1])

    def test_trackers_show_when_they_were_due_and_sent(self):
        labels = self.labels(".trackers .item")
        self.assertTrue([label for label in labels if re.match(r"midpoint: sent at [\d.]+ s, [\d.]+ s after", label)])
        self.assertTrue([label for label in labels if re.match(r"midpoint: due at [\d.]+ s, sent [\d.]+ s later",
                                                               label)], labels)
        missing = self.labels(".trackers .missing")
        self.assertEqual(len(missing), 1, labels)
        self.assertRegex(missing[0], r"^thirdQuartile: due at [\d.]+ s, never sent$")
        self.assertIn("1", self.text("#figures .bad:has(dt)"))
        rows = self.value("[...document.querySelectorAll('#ledger tbody tr')].map(row => row.innerText)")
        self.assertTrue([row for row in rows if "thirdQuartile" in row and "never sent" in row], rows)
        self.assertTrue([row for row in rows if "complete" in row and "not due" in row], rows)

    def test_a_finding_of_the_session_leads_to_its_moment(self):
        link = "#findings li:has(code:not(:empty)) a"
        self.assertIn("not percent-encoded", self.text(link))
        self.assertEqual(self.value(f"document.querySelector('{link}').getAttribute('href')"), "#t=1.3")
        self.browser.click(link)
        self.assertEqual(self.now(), 1.3)

    def test_copies_the_ledger_as_csv(self):
        self.value("Object.defineProperty(navigator, 'clipboard', {value: "
                   "{writeText: async text => { globalThis.kept = text; }}})")
        self.browser.click("#ledger th:nth-child(1) button")
        self.browser.click("#copy")
        self.browser.wait_for("document.getElementById('copied').textContent !== ''")
        text = self.value("globalThis.kept")
        self.assertTrue(text.endswith("\r\n"))
        table = list(csv.reader(io.StringIO(text, newline=""), strict=True))
        self.assertEqual(table[0], ["Tracker", "Due, s", "Sent, s", "Late, s", "Outcome", "Address"])
        self.assertEqual({len(row) for row in table}, {6})
        shown = self.value("[...document.querySelectorAll('#ledger tbody tr')].map(row => "
                           "[...row.children].map(cell => cell.innerText.replace('–', '')))")
        self.assertEqual(table[1:], shown, "as it is sorted")
        self.assertEqual([row[0] for row in table[1:]], sorted(row[0] for row in table[1:]))
        self.assertIn('http://t.example/start?a=1,2&q="x"', [row[5] for row in table])
        self.assertEqual(self.text("#copied"), f"{len(shown)} rows copied")

    def test_offers_the_csv_where_the_clipboard_is_refused(self):
        self.value("Object.defineProperty(navigator, 'clipboard', {value: "
                   "{writeText: async () => { throw new Error('no'); }}})")
        self.browser.click("#copy")
        self.browser.wait_for("!document.getElementById('csv').hidden")
        self.assertEqual(self.focused(), "csv")
        whole = self.value("document.getElementById('csv').selectionEnd === "
                           "document.getElementById('csv').value.length")
        self.assertTrue(whole)
        self.assertIn("Ctrl+C", self.text("#copied"))

    def test_names_what_the_page_is(self):
        self.value("setTime(3000000)")
        texts = self.value("[...document.querySelectorAll('#screen text')].map(each => each.textContent)")
        self.assertIn("Lamps & more", texts)
        self.assertIn("the ad's page", texts)


class PageOfAPod(ReportCase):
    report = "pod"

    def test_tells_the_story_of_both_ads(self):
        story = self.value("[...document.querySelectorAll('#story button')].map(each => each.innerText)")
        self.assertEqual(len([each for each in story if "next video" in each]), 1, story)
        self.assertEqual(len([each for each in story if "closed" in each]), 1, story)
        self.assertIn("10.0 s", story[-1])
        closed = self.value("[...document.querySelectorAll('#figures div')].map(each => each.innerText)"
                            ".filter(each => each.startsWith('Closed'))")
        self.assertEqual(closed, ["Closed\n10.0 s"])


class PageForEveryReader(ReportCase):
    """Keyboard, screen reader, colours, sizes, paper."""

    def test_fits_windows_of_every_width(self):
        for width in (320, 360, 600, 820, 1920):
            self.browser.resize(width, 800)
            self.assertLessEqual(self.value("document.documentElement.scrollWidth"), width)

    def test_each_control_has_a_name(self):
        self.assertEqual(self.browser.nameless(), [])
        stops = self.value("[...document.querySelectorAll('.lane:not(.axis) ol')].map(lane => "
                           "[lane.querySelectorAll('button').length, "
                           "lane.querySelectorAll('button[tabindex=\"0\"]').length])")
        self.assertEqual([tabs for buttons, tabs in stops], [min(buttons, 1) for buttons, tabs in stops],
                         "a lane is one stop")
        lanes = self.value("[...document.querySelectorAll('.lane:not(.axis) ol')].map(each => each.ariaLabel)")
        self.assertEqual(lanes, self.value("[...document.querySelectorAll('.lane:not(.axis) .name')]"
                                           ".map(each => each.textContent)"))
        self.assertEqual(self.labels("#screen > svg"), ["The device's screen"])
        self.assertEqual(self.labels("#back, #play, #on"), ["Previous moment", "Play", "Next moment"])
        self.assertEqual(self.count("#line[aria-live=polite], #copied[role=status]"), 2)
        self.assertTrue(self.value("document.querySelector(document.querySelector('.skip').getAttribute('href')) "
                                   "=== document.getElementById('trackers')"))
        lost = self.value("[...document.querySelectorAll('[aria-labelledby]')].filter(each => "
                          "!document.getElementById(each.getAttribute('aria-labelledby'))?.textContent).length")
        self.assertEqual(lost, 0)

    def test_the_tab_key_reaches_every_control_in_order_and_shows_where(self):
        expected = self.value("[...document.querySelectorAll('a[href], button, input, select, textarea, summary, "
                              "[tabindex]')].filter(each => each.tabIndex >= 0 && each.checkVisibility() && "
                              "!(each.type === 'radio' && !each.checked)).length")
        self.value("globalThis.reached = []; addEventListener('focusin', event => reached.push(event.target)); "
                   "document.activeElement.blur()")
        for _ in range(expected):
            self.browser.press("Tab")
        self.assertEqual(self.value("new Set(reached).size"), expected)
        self.assertTrue(self.value("reached.every((each, n) => n === 0 || "
                                   "reached[n - 1].compareDocumentPosition(each) & 4)"), "in the order of the page")
        self.value("document.getElementById('play').focus()")
        self.browser.press("Tab")
        self.browser.press("Tab", shift=True)
        self.assertEqual(self.focused(), "play")
        self.assertGreaterEqual(self.value("parseFloat(getComputedStyle(document.activeElement).outlineWidth)"), 2)

    def test_headings_and_landmarks(self):
        self.assertEqual(self.count("h1"), 1)
        self.assertEqual(self.count("main"), 1)
        levels = self.value("[...document.querySelectorAll('h1, h2, h3')].map(each => Number(each.tagName[1]))")
        self.assertTrue(all(below - above <= 1 for above, below in zip(levels, levels[1:])), levels)
        self.assertEqual(self.value("[...document.querySelectorAll('section')].filter(each => !document.getElementById("
                                    "each.getAttribute('aria-labelledby'))?.textContent).length"), 0)
        self.assertEqual(self.value("document.documentElement.lang"), "en")

    def test_dark_where_the_system_is(self):
        def brightness():
            return self.value("getComputedStyle(document.body).backgroundColor.match(/\\d+/g).slice(0, 3)"
                              ".reduce((sum, each) => sum + Number(each), 0)")

        self.assertGreater(brightness(), 600)
        self.browser.emulate(prefers_color_scheme="dark")
        self.assertLess(brightness(), 150)

    def test_axe_finds_nothing(self):
        if not os.path.exists(AXE):
            self.skipTest("axe-core is not installed (tools/setup.sh browser)")
        for report in self.reports.values():
            for scheme in ("light", "dark"):
                self.browser.open(report)
                self.browser.emulate(prefers_color_scheme=scheme)
                self.assertEqual(self.browser.axe(), [], scheme)

    def test_prints_without_what_only_a_screen_needs(self):
        self.browser.emulate(media="print")
        for selector in (".player", ".switches", "#cursor", "#scrubber", "#copy", ".skip", "#trace"):
            self.assertFalse(self.value(f"document.querySelector('{selector}').checkVisibility()"), selector)
        for selector in ("#screen svg", "#ledger tbody tr", "#matrix .card svg", ".closes .close", "#findings li"):
            self.assertTrue(self.value(f"document.querySelector('{selector}').checkVisibility()"), selector)
        self.browser.emulate()
        paper = os.path.join(self.folder, "report.pdf")
        self.browser.print(paper)
        with open(paper, "rb") as file:
            self.assertEqual(file.read(5), b"%PDF-")


def run(program, browser, names):
    """Runs the named cases, or all. Returns the process's exit status."""
    if lacks := browser.missing():
        print(f"skipped: {lacks} (tools/setup.sh browser)")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder, browser() as ReportCase.browser:
        ReportCase.folder = folder
        ReportCase.reports = make_reports(program, folder)
        return not unittest.main(argv=sys.argv[:1] + names, exit=False).result.wasSuccessful()


if __name__ == "__main__":
    if len(sys.argv) < 3 or sys.argv[2] not in BROWSERS:
        sys.exit("usage: report_test.py PATH-OF-QORO-AD chromium|firefox [TEST…]")
    sys.exit(run(sys.argv[1], BROWSERS[sys.argv[2]], sys.argv[3:]))
