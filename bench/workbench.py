#!/usr/bin/env python3
"""Measures the commands of the workbench on the examples, and prints one JSON object.

usage: bench/workbench.py QORO_AD [--runs 5] [--keep]

`check` and `report` run on each example, the others on one: `explore` searches two moves, `shrink` the first session,
`studio` answers for its page once. For each example and command: the median over the runs of the processor time in seconds (user and system, of the program
and the processes that it has waited for), and of its peak resident memory in megabytes. The commands run without a
display; their output is thrown away. An exit status above 1, which means unusable input, ends the measurement. --keep
stores the figures for docs/measures.md.
"""
import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import urllib.request

import figures as kept

EXAMPLES = pathlib.Path(__file__).resolve().parent.parent / "examples"
ADS = ["creatives/end-card.json", "creatives/minimal.json", "creatives/two-videos.json", "demo",
       "simulator/first-session.json"]


def run(command):
    """CPU seconds and peak megabytes of a command."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, used = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode not in (0, 1):
        sys.exit(f"{' '.join(command)}: exit status {process.returncode}")
    return used.ru_utime + used.ru_stime, used.ru_maxrss / 1024


def measure(command, runs):
    seconds, megabytes = zip(*(run(command) for _ in range(runs)))
    return {"cpu_seconds": round(statistics.median(seconds), 3), "peak_megabytes": round(statistics.median(megabytes), 1)}


def studio(program, file):
    """CPU seconds and peak megabytes of a studio until its page has arrived."""
    process = subprocess.Popen([program, "studio", file], stdout=subprocess.PIPE, text=True)
    with urllib.request.urlopen(process.stdout.readline().strip()) as page:
        page.read()
    process.terminate()
    _, status, used = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return used.ru_utime + used.ru_stime, used.ru_maxrss / 1024


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", metavar="QORO_AD")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--keep", action="store_true")
    options = parser.parse_args()
    figures = {"runs": options.runs, "examples": {}, "commands": {}}
    demo, session = str(EXAMPLES / "demo"), str(EXAMPLES / "simulator" / "first-session.json")
    for label, command in {"explore demo --depth 2 --budget 5000": ["explore", demo, "--depth", "2", "--budget", "5000"],
                           "shrink first-session.json": ["shrink", session, "--while", "line request"],
                           "simulate first-session.json": ["simulate", session]}.items():
        figures["commands"][label] = measure([options.program, *command], options.runs)
    seconds, megabytes = zip(*(studio(options.program, demo) for _ in range(options.runs)))
    figures["commands"]["studio demo, one page"] = {"cpu_seconds": round(statistics.median(seconds), 3),
                                                    "peak_megabytes": round(statistics.median(megabytes), 1)}
    with tempfile.TemporaryDirectory() as folder:
        page = pathlib.Path(folder, "report.html")
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
