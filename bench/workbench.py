#!/usr/bin/env python3
"""Measures the commands of the workbench on the examples, and prints one JSON object.

usage: tools/with_display.sh bench/workbench.py QORO_AD [--runs 5] [--keep]

`check` and `report` run on each example, the others on one: `explore` searches two moves, `merge` puts two shards of that
search together, `shrink` the first session, `studio` answers for its page once, `play` shows the demo for a few seconds,
with and without a recording, and `simulate` replays the recording. For each example and command: the median over the
runs of the processor time in seconds (user and system, of the program and the processes that it has waited for), and of
the peak resident memory in megabytes of the largest of these processes, as GNU time prints it. The output of the commands
is thrown away. An exit status above 1, which means unusable input, ends the measurement. --keep stores the figures for
docs/measures.md.
"""
import argparse
import json
import os
import pathlib
import signal
import statistics
import subprocess
import sys
import tempfile
import urllib.request

import figures as kept

EXAMPLES = pathlib.Path(__file__).resolve().parent.parent / "examples"
ADS = ["creatives/end-card.json", "creatives/minimal.json", "creatives/two-videos.json", "demo",
       "simulator/first-session.json"]


# Seconds of the demo that are played.
PLAYED = 6


class Command:
    """A command under GNU time, because Linux counts the memory of the process that starts a program as the program's."""

    def __init__(self, command, output=subprocess.DEVNULL):
        self.command = command
        self.figures = tempfile.NamedTemporaryFile("r")
        self.process = subprocess.Popen(["time", "-q", "-f", "%M", "-o", self.figures.name, *command], stdout=output,
                                        text=True)

    def end(self):
        """CPU seconds and peak megabytes; ends the measurement if the command failed."""
        _, status, used = os.wait4(self.process.pid, 0)
        self.process.returncode = os.waitstatus_to_exitcode(status)
        if self.process.returncode not in (0, 1):
            sys.exit(f"{' '.join(self.command)}: exit status {self.process.returncode}")
        return used.ru_utime + used.ru_stime, int(self.figures.read()) / 1024


def run(command):
    return Command(command).end()


def medians(pairs):
    seconds, megabytes = zip(*pairs)
    return {"cpu_seconds": round(statistics.median(seconds), 3), "peak_megabytes": round(statistics.median(megabytes), 1)}


def measure(command, runs):
    return medians([run(command) for _ in range(runs)])


def studio(program, file):
    """CPU seconds and peak megabytes of a studio until its page has arrived."""
    command = Command([program, "studio", file], subprocess.PIPE)
    with urllib.request.urlopen(command.process.stdout.readline().strip()) as page:
        page.read()
    child = pathlib.Path(f"/proc/{command.process.pid}/task/{command.process.pid}/children").read_text().split()
    os.kill(int(child[0]), signal.SIGTERM)
    return command.end()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", metavar="QORO_AD")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--keep", action="store_true")
    options = parser.parse_args()
    figures = {"runs": options.runs, "examples": {}, "commands": {}}
    demo, session = str(EXAMPLES / "demo"), str(EXAMPLES / "simulator" / "first-session.json")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        recording, shards = str(folder / "recording.json"), [str(folder / f"{shard}.jsonl") for shard in (1, 2)]
        explore = ["explore", demo, "--depth", "2", "--budget", "5000"]
        for shard, file in enumerate(shards, 1):
            with open(file, "w", encoding="utf-8") as lines:
                subprocess.run([options.program, *explore, "--shard", f"{shard}/2"], stdout=lines, check=False)
        play = ["play", demo, "--for", str(PLAYED), "--mute-output"]
        commands = {
            " ".join(["explore demo", *explore[2:]]): explore,
            "merge, two shards of it": ["merge", *shards],
            "shrink first-session.json": ["shrink", session, "--while", "line request"],
            "simulate first-session.json": ["simulate", session],
            f"play demo --for {PLAYED}": [*play, "--trace", str(folder / "trace.json")],
            f"play demo --for {PLAYED} --record": [*play, "--trace", str(folder / "trace.json"), "--record", recording],
            "simulate RECORDING": ["simulate", recording],
        }
        for label, command in commands.items():
            figures["commands"][label] = measure([options.program, *command], options.runs)
        figures["commands"]["studio demo, one page"] = medians(
            [studio(options.program, demo) for _ in range(options.runs)])
        page = folder / "report.html"
        for ad in ADS:
            file = str(EXAMPLES / ad)
            figures["examples"][ad] = {
                "check": measure([options.program, "check", file], options.runs),
                "report": measure([options.program, "report", file, "-o", str(page)], options.runs),
                "report_megabytes": round(page.stat().st_size / 1e6, 2)}
    print(json.dumps(figures, indent=2))
    if options.keep:
        kept.keep("workbench", figures)


if __name__ == "__main__":
    main()
