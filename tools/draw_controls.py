#!/usr/bin/env python3
"""Draws where an ad's controls are: pictures of the view tree, with the names of the controls, as one SVG file.

    draw_controls.py QORO-AD SCREEN FOLDER    (see tools/draw_controls.sh)

SCREEN is the program of examples/screen; FOLDER holds the files in between.
"""

import base64
import json
import math
import pathlib
import subprocess
import sys

WIDTH, HEIGHT = 375, 812  # points of the simulated phone
SCALE = 0.62
GAP, TITLE, LEGEND = 18, 26, 118
ICON = str(pathlib.Path(__file__).resolve().parent.parent / "examples/demo/icon.png")

# Numbered in the drawing.
CONTROLS = [
    "btnClose", "btnBrandIcon", "labelBrandText", "btnPlayAndPause", "btnReplay", "btnMute", "btnScreenScale",
    "labelRemainderTime", "btnActionOne", "btnActionTwo",
]

AD = {
    "strVideoUrl": "http://ad.example/clip.mp4", "strWebViewUrl": "http://ad.example/page.html",
    "fVideoWidth": 1280, "fVideoHeight": 720, "bIsAutoStart": True, "iCloseBtnCountdown": 1,
    "iBufferingSufferTime": 20, "strBackgroundColor": "4294111986", "strBrandText": "Brand",
    "strBrandIconUrl": "http://ad.example/icon.png",
    "arrayButtonsInfo": [{"btn_text": "First", "data": {}}, {"btn_text": "Second", "data": {}}],
}
PORTRAIT = {"portraitModeType": "VIDEO_AND_WEBVIEW"}
LANDSCAPE = {"portraitModeType": 0, "landscapeModeType": "VIDEO_AND_WEBVIEW"}

# Two rows: title, changes of the ad, second, whether the arrangement is landscape.
BAND = {**PORTRAIT, "landscapeModeType": "VIDEO_AND_WEBVIEW", "portraitVideoPos": "TOP"}
FULL = {**PORTRAIT, "portraitVideoPos": "FULL"}
ROWS = [
    [
        ("Portrait, band (TOP)", BAND, 2, False),
        ("The same, after the end", BAND, 11, False),
        ("Portrait, FULL", FULL, 2, False),
        ("FULL, video hidden at its end", {**FULL, "bIsHideFullPortraitVideoAtEnd": True}, 11, False),
    ],
    [
        ("Landscape", LANDSCAPE, 2, True),
        ("Landscape, video hidden at its end", {**LANDSCAPE, "bIsHideLandscapeVideoAtEnd": True}, 11, True),
    ],
]


def views_at(program, ad, second):
    """The views of the ad's controller at a time, by name."""
    scenario = {
        "video": {"duration": 10}, "ad": ad,
        "net": {"http://ad.example/icon.png": {"body64": base64.b64encode(pathlib.Path(ICON).read_bytes()).decode()}},
        "steps": [{"open": 0}, {"at": second, "snapshot": True}],
    }
    trace = subprocess.run([program, "simulate", "-"], input=json.dumps(scenario), capture_output=True, text=True,
                           check=True).stdout
    return next(line["views"] for line in map(json.loads, trace.splitlines()) if line["what"] == "snapshot")


def turned(x, y, angle):
    return x * math.cos(angle) - y * math.sin(angle), x * math.sin(angle) + y * math.cos(angle)


def corners_on_screen(name, views):
    """The corners of a view on the screen."""
    view = views[name]
    _, _, width, height = view["frame"]
    points = [(x, y) for x in (0, width) for y in (0, height)]
    while view:
        x, y, across, down = view["frame"]
        middle = (across / 2, down / 2)
        if round(view["angle"] / (math.pi / 2)) % 2:
            middle = (down / 2, across / 2)
        moved = [turned(px - middle[0], py - middle[1], view["angle"]) for px, py in points]
        points = [(x + across / 2 + dx, y + down / 2 + dy) for dx, dy in moved]
        view = views.get(view["parent"])
    return points


