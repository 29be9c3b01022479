#!/bin/sh
# Makes the clip with which bench/frame_reader measures players: bench/make_clip.sh OUT.mp4 [SECONDS]
# 1280x720 at 30 frames per second, H.264 and AAC. A strip a third of the way down each frame, clear of players'
# controls, encodes the frame number (modulo 256) as sixteen fields, lowest bit first, the upper eight inverted; the
# rest of the frame moves.
set -eu
out=$1
seconds=${2-14}
ffmpeg -loglevel error -y \
    -f lavfi -i "testsrc2=size=1280x720:rate=30:duration=$seconds" \
    -f lavfi -i "nullsrc=size=1280x80:rate=30:duration=$seconds,format=gray,geq=lum='235*mod(floor(mod(N\,256)/pow(2\,mod(floor(X/80)\,8)))+gte(X\,640)\,2)+16*not(mod(floor(mod(N\,256)/pow(2\,mod(floor(X/80)\,8)))+gte(X\,640)\,2))'" \
    -f lavfi -i "sine=frequency=330:duration=$seconds" \
    -filter_complex "[0:v][1:v]overlay=0:200,format=yuv420p[v]" -map "[v]" -map 2:a \
    -c:v libx264 -profile:v main -preset medium -crf 20 -g 60 -c:a aac -b:a 96k -movflags +faststart "$out"
