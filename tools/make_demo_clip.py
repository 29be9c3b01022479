#!/usr/bin/python3
"""Draws the demo ad's clip: tools/make_demo_clip.py examples/demo/clip.mp4

Fourteen seconds, 1280x720 at 30 frames per second: an invented lamp maker's evening. A row of lamps along the floor
lights up, one per second, so that any frame shows its second. Needs python3-cairo and ffmpeg; the tune is synthesised.
"""
import math
import struct
import subprocess
import sys
import tempfile
import wave

import cairo

WIDTH, HEIGHT, RATE, SECONDS = 1280, 720, 30, 14
NIGHT, DUSK, WARM, CREAM, INK = (0.05, 0.07, 0.13), (0.13, 0.16, 0.29), (1.0, 0.76, 0.36), (1.0, 0.95, 0.86), (0.09, 0.10, 0.16)
ROOMS = [(1.0, 0.76, 0.36), (0.98, 0.52, 0.45), (0.52, 0.80, 0.92), (0.66, 0.87, 0.55)]


def ease(t, begin, end):
    x = min(max((t - begin) / (end - begin), 0.0), 1.0)
    return x * x * (3 - 2 * x)


def mix(a, b, x):
    return tuple(p + (q - p) * x for p, q in zip(a, b))


def text(c, words, x, y, size, colour, alpha=1.0, centred=True, bold=True):
    c.select_font_face("Liberation Sans", cairo.FONT_SLANT_NORMAL,
                       cairo.FONT_WEIGHT_BOLD if bold else cairo.FONT_WEIGHT_NORMAL)
    c.set_font_size(size)
    extents = c.text_extents(words)
    c.move_to(x - extents.x_advance / 2 if centred else x, y)
    c.set_source_rgba(*colour, alpha)
    c.show_text(words)


def glow(c, x, y, radius, colour, strength):
    light = cairo.RadialGradient(x, y, 0, x, y, radius)
    light.add_color_stop_rgba(0, *colour, 0.55 * strength)
    light.add_color_stop_rgba(0.4, *colour, 0.22 * strength)
    light.add_color_stop_rgba(1, *colour, 0)
    c.set_source(light)
    c.arc(x, y, radius, 0, 2 * math.pi)
    c.fill()


def pendant(c, x, drop, scale, colour, lit):
    """A lamp on its cord, drop points below the ceiling."""
    c.set_source_rgb(*mix(INK, CREAM, 0.25))
    c.set_line_width(4 * scale)
    c.move_to(x, 0)
    c.line_to(x, drop)
    c.stroke()
    if lit > 0:
        beam = cairo.LinearGradient(0, drop + 120 * scale, 0, HEIGHT - 70)
        beam.add_color_stop_rgba(0, *colour, 0.34 * lit)
        beam.add_color_stop_rgba(1, *colour, 0)
        c.set_source(beam)
        c.move_to(x - 118 * scale, drop + 120 * scale)
        c.line_to(x + 118 * scale, drop + 120 * scale)
        c.line_to(x + 330 * scale, HEIGHT - 70)
        c.line_to(x - 330 * scale, HEIGHT - 70)
        c.close_path()
        c.fill()
    c.save()
    c.translate(x, drop)
    c.scale(scale, scale)
    c.move_to(-26, 0)
    c.curve_to(-30, 50, -118, 60, -124, 122)
    c.line_to(124, 122)
    c.curve_to(118, 60, 30, 50, 26, 0)
    c.close_path()
    c.set_source_rgb(*mix(mix(INK, CREAM, 0.18), colour, 0.25 + 0.65 * lit))
    c.fill()
    c.set_source_rgb(*mix(mix(INK, CREAM, 0.3), (1, 1, 0.95), lit))
    c.save()
    c.scale(1, 0.16)
    c.arc(0, 122 / 0.16, 122, 0, 2 * math.pi)
    c.restore()
    c.fill()
    c.restore()
    if lit > 0:
        glow(c, x, drop + 130 * scale, 300 * scale, colour, lit)


def floor_lamps(c, t):
    """A row of lamps; one more lights up every second."""
    for n in range(SECONDS):
        x = 90 + n * (WIDTH - 180) / (SECONDS - 1)
        lit = ease(t, n, n + 0.25)
        glow(c, x, HEIGHT - 44, 46, WARM, lit)
        c.set_source_rgb(*mix(mix(NIGHT, CREAM, 0.22), WARM, lit))
        c.arc(x, HEIGHT - 44, 9 + 3 * lit, 0, 2 * math.pi)
        c.fill()


