#!/bin/sh
# Opens and closes ads in one process of a release build, and says what they leave behind: tools/soak.sh [ADS]
# 1000 when ADS is left out, which takes some ten minutes. Fails when memory has grown by more than 5 MB after the first ten.
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
