#!/bin/sh
# Makes the clip with which bench/frame_reader measures players: bench/make_clip.sh OUT.mp4 [SECONDS [WIDTHxHEIGHT [RATE]]]
# By default 14 s of 1280x720 at 30 frames per second; H.264 and AAC. A strip a third of the way down each frame, clear of
# players' controls, encodes the frame number (modulo 256) as sixteen fields, lowest bit first, the upper eight inverted;
# the rest of the frame moves.
set -eu
out=$1
seconds=${2-14}
size=${3-1280x720}
rate=${4-30}
width=${size%x*}
height=${size#*x}
field=$((width / 16))
bit="floor(mod(N\\,256)/pow(2\\,mod(floor(X/$field)\\,8)))+gte(X\\,$((width / 2)))"
ffmpeg -loglevel error -y \
    -f lavfi -i "testsrc2=size=$size:rate=$rate:duration=$seconds" \
    -f lavfi -i "nullsrc=size=${width}x$((height / 9)):rate=$rate:duration=$seconds,format=gray,geq=lum='235*mod($bit\\,2)+16*not(mod($bit\\,2))'" \
    -f lavfi -i "sine=frequency=330:duration=$seconds" \
    -filter_complex "[0:v][1:v]overlay=0:$((height * 5 / 18)),format=yuv420p[v]" -map "[v]" -map 2:a \
    -c:v libx264 -profile:v main -preset medium -crf 20 -g $((rate * 2)) -c:a aac -b:a 96k -movflags +faststart "$out"
