#!/bin/sh
# Opens and closes ads in one process of a release build and reports leftovers: tools/soak.sh [ADS]
# The default of 1000 ads takes about ten minutes. Fails if memory grows by more than 5 MB after the first ten ads.
set -eu
cd "$(dirname "$0")/.."
case "${1-1000}" in
*[!0-9]* | 0 | "")
    echo "usage: tools/soak.sh [ADS]" >&2
    exit 2
    ;;
esac
tools/build.sh release soak
tools/with_display.sh build/release/tests/soak/soak "${1-1000}" tests/desktop/media/clips/colours.mp4
