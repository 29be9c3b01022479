#!/usr/bin/env python3
"""Measures the time from a program's start to its first frame on the screen, beside gst-play and mpv in turn.

usage: bench/start.py QORO_AD FRAME_READER [--before QORO_AD] [--runs 9] [--keep]

Run it through tools/with_display.sh. Prints medians, ratios to gst-play, and the steps of the starts of an ad without and
with a page (qoro-ad play --trace-startup). --before measures an earlier build of the program, too. --keep stores the figures for docs/measures.md.
"""
import argparse
import json
import pathlib
import statistics
import subprocess
import tempfile
import time

import figures
import programs


def one_start(reader, command, area, points):
    """Milliseconds to the first frame and, by their names, to the points in a file."""
    took, player = programs.first_frame(reader, command, area)
    found = {"first frame on the screen": took * 1000}
    if points:
        until = time.monotonic() + 5
        while points.name.startswith("page") and "page loaded" not in points.read_text() and time.monotonic() < until:
            time.sleep(0.01)
        for line in map(json.loads, points.read_text().splitlines()):
            found[line["what"]] = (line["monotonic"] - player.began) * 1000
        points.unlink()
    player.end()
    return found


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("qoro_ad")
    arguments.add_argument("frame_reader")
    arguments.add_argument("--before")
    arguments.add_argument("--runs", type=int, default=9)
    arguments.add_argument("--keep", action="store_true")
    options = arguments.parse_args()

    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        clip = str(folder / "bars.mp4")
        subprocess.run([programs.HERE / "make_clip.sh", clip], check=True)
        (folder / "page.html").write_text(programs.PAGE)

        def starts(program, name, **keys):
            points = folder / f"{name}.points"
            return (programs.qoro(program, folder, name, dict(programs.AD, **keys), "--trace-startup", str(points)),
                    programs.BAND, points)

        corner = (0, 0, 375, 211)
        players = {
            "gst-play": (programs.gst_play(clip, 375, 211), corner, None),
            "mpv": (programs.mpv(clip, "375x211+0+0"), corner, None),
            "without a page": starts(options.qoro_ad, "video"),
            "with a page": starts(options.qoro_ad, "page", strWebViewUrl="page.html"),
        }
        if options.before:
            players["before, without a page"] = starts(options.before, "video")
            players["before, with a page"] = starts(options.before, "page", strWebViewUrl="page.html")
        found = {}
        for _ in range(options.runs):
            for label, (command, area, points) in players.items():
                for what, milliseconds in one_start(options.frame_reader, command, area, points).items():
                    found.setdefault(label, {}).setdefault(what, []).append(milliseconds)

    medians = {label: {what: round(statistics.median(values), 1) for what, values in steps.items()}
               for label, steps in found.items()}
    peer = medians["gst-play"]["first frame on the screen"]
    for label, steps in medians.items():
        first = steps["first frame on the screen"]
        print(f"{label}: first frame after {first:.0f} ms, {first / peer:.2f} x gst-play")
        for what, milliseconds in sorted(steps.items(), key=lambda step: step[1]) if len(steps) > 1 else ():
            print(f"    {milliseconds:7.1f}  {what}")
    if options.keep:
        figures.keep("start", {"runs": options.runs, "medians": medians,
                               "ratios": {label: round(steps["first frame on the screen"] / peer, 2)
                                          for label, steps in medians.items()}})


if __name__ == "__main__":
    main()
