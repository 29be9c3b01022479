"""Keeps the figures of the benchmarks: bench/measures.json has a section for each, from which bench/write_measures.py
writes docs/measures.md."""
import datetime
import json
import os
import pathlib
import platform
import subprocess

FILE = pathlib.Path(__file__).resolve().parent / "measures.json"


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def commit():
    """The commit of the measured sources; with a plus if they differ from it."""
    git = ["git", "-C", str(FILE.parent)]
    name = subprocess.run([*git, "rev-parse", "--short=12", "HEAD"], capture_output=True, text=True).stdout.strip()
    changed = subprocess.run([*git, "status", "--porcelain", "--untracked-files=no"], capture_output=True, text=True).stdout
    return name + ("+" if changed.strip() else "")


def read():
    return json.loads(FILE.read_text()) if FILE.exists() else {}


def keep(section, figures):
    """Replaces a section, with the date, the machine and the commit."""
    every = read()
    every[section] = {"date": datetime.date.today().isoformat(), "commit": commit(),
                      "machine": f"{len(os.sched_getaffinity(0))} cores of {processor()}", **figures}
    FILE.write_text(json.dumps(every, indent=1, sort_keys=True) + "\n")
