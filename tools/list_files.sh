#!/bin/sh
# Prints the sources that match a pattern, one a line: tools/list_files.sh PATTERN…
# A pattern applies to the whole path, and its * also matches a slash. Sources are all files that git does not ignore;
# in a copy without a repository, all files outside the build folders.
set -eu
cd "$(dirname "$0")/.."
if [ -e .git ]; then
    # The checkout may belong to another user, as in a container.
    git -c safe.directory='*' ls-files --cached --others --exclude-standard -- "$@" | sort -u | while read -r file; do
        [ ! -f "$file" ] || echo "$file"
    done
else
    for pattern in "$@"; do
        find . \( -path ./build -o -path ./out -o -path ./.cache \) -prune -o -type f -path "./$pattern" -print
    done | sed 's|^\./||' | sort -u
fi
