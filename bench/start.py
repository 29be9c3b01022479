#!/usr/bin/env python3
"""Measures the time from a program's start to its first frame on the screen, beside gst-play and mpv in turn.

usage: bench/start.py QORO_AD FRAME_READER [--runs 9] [--keep]

Run it through tools/with_display.sh. Prints medians, ratios to gst-play, and the steps of the starts of an ad without and
with a page (qoro-ad play --trace-startup). --keep stores the figures for docs/measures.md.
"""
import argparse
import json
import os
import pathlib
import signal
import statistics
import subprocess
import tempfile
import time

import figures
import players

BAND = (0, 44, 375, 211)


def one_start(reader, command, area, points):
    """Milliseconds to the first frame and, by their names, to the points in a file."""
    eyes = subprocess.Popen([reader, *map(str, area), "0.1"], stdout=subprocess.PIPE, text=True)
    time.sleep(0.3)  # for the reader's own start
    began = time.clock_gettime(time.CLOCK_MONOTONIC)
    player = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
    first = json.loads(eyes.communicate()[0])["first"]
    if first is None:
        raise SystemExit(f"no frame seen of {command[0]}")
    found = {"first frame on the screen": (first - began) * 1000}
    if points:
        until = time.monotonic() + 5
        while points.name.startswith("page") and "page loaded" not in points.read_text() and time.monotonic() < until:
            time.sleep(0.01)
        for line in map(json.loads, points.read_text().splitlines()):
            found[line["what"]] = (line["monotonic"] - began) * 1000
        points.unlink()
    os.killpg(player.pid, signal.SIGTERM)
    try:
        player.wait(5)
    except subprocess.TimeoutExpired:
        os.killpg(player.pid, signal.SIGKILL)
        player.wait()
    return found


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("qoro_ad")
    arguments.add_argument("frame_reader")
    arguments.add_argument("--runs", type=int, default=9)
    arguments.add_argument("--keep", action="store_true")
    options = arguments.parse_args()

    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        clip = str(folder / "bars.mp4")
        subprocess.run([players.HERE / "make_clip.sh", clip], check=True)
        (folder / "page.html").write_text("<html><head></head><body style='background:#246;color:white'>still</body></html>")
        video = {"strVideoUrl": "bars.mp4", "fVideoWidth": 1280, "fVideoHeight": 720, "portraitVideoPos": "TOP",
                 "portraitModeType": 2, "landscapeModeType": 2, "bIsAutoStart": True, "iCloseBtnCountdown": 60,
                 "iBufferingSufferTime": -1, "strBackgroundColor": "4278190080"}

        def starts(ad, points):
            return players.qoro(options.qoro_ad, folder, ad, "--trace-startup", str(points)), BAND, points

        sink = "videoscale ! video/x-raw,width=375,height=211 ! videoconvert ! ximagesink"
        programs = {
            "gst-play": (["gst-play-1.0", "-q", "--no-interactive", "--videosink=" + sink, "--audiosink=fakesink sync=true",
                          clip], (0, 0, 375, 211), None),
            "mpv": (["mpv", "--no-config", "--no-border", "--no-keepaspect-window", "--no-osc", "--osd-level=0", "--ao=null",
                     "--vo=x11", "--hwdec=no", "--geometry=375x211+0+0", clip], (0, 0, 375, 211), None),
            "without a page": starts(dict(video, name="video"), folder / "video.points"),
            "with a page": starts(dict(video, name="page", strWebViewUrl="page.html"), folder / "page.points"),
        }
        found = {}
        for _ in range(options.runs):
            for label, (command, area, points) in programs.items():
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
