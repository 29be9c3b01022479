#!/usr/bin/env python3
"""Measures the time from a program's start to its first frame on the screen, beside gst-play and mpv in turn.

usage: bench/start.py QORO_AD FRAME_READER [--before QORO_AD] [--runs 9] [--keep]

Run it through tools/with_display.sh. Prints medians, ratios to gst-play, and the steps of the starts of an ad without and
with a page (qoro-ad play --trace-startup). When the page is on the screen is measured in starts of their own. --before
measures an earlier build of the program, too. --keep stores the figures for docs/measures.md.
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


FRAME, PAGE = "first frame on the screen", "page on the screen"


def one_start(reader, command, what, area, points):
    """Milliseconds to what appears in an area and, by their names, to the points in a file."""
    took, player = programs.first_frame(reader, command, area)
    found = {what: took * 1000}
    if points:
        until = time.monotonic() + 5
        while points.stem == "page" and "page loaded" not in points.read_text() and time.monotonic() < until:
            time.sleep(0.01)
        for line in map(json.loads, points.read_text().splitlines()):
            found[line["what"]] = (line["monotonic"] - player.began) * 1000
    player.end()
    return found


def starts_of(program, folder, label):
    """The starts of a program by their labels; the page is looked at in starts of its own."""
    def command(name, **keys):
        points = folder / f"{name}.points"
        return programs.qoro(program, folder, name, dict(programs.AD, **keys), "--trace-startup", str(points)), points

    video, video_points = command("video")
    page, page_points = command("page", strWebViewUrl="page.html")
    return [(label + "without a page", video, FRAME, programs.BAND, video_points),
            (label + "with a page", page, FRAME, programs.BAND, page_points),
            (label + "with a page", page, PAGE, programs.BELOW, None)]


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
        (folder / "page.html").write_text(programs.CODED_PAGE)
        corner = (0, 0, 375, 211)
        starts = [("gst-play", programs.gst_play(clip, 375, 211), FRAME, corner, None),
                  ("mpv", programs.mpv(clip, "375x211+0+0"), FRAME, corner, None),
                  *starts_of(options.qoro_ad, folder, "")]
        if options.before:
            starts += starts_of(options.before, folder, "before, ")
        found = {}
        for _ in range(options.runs):
            for label, *start in starts:
                for what, milliseconds in one_start(options.frame_reader, *start).items():
                    found.setdefault(label, {}).setdefault(what, []).append(milliseconds)

    medians = {label: {what: round(statistics.median(values), 1) for what, values in steps.items()}
               for label, steps in found.items()}
    peer = medians["gst-play"][FRAME]
    for label, steps in medians.items():
        first = steps[FRAME]
        print(f"{label}: first frame after {first:.0f} ms, {first / peer:.2f} x gst-play")
        for what, milliseconds in sorted(steps.items(), key=lambda step: step[1]) if len(steps) > 1 else ():
            print(f"    {milliseconds:7.1f}  {what}")
    if options.keep:
        figures.keep("start", {"runs": options.runs, "medians": medians,
                               "ratios": {label: round(steps[FRAME] / peer, 2)
                                          for label, steps in medians.items()}})


if __name__ == "__main__":
    main()
