#!/bin/sh
# Makes the clip of the player's tests: one second each of red, green, blue and white, with a tone. The clip is in the
# repository so that the tests need no encoder.
set -eu
cd "$(dirname "$0")"
colour() { printf 'color=%s:size=320x180:rate=30:duration=1[%s];' "$1" "$1"; }
ffmpeg -loglevel error -y -filter_complex \
    "$(colour red)$(colour green)$(colour blue)$(colour white)
     [red][green][blue][white]concat=n=4,format=yuv420p[picture];sine=frequency=440:duration=4[tone]" \
    -map '[picture]' -map '[tone]' -c:v libx264 -preset medium -crf 30 -g 15 -c:a aac -b:a 64k \
    -map_metadata -1 -fflags +bitexact -movflags +faststart colours.mp4
