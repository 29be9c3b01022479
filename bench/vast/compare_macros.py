#!/usr/bin/env python3
"""Expands the same addresses with this program and with @dailymotion/vast-client, and prints both figures and the ratio.

usage: bench/vast/compare_macros.py MACROS_BENCH [--runs 5]

Needs node and npm. The peer's package is installed in a temporary folder and removed afterwards. The runs of both
alternate; the figures are medians, in processor time. Fails if the two expand an address differently, apart from its time, its random
number, and a zone of zero, which they write differently.
"""
import argparse
import json
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ADDRESSES = HERE / "addresses.txt"


def output(*command):
    return subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE, text=True).stdout


def install(folder):
    """The module with the peer's expansion, and its version."""
    output("npm", "install", "--silent", "--no-save", "--prefix", folder, "@dailymotion/vast-client")
    package = folder / "node_modules/@dailymotion/vast-client"
    # The package's sources are modules with imports that only a bundler resolves.
    for name in ("util", "macros"):
        text = (package / f"src/util/{name}.js").read_text()
        (folder / f"{name}.mjs").write_text(text.replace("from './macros'", "from './macros.mjs'"))
    return folder / "util.mjs", json.loads((package / "package.json").read_text())["version"]


def without_time_and_chance(text):
    text = re.sub(r"\bt=\d{4}-\d\d-\d\dT\d\d%3A\d\d%3A\d\d\.\d{3}(Z|%2B00)&", "t=TIME&", text)
    return re.sub(r"\bcb=\d{8}&", "cb=RANDOM&", text)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("macros_bench", type=pathlib.Path)
    parser.add_argument("--runs", type=int, default=5)
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as name:
        util, version = install(pathlib.Path(name))
        ours = without_time_and_chance(output(arguments.macros_bench, ADDRESSES, "--show")).splitlines()
        theirs = without_time_and_chance(output("node", HERE / "macros.mjs", util, ADDRESSES, "--show")).splitlines()
        for mine, other in zip(ours, theirs, strict=True):
            if mine != other:
                sys.exit(f"compare_macros: the expansions differ:\n  {mine}\n  {other}")

        figures = {"reused_string": [], "new_string": [], "each_alone": [], "one_list": []}
        for _ in range(arguments.runs):
            report = output(arguments.macros_bench, ADDRESSES, "--benchmark_format=json", "--benchmark_min_time=1")
            for benchmark in json.loads(report)["benchmarks"]:
                figures[benchmark["name"]].append(benchmark["items_per_second"])
            report = output("node", HERE / "macros.mjs", util, ADDRESSES, 1)
            for figure, value in json.loads(report).items():
                figures[figure].append(value)

    median = {figure: statistics.median(values) for figure, values in figures.items()}
    print(f"{'this program, appended to one string':50} {median['reused_string']:12,.0f} addresses/s")
    print(f"{'this program, a new string for each':50} {median['new_string']:12,.0f} addresses/s")
    print(f"{'vast-client ' + version + ', a call for each':50} {median['each_alone']:12,.0f} addresses/s")
    print(f"{'vast-client ' + version + ', all in one call':50} {median['one_list']:12,.0f} addresses/s")
    best = max(median["each_alone"], median["one_list"])
    print(f"this program with a new string: {median['new_string'] / best:.1f} times the peer's better figure")


if __name__ == "__main__":
    main()
