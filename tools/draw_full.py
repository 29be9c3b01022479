#!/usr/bin/env python3
"""Draws the lower part of an ad with portraitVideoPos FULL: its bottom bar, which begins below the video's view, as SVG.

    draw_full.py QORO-AD SCREEN FOLDER    (see tools/draw_controls.sh)

SCREEN is the program of examples/screen; FOLDER holds the files in between.
"""

import base64
import json
import pathlib
import subprocess
import sys

WIDTH, HEIGHT = 375, 812  # points of the simulated phone
FROM = 640  # the first point of the screen that is drawn
BELOW = 70  # points below the screen
SECOND = 2
AD = {
    "strVideoUrl": "http://ad.example/clip.mp4", "fVideoWidth": 1280, "fVideoHeight": 720, "bIsAutoStart": True,
    "iBufferingSufferTime": 20, "portraitModeType": "ONLY_VIDEO", "portraitVideoPos": "FULL",
}


def views_of(program):
    scenario = {"video": {"duration": 10}, "ad": AD, "steps": [{"open": 0}, {"at": SECOND, "snapshot": True}]}
    trace = subprocess.run([program, "simulate", "-"], input=json.dumps(scenario), capture_output=True, text=True,
                           check=True).stdout
    return next(line["views"] for line in map(json.loads, trace.splitlines()) if line["what"] == "snapshot")


def on_screen(name, views):
    """The frame of a view that is not rotated, on the screen."""
    x, y, width, height = views[name]["frame"]
    parent = views.get(views[name]["parent"])
    while parent:
        x, y = x + parent["frame"][0], y + parent["frame"][1]
        parent = views.get(parent["parent"])
    return x, y, width, height


def main():
    program, screen, folder = sys.argv[1:]
    file, picture = pathlib.Path(folder) / "ad.json", pathlib.Path(folder) / "picture.png"
    file.write_text(json.dumps(AD))
    # The program draws half a second after the given one.
    subprocess.run([screen, file, picture, str(SECOND - 0.5)], check=True)
    views = views_of(program)
    body = []

    def outline(name, words, kind):
        x, y, width, height = on_screen(name, views)
        body.append(f'<rect x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}" class="{kind}"/>')
        body.append(f'<text x="{WIDTH + 14}" y="{y + height:g}" class="words">{words} {y:g} – {y + height:g}</text>')

    outline("moviePlayerView", "the video's view,", "video")
    body.append(f'<line x1="-10" x2="{WIDTH + 10}" y1="{HEIGHT}" y2="{HEIGHT}" class="end"/>'
                f'<text x="{WIDTH + 14}" y="{HEIGHT + 5}" class="words">the screen ends at {HEIGHT}</text>')
    outline("viewBottomBackground", "the bottom bar,", "bar")
    x, y, width, height = on_screen("btnMute", views)
    body.append(f'<rect x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}" class="mute"/>'
                f'<text x="{x - 8:g}" y="{y + height / 2 + 5:g}" class="mute words" text-anchor="end">btnMute</text>')
    data = base64.b64encode(picture.read_bytes()).decode()
    across, down = WIDTH + 230, HEIGHT - FROM + BELOW
    print(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="-12 {FROM} {across} {down}" width="{across}">\n'
          "<title>The bottom bar of an ad that fills the screen</title>\n"
          "<style>.words{font:15px Arial,sans-serif}.video{fill:none;stroke:#1f5fae;stroke-width:2}"
          ".bar{fill:#9994;stroke:#444;stroke-dasharray:5 4}.mute{stroke:#ff2f92;stroke-width:2;fill:none}"
          "text.mute{stroke:none;fill:#b0005a}.end{stroke:#000;stroke-width:2}</style>\n"
          f'<rect x="-12" y="{FROM}" width="{across}" height="{down}" fill="#fff"/>\n'
          f'<image width="{WIDTH}" height="{HEIGHT}" href="data:image/png;base64,{data}"/>')
    print("\n".join(body))
    print("</svg>")


if __name__ == "__main__":
    main()
