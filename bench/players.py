#!/usr/bin/env python3
"""Plays one clip with this program and with its peers, on one X server, and prints figures and ratios.

usage: bench/players.py QORO_AD FRAME_READER [--preload-bench PRELOAD_BENCH] [--runs 3] [--seconds 6] [--keep]

Run it through tools/with_display.sh. Every player is measured from outside: frame_reader reads the frame numbers from the
X server's picture; processor time and memory (PSS) are those of the player's whole process tree, excluding its first
second on screen. Prints medians over the runs; a ratio below 1 means less than the peer. --keep stores the figures for
docs/measures.md.
"""
import argparse
import functools
import http.server
import json
import os
import pathlib
import signal
import statistics
import subprocess
import tempfile
import threading
import time

import figures as kept

HERE = pathlib.Path(__file__).resolve().parent
TICKS = os.sysconf("SC_CLK_TCK")


def tree(root):
    """The process and all its descendants."""
    children = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                stat = pathlib.Path("/proc", entry, "stat").read_text()
            except OSError:
                continue
            children.setdefault(int(stat.rsplit(")", 1)[1].split()[1]), []).append(int(entry))
    found, todo = [], [root]
    while todo:
        pid = todo.pop()
        found.append(pid)
        todo += children.get(pid, [])
    return found


def cpu_seconds(pids):
    total = 0
    for pid in pids:
        try:
            fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
            total += int(fields[11]) + int(fields[12])
        except OSError:
            pass
    return total / TICKS


def pss_megabytes(pids):
    total = 0
    for pid in pids:
        try:
            for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
                if line.startswith("Pss:"):
                    total += int(line.split()[1])
        except OSError:
            pass
    return total / 1024


def one_run(reader, command, area, seconds):
    log = tempfile.TemporaryFile()
    began = time.clock_gettime(time.CLOCK_MONOTONIC)
    player = subprocess.Popen(command, stdout=log, stderr=log, start_new_session=True)
    eyes = subprocess.Popen([reader, *map(str, area), str(seconds + 1)], stdout=subprocess.PIPE, text=True)
    # Exclude the first second of playback: a slow start is not part of the playing cost.
    time.sleep(2.0)
    pids = tree(player.pid)
    cpu_before, clock_before = cpu_seconds(pids), time.monotonic()
    time.sleep(seconds - 2.0)
    cpu = (cpu_seconds(pids) - cpu_before) / (time.monotonic() - clock_before)
    pss = pss_megabytes(pids)
    seen = json.loads(eyes.communicate()[0])
    try:
        os.killpg(player.pid, signal.SIGTERM)
        player.wait(5)
    except (ProcessLookupError, subprocess.TimeoutExpired):
        os.killpg(player.pid, signal.SIGKILL)
    if seen["first"] is None:
        log.seek(0)
        raise SystemExit(f"no frame seen of {command[0]}: {log.read().decode(errors='replace')[-400:]}")
    return {"cpu": cpu, "pss": pss, "first_ms": (seen["first"] - began) * 1000, "missed": seen["missed"],
            "jitter_p99": seen["jitter_p99"]}


