#!/usr/bin/env python3
"""Breaks a report's page in many ways, and runs the browser's cases on each: faults.py PATH-OF-QORO-AD chromium|firefox.

Prints which case notices a fault, and fails if one stays unnoticed. Takes minutes: run it after a change of the page or of
its cases. `faults.py … NAME` tries the faults whose name contains NAME."""

import base64
import hashlib
import io
import re
import sys
import tempfile
import unittest

import report_test
from browser import Browser

# Name of the fault, a text of the page, and what takes its place.
FAULTS = [
    ("keys of the page", 'document.addEventListener("keydown"', 'document.addEventListener("none"'),
    ("keys of a lane", 'list.addEventListener("keydown"', 'list.addEventListener("none"'),
    ("keys of the trace", 'byId("trace").addEventListener("keydown"', 'byId("trace").addEventListener("none"'),
    ("lane without a tab stop", "if (buttons.length > 0) buttons[0].tabIndex = 0;", ""),
    ("focus not shown", ":focus-visible { outline: 3px solid", ":focus-visible { outline: 0 solid"),
    ("name of a button", 'aria-label="Previous moment" title="Previous moment (←)"', ""),
    ("name of a lane", '{class: "track", "aria-label": lane.name}', '{class: "track"}'),
    ("name of an item", '"aria-label": item.label,', ""),
    ("name of the picture", '"The device\'s screen"', "undefined"),
    ("value of the slider", 'scrubber.setAttribute("aria-valuetext"', 'scrubber.setAttribute("data-text"'),
    ("announcement of a step", 'byButton ? "polite" : "off"', '"off"'),
    ("announcements while playing", '  byId("now").setAttribute("aria-live", "off");\n', ""),
    ("live region", ' aria-live="polite"', ""),
    ("status region", ' role="status"', ""),
    ("level of a heading", '<h2 id="matrix-heading">', '<h2 hidden></h2><h2 id="other">'),
    ("language", '<html lang="en">', "<html>"),
    ("skip link", 'href="#trackers"', 'href="#nowhere"'),
    ("mouse on the slider", "    setTime(Number(scrubber.value));", ""),
    ("button for the next moment", 'byId("on").addEventListener("click", () => step(1));', ""),
    ("previous moment", "moments.findLast(at => at < session.now)", "session.now"),
    ("speed", '* Number(byId("speed").value)', ""),
    ("end of playing", "if (exact >= sessionEnd) pause();\n    else", ""),
    ("reduced motion of the player", "calm.matches\n        ? moments[", "false\n        ? moments["),
    ("reduced motion of the style", "@media (prefers-reduced-motion: no-preference)", "@media all"),
    ("time in the address", "/^#t=([\\d.]+)$/", "/^#nothing=(x)$/"),
    ("another time in the address", 'addEventListener("hashchange"', 'addEventListener("none"'),
    ("moment of the story", "onclick: () => goThere(time)", "onclick: () => {}"),
    ("end of a pod", ".lastIndexOf(true)", ".indexOf(true)"),
    ("next video", 'add(at, "next video", plays?.[0]);', ""),
    ("link of a finding", "onclick: event => goThere(at, event)", "onclick: event => event.preventDefault()"),
    ("hovering", "onpointerenter: () => show(item),", ""),
    ("focusing", "onfocus: () => show(item),", ""),
    ("choosing an item", "onclick: () => go(item.from),", ""),
    ("lines of a bar", "lines: linesAt(from),", "lines: [],"),
    ("label above the lines", "texts.unshift(label)", "0"),
    ("current line of the trace", 'row.setAttribute("aria-current", "time");', ""),
    ("lines of the past", 'rows[n].classList.toggle("past", n <= last);', ""),
    ("stalled video", 'spans(data.video, state => (state === "absent" ? null : state))',
     'spans(data.video, state => (state === "stalled" ? null : state))'),
    ("time without a close", "sight => sight.open && !sight.close", "() => false"),
    ("disturbances apart", "const isDisturbance = fields => ", "const isDisturbance = fields => false && "),
    ("lines of a lane", 'pointsIn("Network");', 'pointsIn("Events to the page");'),
    ("lost tracker", 'className: "point missing",', 'className: "point",'),
    ("late tracker", "const late = due !== null && sent > due;", "const late = false;"),
    ("answers of the network", "if (answer)\n", "if (false)\n"),
    ("blocked main thread", "data.blocked.map(", "[].map("),
    ("order of the ledger", "return descending ? -order : order;", "return order;"),
    ("what was not sent", "return (x === null) - (y === null);", "return (y === null) - (x === null);"),
    ("announced order", 'head.setAttribute("aria-sort"', 'head.setAttribute("data-sort"'),
    ("link of the ledger", "onclick: event => go(column.of(entry), event)", "onclick: event => event.preventDefault()"),
    ("outcome of a tracker", 'return due === null ? "not due" : "never sent";', 'return "not due";'),
    ("quotes of the CSV", "text.replace(/\"/g, '\"\"')", "text"),
    ("commas of the CSV", '/[",\\r\\n]/.test(text)', "false"),
    ("lines of the CSV", '.join("\\r\\n") + "\\r\\n"', '.join("\\n") + "\\n"'),
    ("order of the CSV", "const text = ledgerAsCsv(entries);", "const text = ledgerAsCsv(data.trackers);"),
    ("CSV without a clipboard", "area.hidden = false;", ""),
    ("turned device", "turned ? [h, w] : [w, h];\n  const edge", "[w, h];\n  const edge"),
    ("place of a view", "translate(${-width / 2} ${-height / 2})`});\n  if (view.alpha", "`});\n  if (view.alpha"),
    ("pictures of controls", "if (picture)\n", "if (false)\n"),
    ("texts of controls", "if (view.text) group.append(", "if (false) group.append("),
    ("countdown", "if (view.count) group.append(", "if (false) group.append("),
    ("touch of the viewer", "shown.touch = touch && touch[1];", ""),
    ("frames of another video", "still[2] === source && ", ""),
    ("safe areas of the screen", 'if (!byId("show-safe").checked) shown.insets = undefined;', "shown.insets = undefined;"),
    ("mark of the close", 'name === "btnClose" ? "tappable close" : "tappable"', '"tappable"'),
    ("marks of the matrix", "marks: entry.faults.filter(fault => fault.frame).map(", "marks: [].map("),
    ("safe areas of the matrix", "    insets: entry.insets,", ""),
    ("holdings of the matrix", "data.matrix.filter(entry => entry.holding === holding)", "data.matrix"),
    ("only with faults", "only.checked ? entries", "false ? entries"),
    ("markup in a text", "  element.append(...children.filter(child => child !== null && child !== undefined));\n"
     "  return element;\n}\n\n/** Index", "  for (const child of children) if (child instanceof Node) element.append(child);"
     " else element.insertAdjacentHTML('beforeend', child);\n  return element;\n}\n\n/** Index"),
    ("request against the policy", "addMatrix();\n/** The time", "addMatrix(); fetch('http://127.0.0.1:49999/').catch(() => 0);"
     "\n/** The time"),
    ("request by a loose policy", "default-src 'none'", "default-src *", "addMatrix();\n/** The time",
     "addMatrix(); fetch('http://127.0.0.1:49999/').catch(() => 0);\n/** The time"),
    ("exception", "addMatrix();\n/** The time", "addMatrix(); setTimeout(() => missing());\n/** The time"),
    ("contrast", "--quiet: #5d5f70", "--quiet: #a5a7b0"),
    ("contrast in the dark", "--quiet: #a9abc0", "--quiet: #55565f"),
    ("dark colours", "@media (prefers-color-scheme: dark)", "@media (width: 0)"),
    ("narrow window", "#session { grid-template-columns: minmax(0, 1fr); }", ""),
    ("wide table", ".wide { overflow-x: auto;", ".wide {"),
    ("print", ".player, .switches, .detail, .legend, .skip, .heading button, .heading label, fieldset { display: none; }",
     ""),
]


