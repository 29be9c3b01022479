#!/usr/bin/env python3
"""Measures `check` and `report` on each example, and prints one JSON object.

usage: bench/workbench.py QORO_AD [--runs 5]

For each example and command: the median over the runs of the processor time in seconds (user and system, of the program
and the processes that it has waited for), and of its peak resident memory in megabytes. Both commands run without a
display; their output is thrown away. An exit status above 1, which means unusable input, ends the measurement.
"""
import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

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


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", metavar="QORO_AD")
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    figures = {"runs": options.runs, "examples": {}}
    with tempfile.TemporaryDirectory() as folder:
        page = pathlib.Path(folder, "report.html")
        for ad in ADS:
            file = str(EXAMPLES / ad)
            figures["examples"][ad] = {
                "check": measure([options.program, "check", file], options.runs),
                "report": measure([options.program, "report", file, "-o", str(page)], options.runs),
                "report_megabytes": round(page.stat().st_size / 1e6, 2)}
    print(json.dumps(figures, indent=2))


if __name__ == "__main__":
    main()
