#!/usr/bin/env python3
"""Plays one clip with this program and with its peers, on one X server, and prints figures and ratios.

usage: bench/players.py QORO_AD FRAME_READER PRELOAD_BENCH [--runs 3] [--seconds 6] [--keep]

Run it through tools/with_display.sh. Every player is measured from outside: frame_reader reads the frame numbers from the
X server's picture; processor time and memory (PSS) are those of the player's whole process tree, excluding its first
second on screen. Prints medians over the runs; a ratio below 1 means less than the peer. --keep stores the figures for
docs/measures.md.
"""
import argparse
import functools
import http.server
import json
import pathlib
import statistics
import subprocess
import tempfile
import threading
import time

import figures as kept
import programs


def one_run(reader, command, area, seconds):
    player = programs.Player(command)
    # A rotated picture's bar code is upright and a paused one has no frames: without an area, only the cost counts.
    eyes = programs.Eyes(reader, area, seconds + 1) if area else None
    # Exclude the first second of playback: a slow start is not part of the playing cost.
    time.sleep(2.0)
    pids = player.tree()
    cpu_before, clock_before = programs.cpu_seconds(pids), time.monotonic()
    time.sleep(seconds - 2.0)
    figures = {"cpu": (programs.cpu_seconds(pids) - cpu_before) / (time.monotonic() - clock_before),
               "pss": programs.pss_megabytes(pids)}
    if eyes:
        seen = eyes.seen_of(player)
        figures.update(first_ms=(seen["first"] - player.began) * 1000, missed=seen["missed"],
                       jitter_p99=seen["jitter_p99"])
    player.end()
    return figures


class Asked(http.server.SimpleHTTPRequestHandler):
    """A file server that records the time of each file's first request."""
    first = {}

    def do_GET(self):
        self.first.setdefault(self.path, time.clock_gettime(time.CLOCK_MONOTONIC))
        super().do_GET()

    def log_message(self, *_):
        pass


