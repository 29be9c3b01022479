#!/bin/sh
# Fails if shellcheck objects to a shell script, and prints the location and the reason.
set -eu
cd "$(dirname "$0")/.."
tools/list_files.sh '*.sh' play test .ci/run | xargs shellcheck --format=gcc
