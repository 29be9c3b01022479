#!/usr/bin/env python3
"""Renders the thirteen control images from their vector sources and embeds them in the program.

In:   Base/VideoPlayer/artwork/<array name>.svg
Out:  Base/VideoPlayer/VideoImage/<array name>.png and VideoImage.h, VideoImage.cpp (the same bytes as arrays).
Needs rsvg-convert (Debian: librsvg2-bin) and zopfli. Reproducible with the same tool versions.
Run it after changing a drawing, and commit the output; fails if a drawing does not fit its byte count.
"""

import pathlib
import struct
import subprocess
import sys
import tempfile
import zlib

BASE = pathlib.Path(__file__).resolve().parent.parent / "Base" / "VideoPlayer"

# Array, exact byte count of its PNG file, width and height in pixels, where it is used. Declaration order.
IMAGES = [
    ("arrayVideoBigCloseButton", 2808, 140, 140, "Close button of the size `BIG`."),
    ("arrayVideoCloseButton", 681, 60, 60, "Close button, default and small size."),
    ("arrayVideoFullscreenButton", 650, 60, 60, "Screen-scale button in portrait: go to full screen."),
    ("arrayVideoPauseButton", 4614, 160, 160, "Play/pause button while the video plays."),
    ("arrayVideoPlayButton", 6483, 160, 160, "Play/pause button while the video is paused, and at first."),
    ("arrayVideoReplayButton", 8749, 160, 160, "Replay button."),
    ("arrayVideoSoundOffButton", 1367, 60, 60, "Mute button while the sound is off, and at first."),
    ("arrayVideoSounOnButton", 1180, 60, 60, "Mute button while the sound is on."),
    ("arrayTopBackGround", 332, 5, 60, "Shade behind the top control bar; stretched to the bar's width."),
    ("arrayVideoScaleToPortraitButton", 680, 60, 60, "Screen-scale button in landscape: back to portrait."),
    ("arrayBottomBackGround", 332, 5, 60, "Shade behind the bottom control bar; stretched to the bar's width."),
    ("arrayHideVideo", 2418, 160, 160, "Close button while it serves to hide the video."),
    ("arrayShowVideo", 2510, 160, 160, "Button that shows the hidden video again."),
]

SIGNATURE = b"\x89PNG\r\n\x1a\n"
EMPTY_CHUNK = 12  # bytes of a chunk without data: length, type, CRC
HOPELESS = 1.15  # limit: zopfli saves at most this factor over zlib
CHANNELS = 4  # red, green, blue, alpha, one byte each

# Levels per channel, finest first. Multiples of 12 preserve the discs' alpha (7/12) exactly.
SHADE_STEPS = [255, *range(240, 0, -12)]


class PictureError(Exception):
    pass


