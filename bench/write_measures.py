#!/usr/bin/env python3
"""Writes docs/measures.md and docs/start.svg from bench/measures.md.in and the figures in bench/measures.json.

usage: bench/write_measures.py [--check]

A line "@players", "@players.source" or "@start.points" in the text is replaced by what the function of that name below
makes of the section's figures. --check writes nothing and fails if the files are not up to date.
"""
import pathlib
import sys

import figures

HERE = pathlib.Path(__file__).resolve().parent
DOCS = HERE.parent / "docs"


def source(section):
    runs = section.get("runs", 1)
    return (f"{section['date']}, commit {section['commit']}, {section['machine']}; " +
            ("one run." if runs == 1 else f"medians of {runs} runs."))


PLAYERS = {"gst-play band": "`gst-play-1.0`, 375x211", "mpv band": "`mpv`, 375x211",
           "qoro-ad band": "`qoro-ad`, in the band, 375x211", "qoro-ad band, page": "`qoro-ad`, in the band over a still page",
           "mpv turned": "`mpv`, turned, 375x812", "mpv full": "`mpv`, 812x375", "qoro-ad full": "`qoro-ad`, turned, 812x375",
           "qoro-ad paused": "`qoro-ad`, paused"}


def players_table(section):
    lines = ["| player | CPU s/s | first frame, ms | missed | jitter p99, ms | PSS, MB |", "|---|---|---|---|---|---|"]
    for label, row in section["medians"].items():
        cells = [f"{row['cpu']:.3f}"]
        for key, digits in (("first_ms", 0), ("missed", 0), ("jitter_p99", 1)):
            cells.append(f"{row[key]:.{digits}f}" if key in row else "")
        lines.append(f"| {PLAYERS[label]} | " + " | ".join([*cells, f"{row['pss']:.0f}"]) + " |")
    return lines


def ratios(section):
    return [f"- {what}: {ratio:.2f}" for what, ratio in section["ratios"].items()]


def start_table(section):
    lines = ["| program | first frame on the screen, ms | ratio | page on the screen, ms |", "|---|---|---|---|"]
    names = {"without a page": "`qoro-ad play`, ad without a page", "with a page": "`qoro-ad play`, ad with a page",
             "before, without a page": "the earlier build, ad without a page",
             "before, with a page": "the earlier build, ad with a page"}
    for label, steps in section["medians"].items():
        first = steps["first frame on the screen"]
        page = f"{steps['page on the screen']:.0f}" if "page on the screen" in steps else ""
        lines.append(f"| {names.get(label, '`' + label + '`')} | {first:.0f} | {section['ratios'][label]:.2f} | {page} |")
    return lines


def workbench_table(section):
    lines = ["| example | `check`, CPU s | `check`, MB | `report`, CPU s | `report`, MB | page, MB |",
             "|---|---|---|---|---|---|"]
    for ad, row in section["examples"].items():
        check, report = row["check"], row["report"]
        lines.append(f"| `{ad}` | {check['cpu_seconds']:.2f} | {check['peak_megabytes']:.0f} | {report['cpu_seconds']:.2f} | "
                     f"{report['peak_megabytes']:.0f} | {row['report_megabytes']:.2f} |")
    return lines


def workbench_commands(section):
    lines = ["| command | CPU s | MB |", "|---|---|---|"]
    for command, row in section["commands"].items():
        lines.append(f"| `{command}` | {row['cpu_seconds']:.3f} | {row['peak_megabytes']:.0f} |")
    return lines


def minute_table(section):
    lines = ["| clip | player | frames missed | jitter p99, ms | longest time between frames, ms |", "|---|---|---|---|---|"]
    for clip, players in section["clips"].items():
        for player, row in players.items():
            lines.append(f"| {clip} | `{player}` | {row['missed']} of {row['missed'] + row['seen']} | "
                         f"{row['jitter_p99']:.1f} | {row['longest']:.0f} |")
    return lines


def heavy_table(section):
    lines = ["| clip | player | frames a second | longest time between frames, ms |", "|---|---|---|---|"]
    for clip, players in section["clips"].items():
        for player, row in players.items():
            lines.append(f"| {clip} | `{player}` | {row['frames_per_second']:.1f} | {row['longest']:.0f} |")
    return lines


def hour_text(section):
    pss, anonymous = section["pss"], section.get("anonymous")
    text = (f"- An ad that is turned, paused and replayed for {len(pss)} minutes: {pss[1]:.0f} MB after the second minute (PSS "
            f"of all its processes), {min(pss):.0f} to {max(pss):.0f} MB until the end. PSS depends on the other programs that "
            "share its libraries, which came and went.")
    if anonymous:
        text += f" Its anonymous memory was {anonymous[1]:.1f} MB after the second minute and {anonymous[-1]:.1f} MB at the end."
    return [text, f"  {section['date']}, commit {section['commit']}."]


