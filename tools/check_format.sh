#!/bin/sh
# Fails where a source is not as clang-format lays it out, and names the place.
set -eu
cd "$(dirname "$0")/.."
find app Base bench desktop embedding examples kit platform session simulator tests views -name '*.cpp' -o -name '*.h' |
    xargs clang-format --dry-run -Werror
