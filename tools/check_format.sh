#!/bin/sh
# Fails if a C++ file deviates from clang-format's layout, and prints the location.
set -eu
cd "$(dirname "$0")/.."
tools/list_files.sh '*.cpp' '*.h' | xargs -n 100 -P "$(nproc)" clang-format --dry-run -Werror || {
    echo "check_format: run \"clang-format -i\" on the files above" >&2
    exit 1
}
