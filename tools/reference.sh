#!/bin/sh
# Writes the API reference of a configured build's public headers: tools/reference.sh [BUILD]
# The default build is build/release. The reference is BUILD/reference/html/index.html. Fails on a declaration without
# documentation.
set -eu
cd "$(dirname "$0")/.."
build=${1-build/release}
if [ ! -d "$build/include/qoro" ]; then
    echo "reference: $build: not configured; run: cmake --preset release" >&2
    exit 2
fi
mkdir -p "$build/reference"
doxygen - <<END
$(cat docs/Doxyfile)
INPUT = $build/include/qoro
STRIP_FROM_PATH = $build/include
STRIP_FROM_INC_PATH = $build/include
OUTPUT_DIRECTORY = $build/reference
END