def is_shown(name, views):
    view = views[name]
    if not view or not view["parent"]:
        return False
    while view:
        if view["hidden"]:
            return False
        if view["parent"] is None:
            return view is views["windowTempWindow"]
        view = views.get(view["parent"])
    return False


def panel(title, picture, views, landscape):
    width, height = (HEIGHT, WIDTH) if landscape else (WIDTH, HEIGHT)
    parts = [f'<text x="0" y="14" class="title">{title}</text>',
             f'<g transform="translate(0 {TITLE}) scale({SCALE})">']
    image = f'<image width="{WIDTH}" height="{HEIGHT}" href="data:image/png;base64,{picture}"/>'
    # The screen's content is turned clockwise; turning the screen back shows it as the viewer holds it.
    parts.append(f'<g transform="translate(0 {WIDTH}) rotate(-90)">{image}</g>' if landscape else image)
    parts.append(f'<rect width="{width}" height="{height}" class="edge"/>')
    for number, name in enumerate(CONTROLS, 1):
        if not is_shown(name, views):
            continue
        points = corners_on_screen(name, views)
        if landscape:
            points = [(y, WIDTH - x) for x, y in points]
        left, top = (min(point[i] for point in points) for i in (0, 1))
        right, bottom = (max(point[i] for point in points) for i in (0, 1))
        if left >= width or top >= height or right <= left:
            continue
        parts.append(f'<rect x="{left:g}" y="{top:g}" width="{right - left:g}" height="{bottom - top:g}" class="at"/>')
        cx, cy = (left + right) / 2, top - 14
        if name.startswith("btnAction"):
            cx, cy = left - 14, (top + bottom) / 2
        elif name == "labelRemainderTime":
            cx, cy = right + 14, (top + bottom) / 2
        elif cy < 12:
            cy = bottom + 14
        parts.append(f'<circle cx="{cx:g}" cy="{cy:g}" r="12" class="disc"/>'
                     f'<text x="{cx:g}" y="{cy + 5.5:g}" class="number">{number}</text>')
    parts.append("</g>")
    return "\n".join(parts), width * SCALE, height * SCALE + TITLE


def main():
    program, screen, folder = sys.argv[1:]
    folder = pathlib.Path(folder)
    body = []
    y = across = 0
    for row in ROWS:
        x, lowest = GAP, 0
        for title, changes, second, landscape in row:
            ad = {**AD, **changes}
            file, picture = folder / "ad.json", folder / "picture.png"
            file.write_text(json.dumps(ad))
            # The program draws half a second after the given one.
            subprocess.run([screen, file, picture, str(second - 0.5)], check=True)
            content, width, height = panel(title, base64.b64encode(picture.read_bytes()).decode(),
                                           views_at(program, ad, second), landscape)
            body.append(f'<g transform="translate({x:g} {y + GAP:g})">\n{content}\n</g>')
            x += width + GAP
            lowest = max(lowest, height)
        across = max(across, x)
        y += lowest + 2 * GAP
    columns = 3
    for number, name in enumerate(CONTROLS, 1):
        column, line = (number - 1) % columns, (number - 1) // columns
        lx, ly = GAP + column * (across - GAP) / columns, y + 14 + line * 26
        body.append(f'<circle cx="{lx + 10:g}" cy="{ly:g}" r="10" class="disc"/>'
                    f'<text x="{lx + 10:g}" y="{ly + 4.5:g}" class="number small">{number}</text>'
                    f'<text x="{lx + 28:g}" y="{ly + 5:g}" class="title">{name}</text>')
    height = y + LEGEND
    print(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {across:g} {height:g}" width="{across:g}">\n'
          "<title>Where the controls are</title>\n"
          "<style>.title{font:15px Arial,sans-serif}.number{font:bold 15px Arial,sans-serif;text-anchor:middle;"
          "fill:#fff}.small{font-size:12px}.disc{fill:#b0005a}.at{fill:none;stroke:#ff2f92;stroke-width:2}"
          ".edge{fill:none;stroke:#444}</style>\n"
          f'<rect width="{across:g}" height="{height:g}" fill="#fff"/>')
    print("\n".join(body))
    print("</svg>")


if __name__ == "__main__":
    main()