def latency(section):
    times = section["latency"]
    return [f"- In a running program, the first frame is on the screen {times['opened']:.0f} ms after the first request for "
            "the video.",
            "- An ad that was [preloaded](embedding.md#preload) shows its first frame on the screen "
            f"{times['with']:.0f} ms after its opening, also the first ad of a program; without a preload the first ad takes "
            f"{times['without']:.0f} ms.",
            f"- A tracker arrives at its server {times['tracker']:.1f} ms after the decision to send it (median of "
            f"{times['trackers']}; the longest takes {times['longest_tracker']:.1f} ms)."]


# Lanes of the picture: from one point to another, under a name.
LANES = (
    ("main thread", (("", "linked", "libraries"), ("input read", "toolkit started", "toolkit"),
                     ("toolkit started", "platform ready", "platform"), ("platform ready", "window shown", "window"),
                     ("window shown", "ad opened", "ad"), ("page begun", "page's view created", "page's view"))),
    ("media threads", (("input read", "media framework started", "GStreamer"),
                       ("media framework started", "decoders loaded", "decoders"))),
    ("video", (("video requested", "first picture decoded", "load, first picture"),
               ("first picture decoded", "first frame on the screen", "screen"))),
    ("page", (("first picture drawn", "page begun", "WebKit linked"),
              ("page's view created", "page loaded", "page's processes, load"),
              ("page loaded", "page on the screen", "screen"))),
)
COLOURS = ("#3b6ea5", "#b5651d", "#4a7c4e", "#7d5ba6")


def start_picture(section):
    """The starts, one below the other, on one axis of milliseconds; those of the earlier build first."""
    starts = [(label, steps) for label, steps in section["medians"].items() if len(steps) > 1]
    starts.sort(key=lambda start: not start[0].startswith("before"))
    longest = max(max(steps.values()) for _, steps in starts)
    left, width, row = 120, 860, 26
    scale = width / longest
    out, y = [], 24
    for label, steps in starts:
        title = label.replace("before, ", "an earlier build: ")
        out.append(f'<text x="8" y="{y}" font-weight="bold">{title}</text>')
        y += 10
        for (lane, spans), colour in zip(LANES, COLOURS):
            spans = [span for span in spans if steps.get(span[0], 0) < steps.get(span[1], 0)]
            if not spans:
                continue
            out.append(f'<text x="8" y="{y + 17}">{lane}</text>')
            for since, to, name in spans:
                begin, end = steps.get(since, 0), steps[to]
                x, w = left + begin * scale, max((end - begin) * scale, 1)
                out.append(f'<rect x="{x:.1f}" y="{y + 3}" width="{w:.1f}" height="{row - 6}" fill="{colour}" stroke="#fff">'
                           f"<title>{name}: {begin:.0f} to {end:.0f} ms</title></rect>")
                if w > 7 * len(name):
                    out.append(f'<text x="{x + 4:.1f}" y="{y + 17}" fill="#fff">{name}</text>')
            y += row
        first = left + steps["first frame on the screen"] * scale
        out.append(f'<path d="M{first:.1f} {y - row * 4} V{y + 4}" stroke="#c00" stroke-dasharray="4 3"/>'
                   f'<text x="{first + 4:.1f}" y="{y + 12}" fill="#c00">first frame on the screen, '
                   f'{steps["first frame on the screen"]:.0f} ms</text>')
        y += 34
    step = 50
    for tick in range(0, int(longest) + 1, step):
        x = left + tick * scale
        out.append(f'<path d="M{x:.1f} {y - 14} v5" stroke="#555"/><text x="{x:.1f}" y="{y + 4}" '
                   f'text-anchor="middle">{tick}</text>')
    out.append(f'<text x="{left + width}" y="{y + 18}" text-anchor="end">ms from the start of the process</text>')
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 1000 {y + 26}" '
            'font-family="Liberation Sans, Arial, sans-serif" font-size="12" fill="#222">\n'
            f'<rect width="100%" height="100%" fill="#fff"/>\n' + "\n".join(out) + "\n</svg>\n")


MAKERS = {"source": lambda section: [source(section)], "ratios": ratios, "commands": workbench_commands,
          "latency": latency, "text": hour_text}
TABLES = {"players": players_table, "start": start_table, "workbench": workbench_table, "minute": minute_table,
          "heavy": heavy_table}


def rendered():
    every = figures.read()
    lines = []
    for line in (HERE / "measures.md.in").read_text().splitlines():
        if not line.startswith("@"):
            lines.append(line)
            continue
        section, part = line[1:].split(".")
        if section not in every:
            lines += ["Not measured yet."] if part == "table" else []
            continue
        lines += (TABLES[section] if part == "table" else MAKERS[part])(every[section])
    return {DOCS / "measures.md": "\n".join(lines) + "\n", DOCS / "start.svg": start_picture(every["start"])}


def main():
    stale = [path for path, text in rendered().items() if not path.exists() or path.read_text() != text]
    if sys.argv[1:] == ["--check"]:
        for path in stale:
            print(f"{path.relative_to(HERE.parent)}: differs from bench/measures.json; run bench/write_measures.py")
        sys.exit(1 if stale else 0)
    for path in stale:
        path.write_text(rendered()[path])


if __name__ == "__main__":
    main()
