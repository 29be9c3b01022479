#!/usr/bin/env python3
"""Parses and resolves the same VAST tags with this program and with @dailymotion/vast-client, and prints both figures
and the ratio.

usage: bench/vast/compare_resolving.py VAST_BENCH [--runs 5]

Needs node and npm. The peer's package is installed in a temporary folder and removed afterwards. Both get the documents
from memory. The runs alternate; the figures are medians, in documents per second of processor time. Fails if the two do
not find the same ads, trackers, media files, icons and companions.
"""
import argparse
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
DOCUMENTS = HERE / "documents"


def output(*command):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE, text=True).stdout


def install(folder):
    """The folder of the peer's package and its dependencies, and the package's version."""
    output("npm", "install", "--silent", "--no-save", "--prefix", folder, "@dailymotion/vast-client")
    modules = folder / "node_modules"
    return modules, json.loads((modules / "@dailymotion/vast-client/package.json").read_text())["version"]


def require_equal(ours, theirs):
    """Compares the lines without order: the two merge wrappers in opposite directions."""
    ours, theirs = sorted(ours.splitlines()), sorted(theirs.splitlines())
    if not ours or ours == theirs:
        return ours
    only = [f"  this program only: {line}" for line in ours if line not in theirs]
    only += [f"  the peer only:     {line}" for line in theirs if line not in ours]
    sys.exit("compare_resolving: the two find different things:\n" + "\n".join(only or ["  repeated lines"]))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("vast_bench", type=pathlib.Path)
    parser.add_argument("--runs", type=int, default=5)
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as name:
        modules, version = install(pathlib.Path(name))
        peer = ("node", HERE / "resolving.mjs", modules, DOCUMENTS)
        found = require_equal(output(arguments.vast_bench, DOCUMENTS, "--show"), output(*peer, "--show"))
        if not found:
            sys.exit("compare_resolving: the tags lead to nothing")
        print(f"Both find the same {len(found)} things. Documents per second of processor time:")

        ours, theirs = {}, {}
        for _ in range(arguments.runs):
            report = output(arguments.vast_bench, DOCUMENTS, "--benchmark_format=json", "--benchmark_min_time=1")
            for benchmark in json.loads(report)["benchmarks"]:
                ours.setdefault(benchmark["name"], []).append(benchmark["items_per_second"])
            for tag, figure in json.loads(output(*peer, 1)).items():
                theirs.setdefault(tag, []).append(figure)

    print(f"{'tag':10}{'this program':>14}{'vast-client ' + version:>20}{'ratio':>8}")
    for tag, figures in ours.items():
        mine, other = statistics.median(figures), statistics.median(theirs[tag])
        print(f"{tag:10}{mine:14,.0f}{other:20,.0f}{mine / other:8.1f}")


if __name__ == "__main__":
    main()
