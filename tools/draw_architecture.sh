#!/bin/sh
# Renders the picture of the top folders: docs/architecture.dot to docs/architecture.svg.
# Run it after changing the drawing, and commit the output. The last line of the picture names the drawing it was made
# from, for tools/check_includes.py.
set -eu
cd "$(dirname "$0")/.."
tools/setup.sh draw
dot -Tsvg docs/architecture.dot -o docs/architecture.svg
echo "<!-- architecture.dot $(sha256sum <docs/architecture.dot | cut -d ' ' -f 1) -->" >>docs/architecture.svg
