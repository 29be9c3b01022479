#!/bin/sh
# Makes the two clips of these creatives: three seconds each, a lamp whose colour pulses, with a tone.
set -eu
cd "$(dirname "$0")"
clip() {
    ffmpeg -loglevel error -y -f lavfi \
        -i "gradients=size=320x180:rate=30:duration=3:c0=$2:c1=0x171a29:nb_colors=2:seed=1:speed=0.02" \
        -f lavfi -i "sine=frequency=$3:duration=3" -pix_fmt yuv420p -c:v libx264 -preset medium -crf 32 -g 15 \
        -c:a aac -b:a 48k -map_metadata -1 -fflags +bitexact -movflags +faststart "$1"
}
clip first.mp4 0xffc25c 440
clip second.mp4 0x85ccea 523
