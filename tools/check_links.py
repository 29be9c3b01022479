#!/usr/bin/env python3
"""Fails if a link in a Markdown document leads to no file or to no heading, and prints the location.

Checks links and pictures to files of this project; a folder counts as a file. Other addresses are not fetched.
"""

import re
import subprocess
import sys
import urllib.parse
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
LINK = re.compile(r"\[(?:[^\]\\]|\\.)*\]\(<?([^)\s>]+)>?(?:\s+\"[^\"]*\")?\)")
REFERENCE = re.compile(r"^ {0,3}\[[^\]]+\]:\s*<?([^\s>]+)>?")
HEADING = re.compile(r"^ {0,3}#{1,6}\s+(.*?)\s*#*\s*$")
FENCE = re.compile(r"^ {0,3}(```+|~~~+)")


def prose_lines(path):
    """The lines outside code blocks, with code spans blanked: (number, line as written, line without code)."""
    fence = None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        mark = FENCE.match(line)
        if fence:
            if mark and mark[1].startswith(fence):
                fence = None
        elif mark:
            fence = mark[1]
        else:
            yield number, line, re.sub(r"(`+).*?\1", "", line)


def anchors(path):
    """The anchors of a document's headings: lower case, hyphens for spaces, no punctuation, repeats numbered."""
    found = set()
    for _, line, _ in prose_lines(path):
        heading = HEADING.match(line)
        if not heading:
            continue
        text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading[1])
        name = re.sub(r"[^\w\- ]", "", text.lower()).replace(" ", "-")
        repeat = 0
        while (name if not repeat else f"{name}-{repeat}") in found:
            repeat += 1
        found.add(name if not repeat else f"{name}-{repeat}")
    return found


def fault(document, target):
    """Why the link does not work, or None."""
    address = urllib.parse.urlsplit(target)
    if address.scheme or address.netloc:
        return None
    file = document
    if address.path:
        base = ROOT if address.path.startswith("/") else document.parent
        file = base / urllib.parse.unquote(address.path).lstrip("/")
    if not file.exists():
        return "no such file"
    if address.fragment and file.suffix == ".md" and urllib.parse.unquote(address.fragment) not in anchors(file):
        return "no such heading"
    return None


def main():
    listed = subprocess.run([ROOT / "tools/list_files.sh", "*.md"], check=True, capture_output=True, text=True)
    links = faults = 0
    for name in listed.stdout.split("\n")[:-1]:
        for number, _, line in prose_lines(ROOT / name):
            for target in LINK.findall(line) + REFERENCE.findall(line):
                links += 1
                reason = fault(ROOT / name, target)
                if reason:
                    faults += 1
                    print(f"{name}:{number}: {target}: {reason}", file=sys.stderr)
    if not links:
        print("check_links: found no link at all", file=sys.stderr)
    return 1 if faults or not links else 0


if __name__ == "__main__":
    sys.exit(main())