def broken(page, replacements):
    """The page with texts replaced, and with the hashes that its policy then needs."""
    for old, new in zip(replacements[::2], replacements[1::2]):
        if page.count(old) != 1:
            sys.exit(f"faults: expected once in the page, found {page.count(old)} times: {old}")
        page = page.replace(old, new)
    def sources(element):
        pieces = re.findall(f"<{element}>(.*?)</{element}>", page, re.DOTALL)
        return " ".join("'sha256-" + base64.b64encode(hashlib.sha256(each.encode()).digest()).decode() + "'"
                        for each in pieces)
    page = re.sub(r"style-src [^;]*", lambda _: "style-src " + sources("style"), page, count=1)
    return re.sub(r"script-src [^;]*", lambda _: "script-src " + sources("script"), page, count=1)


def first_complaint():
    """The first case that fails; empty if all pass."""
    suite = unittest.defaultTestLoader.loadTestsFromModule(report_test)
    result = unittest.TextTestRunner(stream=io.StringIO(), failfast=True).run(suite)
    bad = result.failures + result.errors
    return bad[0][0].id().split(".", 1)[1] if bad else ""


def main(program, browser, part):
    """Returns the exit status. With part, only faults whose name contains it."""
    unnoticed = 0
    case = report_test.ReportCase
    Browser.PATIENCE = 10
    with tempfile.TemporaryDirectory() as case.folder, browser() as case.browser:
        case.reports = report_test.make_reports(program, case.folder)
        pages = {}
        for name, path in case.reports.items():
            with open(path, encoding="utf-8", newline="") as file:
                pages[name] = file.read()
        for name, *replacements in [("none", "", ""), *FAULTS]:
            if part not in name and name != "none":
                continue
            for report, path in case.reports.items():
                with open(path, "w", encoding="utf-8", newline="") as file:
                    file.write(broken(pages[report], replacements if name != "none" else []))
            noticed = first_complaint()
            if name == "none" and noticed:
                sys.exit(f"faults: the page itself fails: {noticed}")
            if name != "none":
                unnoticed += not noticed
                print(f"{name}: {noticed or 'NOT NOTICED'}", flush=True)
    return unnoticed > 0


if __name__ == "__main__":
    if len(sys.argv) not in (3, 4) or sys.argv[2] not in report_test.BROWSERS:
        sys.exit("usage: faults.py PATH-OF-QORO-AD chromium|firefox [NAME]")
    sys.exit(main(sys.argv[1], report_test.BROWSERS[sys.argv[2]], sys.argv[3] if len(sys.argv) > 3 else ""))