def qoro(program, folder, ad, *options):
    path = folder / (ad.pop("name") + ".json")
    path.write_text(json.dumps(ad))
    sandbox = subprocess.run([HERE.parent / "tools" / "web_sandbox_option.sh"], capture_output=True, text=True)
    return [program, "play", *sandbox.stdout.split(), "--mute-output", *options, str(path)]


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
    ad = dict(ad, name="later", strVideoUrl=f"http://127.0.0.1:{server.server_port}/bars.mp4")
    (folder / "steps.json").write_text('[{"at": 2, "open": 0}]')
    player = subprocess.Popen(qoro(program, folder, ad, "--steps", str(folder / "steps.json")), start_new_session=True,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    seen = json.loads(subprocess.run([reader, *map(str, area), "1"], stdout=subprocess.PIPE).stdout)
    os.killpg(player.pid, signal.SIGTERM)
    player.wait(5)
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
    sandbox = subprocess.run([HERE.parent / "tools" / "web_sandbox_option.sh"], capture_output=True, text=True)
    subprocess.run([program, "play", *sandbox.stdout.split(), "--mute-output", "--trace", trace, "--for", str(seconds),
                    HERE.parent / "examples" / "demo" / "ad.json"], check=True, stderr=subprocess.DEVNULL)
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
    arguments.add_argument("--preload-bench")
    arguments.add_argument("--runs", type=int, default=3)
    arguments.add_argument("--seconds", type=float, default=6)
    arguments.add_argument("--keep", action="store_true")
    options = arguments.parse_args()

    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        subprocess.run([HERE / "make_clip.sh", folder / "bars.mp4"], check=True)
        clip = str(folder / "bars.mp4")
        (folder / "page.html").write_text("<html><head></head><body style='background:#246;color:white'>still</body></html>")
        common = {"strVideoUrl": "bars.mp4", "fVideoWidth": 1280, "fVideoHeight": 720, "portraitVideoPos": "TOP",
                  "portraitModeType": 2, "landscapeModeType": 2, "bIsAutoStart": True, "iCloseBtnCountdown": 60,
                  "iBufferingSufferTime": -1, "strBackgroundColor": "4278190080"}
        video_only = dict(common, name="video")
        with_page = dict(common, name="page", strWebViewUrl="page.html")

        paused = folder / "paused.json"
        paused.write_text('[{"at": 1, "touch": [187, 149]}]')

        sink = "videoscale ! video/x-raw,width={},height={} ! videoconvert ! ximagesink"
        mpv = ["mpv", "--no-config", "--no-border", "--no-keepaspect-window", "--no-osc", "--osd-level=0", "--ao=null",
               "--vo=x11", "--hwdec=no"]
        band, screen = (0, 44, 375, 211), (73, 0, 666, 375)
        players = {
            "gst-play band": (["gst-play-1.0", "-q", "--no-interactive", "--videosink=" + sink.format(375, 211),
                               "--audiosink=fakesink sync=true", clip], (0, 0, 375, 211)),
            "mpv band": ([*mpv, "--geometry=375x211+0+0", clip], (0, 0, 375, 211)),
            "qoro-ad band": (qoro(options.qoro_ad, folder, dict(video_only)), band),
            "qoro-ad band, page": (qoro(options.qoro_ad, folder, dict(with_page)), band),
            "mpv turned": ([*mpv, "--video-rotate=90", "--geometry=375x812+0+0", clip], None),
            "mpv full": ([*mpv, "--geometry=812x375+0+0", clip], screen),
            "qoro-ad full": (qoro(options.qoro_ad, folder, dict(video_only), "--orientation", "3"), screen),
            "qoro-ad paused": (qoro(options.qoro_ad, folder, dict(video_only), "--steps", str(paused)), None),
        }
        medians = {}
        for run in range(options.runs):
            for label, (command, area) in players.items():
                if area is None:
                    # A rotated picture's bar code is upright and a paused one has no frames: measure only the cost.
                    player = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                              start_new_session=True)
                    time.sleep(2)
                    pids = tree(player.pid)
                    before, clock = cpu_seconds(pids), time.monotonic()
                    time.sleep(options.seconds - 2)
                    figures = {"cpu": (cpu_seconds(pids) - before) / (time.monotonic() - clock),
                               "pss": pss_megabytes(pids)}
                    os.killpg(player.pid, signal.SIGKILL)
                    player.wait()
                else:
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
        opened = statistics.median(open_to_frame(options.frame_reader, options.qoro_ad, folder, video_only, band)
                                   for _ in range(options.runs))
        print(f"opened in a running program, to the first frame: {opened:.0f} ms")
        for how in ("without", "with") if options.preload_bench else ():
            soon = statistics.median(opened_to_screen(options.frame_reader, options.preload_bench, clip, how, band)
                                     for _ in range(options.runs))
            print(f"the first ad of a program {how} a preload, to its first frame: {soon:.0f} ms")
        delays = tracker_delays(options.qoro_ad, folder, 16)
        print(f"{len(delays)} trackers, from the decision to the server: median {statistics.median(delays):.1f} ms, "
              f"longest {max(delays):.1f} ms")
        if options.keep:
            kept.keep("players", {"runs": options.runs, "ratios": ratios, "medians": {
                label: {key: round(value, 4) for key, value in figures.items()} for label, figures in medians.items()}})


if __name__ == "__main__":
    main()
