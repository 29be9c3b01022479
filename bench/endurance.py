#!/usr/bin/env python3
"""Plays for long, and plays what is heavy.

usage: bench/endurance.py QORO_AD FRAME_READER minute | heavy | hour [--minutes 60] [--keep]

Run it through tools/with_display.sh.

minute  a minute of 720p30, 720p60 and 1080p30 each, in the band: frames missed and their deviation from an even grid
heavy   20 s of 4K at 30 frames a second, and of 720p at 120: frames shown a second and the longest time between two,
        beside mpv
hour    an ad that is turned, paused and replayed: memory of all its processes each minute (PSS, and its
        anonymous part, which other programs do not influence); --minutes shortens it

Prints one JSON object; --keep stores it for docs/measures.md.
"""
import argparse
import json
import pathlib
import subprocess
import sys
import tempfile
import time

import figures
import programs

MINUTE = {"720p30": ("1280x720", 30), "720p60": ("1280x720", 60), "1080p30": ("1920x1080", 30)}
HEAVY = {"4K30": ("3840x2160", 30), "720p120": ("1280x720", 120)}
CORNER = (0, 0, 375, 211)


class Bench:
    def __init__(self, options, folder):
        self.options = options
        self.folder = folder

    def clip(self, seconds, size="1280x720", rate=30):
        subprocess.run([programs.HERE / "make_clip.sh", self.folder / "bars.mp4", str(seconds), size, str(rate)], check=True)
        return str(self.folder / "bars.mp4")

    def qoro(self, *more, **keys):
        return programs.qoro(self.options.qoro_ad, self.folder, "ad", dict(programs.AD, **keys), *more)

    def watch(self, command, area, seconds, rate):
        eyes = programs.Eyes(self.options.frame_reader, area, seconds, rate)
        player = programs.Player(command)
        seen = eyes.seen_of(player)
        player.end()
        return seen

    def minute(self):
        found = {}
        for label, (size, rate) in MINUTE.items():
            clip = self.clip(64, size, rate)
            for player, command, area in (("qoro-ad", self.qoro(), programs.BAND),
                                          ("mpv", programs.mpv(clip, "375x211+0+0"), CORNER)):
                seen = self.watch(command, area, 60, rate)
                found.setdefault(label, {})[player] = {key: seen[key] for key in ("seen", "missed", "jitter_p99", "longest")}
        return {"clips": found}

    def heavy(self):
        found = {}
        for label, (size, rate) in HEAVY.items():
            clip = self.clip(24, size, rate)
            for player, command, area in (("qoro-ad", self.qoro(), programs.BAND),
                                          ("mpv", programs.mpv(clip, "375x211+0+0"), CORNER)):
                seen = self.watch(command, area, 20, rate)
                found.setdefault(label, {})[player] = {"frames_per_second": round(seen["seen"] / 20, 1),
                                                       "longest": seen["longest"]}
        return {"clips": found}

    def hour(self):
        self.clip(14)
        seconds = self.options.minutes * 60
        steps, at = [], 2.0
        while at < seconds:
            # The video ends 14 s after each replay, in spite of the pause.
            steps += [{"at": at, "device": {"orientation": 3}}, {"at": at + 3, "device": {"orientation": 1}},
                      {"at": at + 4, "tap": "btnPlayAndPause"}, {"at": at + 5, "tap": "btnPlayAndPause"},
                      {"at": at + 18, "tap": "btnReplay"}]
            at += 20
        (self.folder / "steps.json").write_text(json.dumps(steps))
        player = programs.Player(self.qoro("--steps", str(self.folder / "steps.json"), "--for", str(seconds + 30)))
        pss, anonymous = [], []
        for minute in range(1, self.options.minutes + 1):
            time.sleep(max(0, player.began + minute * 60 - time.clock_gettime(time.CLOCK_MONOTONIC)))
            if player.process.poll() is not None:
                player.fail("early end")
            pids = player.tree()
            pss.append(round(programs.pss_megabytes(pids), 1))
            anonymous.append(round(programs.memory_megabytes(pids, "Anonymous"), 1))
            print(minute, pss[-1], anonymous[-1], file=sys.stderr, flush=True)
        player.end()
        return {"pss": pss, "anonymous": anonymous}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("qoro_ad")
    parser.add_argument("frame_reader")
    parser.add_argument("what", choices=("minute", "heavy", "hour"))
    parser.add_argument("--minutes", type=int, default=60)
    parser.add_argument("--keep", action="store_true")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        found = getattr(Bench(options, pathlib.Path(name)), options.what)()
    print(json.dumps(found, indent=1))
    if options.keep:
        figures.keep(options.what, found)


if __name__ == "__main__":
    main()