def chunk(kind, data=b""):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def predicted(method, left, above, corner):
    """The value that a PNG scan-line filter (0 to 4) expects from a byte's three neighbours."""
    if method < 4:
        return (0, left, above, (left + above) // 2)[method]
    estimate = left + above - corner
    return min((left, above, corner), key=lambda neighbour: abs(estimate - neighbour))


def filtered(method, rows):
    out = bytearray()
    above = bytes(len(rows[0]))
    for row in rows:
        out.append(method)
        for i, value in enumerate(row):
            left, corner = (row[i - CHANNELS], above[i - CHANNELS]) if i >= CHANNELS else (0, 0)
            out.append((value - predicted(method, left, above[i], corner)) % 256)
        above = row
    return bytes(out)


def unfiltered(data, width, height):
    rows = []
    above = bytes(width * CHANNELS)
    for y in range(height):
        start = y * (width * CHANNELS + 1)
        method, line = data[start], data[start + 1 : start + 1 + width * CHANNELS]
        row = bytearray()
        for i, value in enumerate(line):
            left, corner = (row[i - CHANNELS], above[i - CHANNELS]) if i >= CHANNELS else (0, 0)
            row.append((value + predicted(method, left, above[i], corner)) % 256)
        above = bytes(row)
        rows.append(above)
    return rows


def drawn(source, width, height):
    """Renders a drawing as rows of RGBA bytes, not premultiplied."""
    command = ["rsvg-convert", "--width", str(width), "--height", str(height), str(source)]
    png = subprocess.run(command, check=True, capture_output=True).stdout
    header, pixels = None, b""
    at = len(SIGNATURE)
    while at < len(png):
        (length,) = struct.unpack_from(">I", png, at)
        kind, data = png[at + 4 : at + 8], png[at + 8 : at + 8 + length]
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", data)
        elif kind == b"IDAT":
            pixels += data
        at += EMPTY_CHUNK + length
    if header != (width, height, 8, 6, 0, 0, 0):
        raise PictureError(f"{source}: rsvg-convert drew {header}, expected {width} x {height} in 8-bit RGBA")
    return unfiltered(zlib.decompress(pixels), width, height)


def shaded(rows, steps):
    """Quantises every channel to the given levels and clears the colours of transparent pixels."""
    rounded = bytes(round(round(value * steps / 255) * 255 / steps) for value in range(256))
    out = []
    for row in rows:
        line = bytearray(row.translate(rounded))
        for i in range(0, len(line), CHANNELS):
            if line[i + 3] == 0:
                line[i : i + CHANNELS] = bytes(CHANNELS)
        out.append(bytes(line))
    return out


def squeezed(data):
    with tempfile.NamedTemporaryFile() as file:
        file.write(data)
        file.flush()
        command = ["zopfli", "--zlib", "--i50", "-c", file.name]
        return subprocess.run(command, check=True, capture_output=True).stdout


def encodings(rows, limit):
    """The pixel data in the two scan-line filters that compress best, if they can fit."""
    candidates = []
    for method in range(5):
        data = filtered(method, rows)
        quick = len(zlib.compress(data, 9))
        if quick <= limit * HOPELESS:
            candidates.append((quick, data))
    candidates.sort()
    return [squeezed(data) for _, data in candidates[:2]]


def padding(title, spare):
    """Chunks of exactly `spare` bytes: the picture's title if it fits, then one that decoders skip."""
    named = chunk(b"tEXt", b"Title\0" + title.encode("latin-1"))
    out = named if spare >= len(named) + EMPTY_CHUNK else b""
    return out + chunk(b"fiLl", bytes(spare - len(out) - EMPTY_CHUNK))


def picture(name, size, width, height):
    """A PNG file of exactly `size` bytes, at the finest quantisation that fits."""
    source = BASE / "artwork" / f"{name}.svg"
    title = source.read_text(encoding="utf-8").split("<title>")[1].split("</title>")[0]
    rows = drawn(source, width, height)
    start = SIGNATURE + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
    end = chunk(b"IEND")
    for steps in SHADE_STEPS:
        for data in encodings(shaded(rows, steps), size):
            body = start + chunk(b"IDAT", data)
            spare = size - len(body) - len(end)
            if spare >= EMPTY_CHUNK:
                print(f"{name}: {size} bytes, {steps} steps of shade, {spare} bytes of padding")
                return body + padding(title, spare) + end
    raise PictureError(f"{source}: too rich for {size} bytes, expected a simpler drawing")


HEADER = """\
// Written by tools/draw_control_images.py: change the drawings in Base/VideoPlayer/artwork, then run it again.
#pragma once

namespace qoro
{

// Each array is a complete PNG file (8 bits per channel, RGBA) and is passed with its whole length.
"""


def header_text():
    text = HEADER
    for name, size, width, height, use in IMAGES:
        text += f"\n/// {use} {width} x {height} pixels.\nextern const unsigned char {name}[{size}];\n"
    return text + "\n} // namespace qoro\n"


def source_text(pictures):
    text = "// Written by tools/draw_control_images.py: change the drawings in Base/VideoPlayer/artwork, then run it again.\n"
    text += '#include "Base/VideoPlayer/VideoImage/VideoImage.h"\n\nnamespace qoro\n{\n\n// clang-format off\n'
    for name, size, *_ in IMAGES:
        text += f"const unsigned char {name}[{size}] = {{\n"
        for at in range(0, size, 24):
            text += "    " + ",".join(str(byte) for byte in pictures[name][at : at + 24]) + ",\n"
        text += "};\n\n"
    return text + "// clang-format on\n\n} // namespace qoro\n"


def main():
    out = BASE / "VideoImage"
    out.mkdir(exist_ok=True)
    pictures = {}
    for name, size, width, height, _ in IMAGES:
        pictures[name] = picture(name, size, width, height)
        (out / f"{name}.png").write_bytes(pictures[name])
    (out / "VideoImage.h").write_text(header_text(), encoding="utf-8")
    (out / "VideoImage.cpp").write_text(source_text(pictures), encoding="utf-8")


if __name__ == "__main__":
    try:
        main()
    except (PictureError, OSError, subprocess.CalledProcessError) as error:
        sys.exit(f"draw_control_images.py: {error}")
