#!/usr/bin/env python3
"""Fails if an #include points against the drawing of the folders, or closes a cycle between subfolders, and if a header
lacks #pragma once.

A folder includes only folders that its arrows in docs/architecture.dot reach. The picture of the drawing is up to date.
The other subfolders of a folder, of tests/ excepted, include each other without a cycle; a folder named detail is a
part of the folder above it.
"""

import hashlib
import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path, PurePosixPath

ROOT = Path(__file__).resolve().parent.parent
DRAWING = "docs/architecture.dot"
PICTURE = "docs/architecture.svg"
ARROW = re.compile(r'^\s*"?([\w/]+)"?\s*->\s*"?([\w/]+)"?\s*;?\s*$', re.MULTILINE)
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.MULTILINE)


def reachable(arrows, start):
    """The nodes that a path of at least one arrow leads to."""
    found, waiting = set(), list(arrows[start])
    while waiting:
        node = waiting.pop()
        if node not in found:
            found.add(node)
            waiting.extend(arrows[node])
    return found


def path_to(arrows, start, end):
    """A shortest path of arrows from start to end, both included; the caller knows that there is one."""
    paths = [[start]]
    for path in paths:
        for node in sorted(arrows[path[-1]]):
            if node == end:
                return path + [node]
            if node not in path:
                paths.append(path + [node])
    return []


def cycle(arrows):
    """The nodes of one cycle, its first repeated at the end; empty if there is none."""
    for node in sorted(arrows):
        if node in reachable(arrows, node):
            return path_to(arrows, node, node)
    return []


def folder_of(path):
    return path.parent.parent if path.parent.name == "detail" else path.parent


def includes():
    """The project's #include lines between folders: (file, line, including folder, included file, its folder)."""
    listed = subprocess.run([ROOT / "tools/list_files.sh", "*.cpp", "*.h"], check=True, capture_output=True, text=True)
    for name in listed.stdout.split("\n")[:-1]:
        text = (ROOT / name).read_text(encoding="utf-8")
        if name.endswith(".h") and "\n#pragma once\n" not in "\n" + text:
            raise SystemExit(f"{name}:1: expected #pragma once")
        for match in INCLUDE.finditer(text):
            line = text.count("\n", 0, match.start()) + 1
            # From the root, or else beside the including file; generated headers are neither.
            for included in (PurePosixPath(match[1]), PurePosixPath(name).parent / match[1]):
                if (ROOT / included).is_file():
                    yield name, line, folder_of(PurePosixPath(name)), included, folder_of(included)
                    break


def main():
    drawn = defaultdict(set)
    for tail, head in ARROW.findall((ROOT / DRAWING).read_text(encoding="utf-8")):
        drawn[tail].add(head)
    faults = []
    loop = cycle(dict(drawn) | {head: drawn.get(head, set()) for heads in drawn.values() for head in heads})
    if not drawn or loop:
        print(f"{DRAWING}: {'a cycle: ' + ' -> '.join(loop) if loop else 'no arrow'}", file=sys.stderr)
        return 1
    if hashlib.sha256((ROOT / DRAWING).read_bytes()).hexdigest() not in (ROOT / PICTURE).read_text(encoding="utf-8"):
        faults.append(f"{PICTURE}: not rendered from {DRAWING} as it is; run tools/draw_architecture.sh")
    allowed = {folder: reachable(drawn, folder) for folder in list(drawn)}

    nodes = set(drawn) | set().union(*drawn.values())

    def node_of(folder):
        """The innermost drawn folder that contains a folder; its top folder if none does."""
        return next((str(outer) for outer in (folder, *folder.parents) if str(outer) in nodes), folder.parts[0])

    inner = defaultdict(lambda: defaultdict(set))
    places = {}
    for name, line, folder, included, target in includes():
        top, target_top = node_of(folder), node_of(target)
        if top != target_top:
            if target_top not in allowed.get(top, ()):
                faults.append(f"{name}:{line}: {top}/ must not include {included}; its arrows in {DRAWING} lead to "
                              + (", ".join(sorted(allowed.get(top, ()))) or "no folder"))
        elif folder != target and top != "tests":
            inner[top][str(folder)].add(str(target))
            places.setdefault((str(folder), str(target)), f"{name}:{line}: includes {included}")
    for top, arrows in sorted(inner.items()):
        for target in [target for targets in list(arrows.values()) for target in targets]:
            arrows.setdefault(target, set())
        loop = cycle(arrows)
        if loop:
            faults.append(f"{top}/: its subfolders include each other in a cycle: {' -> '.join(loop)}\n"
                          + "\n".join("    " + places[step] for step in zip(loop, loop[1:])))
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