def frame(c, t):
    evening = ease(t, 0, 3)
    sky = cairo.LinearGradient(0, 0, 0, HEIGHT)
    sky.add_color_stop_rgb(0, *mix(NIGHT, DUSK, evening))
    sky.add_color_stop_rgb(1, *NIGHT)
    c.set_source(sky)
    c.paint()

    if t < 4.6:  # a dark room, one lamp comes down and goes on
        leaving = 1 - ease(t, 4.1, 4.6)
        drop = 330 * ease(t, 0.2, 1.6) - 140 + 12 * math.sin(t * 2.2) * (1 - ease(t, 1.6, 3))
        pendant(c, 640, drop * leaving - 200 * (1 - leaving), 1.15, WARM, ease(t, 1.9, 2.3) * leaving)
        text(c, "Evenings,", 300, 330, 64, CREAM, ease(t, 2.4, 3.0) * leaving)
        text(c, "switched on.", 985, 330, 64, CREAM, ease(t, 2.8, 3.4) * leaving)
    elif t < 9.3:  # four rooms, four lights
        for n, colour in enumerate(ROOMS):
            coming = ease(t, 4.5 + 0.35 * n, 5.3 + 0.35 * n) * (1 - ease(t, 8.8, 9.3))
            sway = 6 * math.sin(1.4 * t + n)
            lit = ease(t, 5.6 + 0.55 * n, 5.9 + 0.55 * n) * (0.85 + 0.15 * math.sin(3 * t + n))
            pendant(c, 200 + 293 * n + sway, -260 + 390 * coming, 0.72, colour, lit * coming)
        shown = ease(t, 6.4, 7.0) * (1 - ease(t, 8.8, 9.3))
        text(c, "One lamp. Every mood.", 640, 560, 58, CREAM, shown)
    else:  # the lamp, its name, its price
        turn = ease(t, 9.2, 10.2)
        colour = mix(ROOMS[int((t - 9.2) / 1.2) % 4], ROOMS[(int((t - 9.2) / 1.2) + 1) % 4],
                     ease((t - 9.2) % 1.2, 0.8, 1.2))
        pendant(c, 330, -220 + 420 * turn, 1.2, colour, turn)
        c.save()
        c.translate(60 * (1 - turn), 0)
        text(c, "lumo", 850, 300, 150, CREAM, turn)
        text(c, "Light that knows the hour.", 850, 380, 42, CREAM, ease(t, 10.3, 10.9), bold=False)
        c.restore()
        tag = ease(t, 11.2, 11.7)
        if tag > 0:
            c.save()
            c.translate(850, 480)
            c.scale(tag, tag)
            c.new_path()  # show_text leaves a current point behind
            c.set_source_rgb(*WARM)
            c.arc(-150, 0, 42, math.pi / 2, 3 * math.pi / 2)
            c.arc(150, 0, 42, -math.pi / 2, math.pi / 2)
            c.close_path()
            c.fill()
            text(c, "from 39 a lamp", 0, 14, 42, INK)
            c.restore()
    floor_lamps(c, t)


def tune(path):
    """A slow music box in four chords."""
    rate, samples = 44100, [0.0] * (44100 * SECONDS)
    chords = [(220.0, 277.18, 329.63, 440.0), (185.0, 220.0, 277.18, 369.99),
              (146.83, 220.0, 293.66, 369.99), (164.81, 207.65, 246.94, 329.63)]
    for beat in range(int(SECONDS * 2.5)):
        chord = chords[(beat // 5) % 4]
        pitch = chord[(beat * 3) % 4] * (2 if beat % 5 != 0 else 1)
        begin = int(beat * 0.4 * rate)
        for n in range(min(int(1.6 * rate), len(samples) - begin)):
            s = n / rate
            samples[begin + n] += 0.16 * math.exp(-3.2 * s) * (
                math.sin(2 * math.pi * pitch * s) + 0.35 * math.exp(-5 * s) * math.sin(6 * math.pi * pitch * s))
    with wave.open(path, "wb") as out:
        out.setnchannels(2)
        out.setsampwidth(2)
        out.setframerate(rate)
        fade = rate * (SECONDS - 1)
        for n, sample in enumerate(samples):
            level = sample * min(1.0, (len(samples) - n) / (len(samples) - fade))
            value = int(max(-1.0, min(1.0, level)) * 32000)
            out.writeframesraw(struct.pack("<hh", value, value))


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: tools/make_demo_clip.py OUT.mp4")
    with tempfile.TemporaryDirectory() as folder:
        tune(folder + "/tune.wav")
        encoder = subprocess.Popen(
            ["ffmpeg", "-loglevel", "error", "-y", "-f", "rawvideo", "-pix_fmt", "bgra", "-s", f"{WIDTH}x{HEIGHT}",
             "-r", str(RATE), "-i", "-", "-i", folder + "/tune.wav", "-c:v", "libx264", "-preset", "veryslow",
             "-profile:v", "main", "-pix_fmt", "yuv420p", "-crf", "27", "-g", "60", "-c:a", "aac", "-b:a", "64k",
             "-fflags", "+bitexact", "-movflags", "+faststart", "-t", str(SECONDS), sys.argv[1]],
            stdin=subprocess.PIPE)
        for n in range(SECONDS * RATE):
            surface = cairo.ImageSurface(cairo.FORMAT_RGB24, WIDTH, HEIGHT)
            frame(cairo.Context(surface), n / RATE)
            encoder.stdin.write(bytes(surface.get_data()))
        encoder.stdin.close()
        sys.exit(encoder.wait())


if __name__ == "__main__":
    main()
