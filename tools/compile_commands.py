#!/usr/bin/env python3
"""Writes a build's compile commands for tools that read each source by itself: tools/compile_commands.py FROM TO

A unit of several sources (cmake/CompileTogether.cmake) becomes one command for each of them.
"""

import json
import re
import sys
from pathlib import Path


def single(command):
    """The commands of a command's sources."""
    unit = command["file"]
    if "/Unity/" not in unit:
        return [command]
    sources = re.findall(r'^#include "(.*)"$', Path(unit).read_text(), re.MULTILINE)
    return [{**command, "command": command["command"].replace(unit, source), "file": source} for source in sources]


with open(sys.argv[1], encoding="utf-8") as commands:
    singles = [one for command in json.load(commands) for one in single(command)]
with open(sys.argv[2], "w", encoding="utf-8") as commands:
    json.dump(singles, commands, indent=1)
