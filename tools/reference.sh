#!/bin/sh
# Writes the API reference of the public headers: tools/reference.sh [BUILD]
# The default build is build/release, which is configured if necessary. The reference is
# BUILD/reference/html/index.html. Fails on a declaration without documentation.
set -eu
cd "$(dirname "$0")/.."
command -v doxygen >/dev/null || {
    echo "reference: Doxygen is not installed; run: tools/setup.sh test" >&2
    exit 1
}
build=${1-build/release}
if [ ! -d "$build/include/qoro" ]; then
    if [ $# -gt 0 ]; then
        echo "reference: $build: expected a configured build; run: cmake --preset debug" >&2
        exit 2
    fi
    cmake --preset release >/dev/null
fi
mkdir -p "$build/reference"
doxygen - <<END
$(cat docs/Doxyfile)
INPUT = $build/include/qoro docs/reference.md
STRIP_FROM_PATH = $build/include
STRIP_FROM_INC_PATH = $build/include
OUTPUT_DIRECTORY = $build/reference
END