def open_to_frame(reader, program, folder, ad, area):
    """Milliseconds from a running program's first request for the video to its first frame on screen."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Asked, directory=folder))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    Asked.first.clear()
    ad = dict(ad, strVideoUrl=f"http://127.0.0.1:{server.server_port}/bars.mp4")
    (folder / "steps.json").write_text('[{"at": 2, "open": 0}]')
    eyes = programs.Eyes(reader, area, 1)
    player = programs.Player(programs.qoro(program, folder, "later", ad, "--steps", str(folder / "steps.json")))
    seen = eyes.seen_of(player)
    player.end()
    server.shutdown()
    return (seen["first"] - Asked.first["/bars.mp4"]) * 1000


def opened_to_screen(reader, bench, clip, how, area):
    """Milliseconds from the first opening of an ad in a running program to its first frame on screen."""
    eyes = subprocess.Popen([reader, *map(str, area), "1"], stdout=subprocess.PIPE, text=True)
    lines = subprocess.run([bench, clip, how, "1"], capture_output=True, text=True, check=True).stdout.split()
    return (json.loads(eyes.communicate()[0])["first"] - float(lines[0])) * 1000


def tracker_delays(program, folder, seconds):
    """Milliseconds from the decision to send a tracker to its arrival at a server, over the demo ad."""
    trace = folder / "trace.jsonl"
    subprocess.run([program, "play", *programs.sandbox(), "--mute-output", "--trace", trace, "--for", str(seconds),
                    programs.HERE.parent / "examples" / "demo" / "ad.json"], check=True, stderr=subprocess.DEVNULL)
    sent, delays = {}, []
    for line in map(json.loads, trace.read_text().splitlines()):
        if line["what"] == "request" and line["for"] == "tracking":
            sent["/" + line["url"].split("/", 3)[3]] = line["t"]
        elif line["what"] == "hit":
            delays.append((line["t"] - sent.pop(line["url"])) * 1000)
    return delays


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("qoro_ad")
    arguments.add_argument("frame_reader")
    arguments.add_argument("preload_bench")
    arguments.add_argument("--runs", type=int, default=3)
    arguments.add_argument("--seconds", type=float, default=6)
    arguments.add_argument("--keep", action="store_true")
    options = arguments.parse_args()

    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        subprocess.run([programs.HERE / "make_clip.sh", folder / "bars.mp4"], check=True)
        clip = str(folder / "bars.mp4")
        (folder / "page.html").write_text(programs.PAGE)

        def qoro(name, *more, **keys):
            return programs.qoro(options.qoro_ad, folder, name, dict(programs.AD, **keys), *more)

        paused = folder / "paused.json"
        paused.write_text('[{"at": 1, "touch": [187, 149]}]')

        corner = (0, 0, 375, 211)
        players = {
            "gst-play band": (programs.gst_play(clip, 375, 211), corner),
            "mpv band": (programs.mpv(clip, "375x211+0+0"), corner),
            "qoro-ad band": (qoro("video"), programs.BAND),
            "qoro-ad band, page": (qoro("page", strWebViewUrl="page.html"), programs.BAND),
            "mpv turned": (programs.mpv(clip, "375x812+0+0", "--video-rotate=90"), None),
            "mpv full": (programs.mpv(clip, "812x375+0+0"), programs.SCREEN),
            "qoro-ad full": (qoro("video", "--orientation", "3"), programs.SCREEN),
            "qoro-ad paused": (qoro("video", "--steps", str(paused)), None),
        }
        medians = {}
        for run in range(options.runs):
            for label, (command, area) in players.items():
                figures = one_run(options.frame_reader, command, area, options.seconds)
                for key, value in figures.items():
                    medians.setdefault(label, {}).setdefault(key, []).append(value)
        medians = {label: {key: statistics.median(values) for key, values in figures.items()}
                   for label, figures in medians.items()}

        print(f"{'player':22}{'cpu s/s':>9}{'first ms':>10}{'missed':>8}{'jitter p99 ms':>15}{'PSS MB':>9}")
        for label, figures in medians.items():
            print(f"{label:22}{figures['cpu']:9.3f}{figures.get('first_ms', float('nan')):10.0f}"
                  f"{figures.get('missed', float('nan')):8.0f}{figures.get('jitter_p99', float('nan')):15.2f}"
                  f"{figures['pss']:9.0f}")
        def ratio(label, figure, *peers):
            return round(medians[label][figure] / min(medians[peer][figure] for peer in peers), 2)

        ratios = {
            "CPU, band, against the cheaper peer": ratio("qoro-ad band", "cpu", "gst-play band", "mpv band"),
            "CPU, band over a still page, against the band alone": ratio("qoro-ad band, page", "cpu", "qoro-ad band"),
            "CPU, full screen, against mpv": ratio("qoro-ad full", "cpu", "mpv full"),
            "CPU, full screen, against mpv with a rotated picture": ratio("qoro-ad full", "cpu", "mpv turned"),
            "PSS, band, against mpv": ratio("qoro-ad band", "pss", "mpv band"),
            "PSS, band over a page, against mpv": ratio("qoro-ad band, page", "pss", "mpv band"),
        }
        print()
        for what, value in ratios.items():
            print(f"{what}: {value:.2f}")
        latency = {"opened": statistics.median(
            open_to_frame(options.frame_reader, options.qoro_ad, folder, programs.AD, programs.BAND)
            for _ in range(options.runs))}
        print(f"opened in a running program, to the first frame: {latency['opened']:.0f} ms")
        for how in ("without", "with"):
            latency[how] = statistics.median(
                opened_to_screen(options.frame_reader, options.preload_bench, clip, how, programs.BAND)
                for _ in range(options.runs))
            print(f"the first ad of a program {how} a preload, to its first frame: {latency[how]:.0f} ms")
        delays = tracker_delays(options.qoro_ad, folder, 16)
        latency.update(trackers=len(delays), tracker=statistics.median(delays), longest_tracker=max(delays))
        print(f"{len(delays)} trackers, from the decision to the server: median {latency['tracker']:.1f} ms, "
              f"longest {latency['longest_tracker']:.1f} ms")
        if options.keep:
            kept.keep("players", {"runs": options.runs, "ratios": ratios, "latency": {
                key: round(value, 2) for key, value in latency.items()}, "medians": {
                label: {key: round(value, 4) for key, value in figures.items()} for label, figures in medians.items()}})


if __name__ == "__main__":
    main()
