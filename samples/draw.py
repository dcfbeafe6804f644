#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the sample pictures of this folder.

    samples/draw.py [FOLDER]

Needs python3-pil and fonts-dejavu-core. Nothing is random and nothing depends on the clock, so the
same versions of both draw the same pixels. README.md tells what each picture is for.
"""

import math
import os
import sys

from PIL import Image, ImageDraw, ImageFont

FONTS = "/usr/share/fonts/truetype/dejavu"


# --- a smooth field of noise -----------------------------------------------------------------


def lattice(x, y, seed):
    """A number from 0 to 1 for each whole-numbered point of the plane."""
    h = (x * 374761393 + y * 668265263 + seed * 2246822519) & 0xFFFFFFFF
    h = ((h ^ (h >> 13)) * 1274126177) & 0xFFFFFFFF
    return ((h ^ (h >> 16)) & 0xFFFF) / 65535.0


def smooth(t):
    return t * t * (3 - 2 * t)


def noise(x, y, seed):
    """Value noise: the lattice, smoothly interpolated."""
    x0, y0 = math.floor(x), math.floor(y)
    u, v = smooth(x - x0), smooth(y - y0)
    top = lattice(x0, y0, seed) * (1 - u) + lattice(x0 + 1, y0, seed) * u
    low = lattice(x0, y0 + 1, seed) * (1 - u) + lattice(x0 + 1, y0 + 1, seed) * u
    return top * (1 - v) + low * v


def cloud(x, y, seed, octaves):
    """Octaves of noise, each half as strong and twice as fine as the one before; 0 to 1."""
    total, weight = 0.0, 0.5
    for _ in range(octaves):
        total += weight * noise(x, y, seed)
        x, y, weight, seed = x * 2, y * 2, weight / 2, seed + 1
    return total


def mix(a, b, t):
    t = min(1.0, max(0.0, t))
    return tuple(p + (q - p) * t for p, q in zip(a, b))


# --- photo.png: a lake at dusk ----------------------------------------------------------------


def ridge(x, base, height, seed):
    return base - height * cloud(x / 90.0, seed * 7.3, seed, 4)


def balloon(x, y, below):
    """A striped balloon at (452, 120), lit from the left; None outside it."""
    dx, dy = (x - 452) / 46.0, (y - 120) / 54.0
    r = dx * dx + dy * dy
    if r < 1:
        stripe = int((math.asin(max(-1, min(1, dx / math.sqrt(1 - dy * dy + 1e-9)))) + math.pi / 2) * 3.2)
        hue = [(205, 44, 38), (240, 232, 214), (36, 84, 168), (244, 186, 32)][stripe % 4]
        light = 0.35 + 0.75 * max(0.0, -0.55 * dx - 0.45 * dy + 0.7 * math.sqrt(1 - r))
        return tuple(c * light for c in hue)
    if 186 <= y <= 200 and abs(x - 452) <= 10:
        return (92, 60, 34)
    if 172 <= y < 186 and min(abs(x - 452 - 9 - (186 - y) * 0.5), abs(x - 452 + 9 + (186 - y) * 0.5)) < 0.8:
        return (48, 40, 36)
    return below


def air(x, y):
    """Everything above the shore line, which lies at row 270."""
    sky = mix((38, 58, 118), (250, 176, 112), smooth(min(1.0, y / 265.0)))
    veil = cloud(x / 130.0, y / 42.0, 3, 5)
    sky = mix(sky, (255, 222, 196), max(0.0, (veil - 0.46) * 2.4) * (0.35 + y / 420.0))
    glow = math.hypot(x - 150, y - 214)
    sky = mix(sky, (255, 244, 206), math.exp(-glow * glow / 5200.0))
    if glow < 17:
        sky = (255, 250, 226)
    sky = balloon(x, y, sky)
    for base, height, seed, far, near in (
        (262, 120, 21, (122, 112, 152), (150, 126, 150)),
        (268, 78, 22, (78, 78, 108), (104, 88, 104)),
        (276, 46, 23, (34, 46, 52), (52, 58, 50)),
    ):
        edge = ridge(x, base, height, seed)
        if y > edge:
            grain = cloud(x / 9.0, y / 5.0, seed + 30, 3)
            hill = mix(far, near, (y - edge) / 70.0 + (grain - 0.45) * 0.9)
            sky = mix(sky, hill, y - edge)  # one pixel of soft edge
    return sky


def lake(x, y):
    depth = (y - 270) / 157.0
    swell = cloud(x / (26.0 + 50 * depth), y / (2.2 + 7 * depth), 51, 3) - 0.45
    mirrored = air(x + swell * 22 * (0.3 + depth), max(0.0, 270 - (y - 270) * 1.25 + swell * 14))
    water = mix(mirrored, (18, 34, 58), 0.24 + 0.42 * depth)
    return mix(water, (255, 236, 206), max(0.0, swell - 0.2) * 1.5)


def photo():
    width, height = 640, 427
    picture = Image.new("RGB", (width, height))
    pixels = picture.load()
    for y in range(height):
        for x in range(width):
            color = air(x, y) if y < 270 else lake(x, y)
            # Film grain, one value for all three channels.
            grain = (lattice(x, y, 77) + lattice(x, y, 78) - 1.0) * 1.1
            pixels[x, y] = tuple(min(255, max(0, int(c + grain + 0.5))) for c in color)
    return picture


# --- page.png: a page of text at 300 dots an inch ------------------------------------------------

PROSE = """The harbour master kept three books. In the first he wrote the ships that came, in the
second those that left, and in the third, which nobody had asked him to keep, the colour of the water
at noon. He had no training in colours. He wrote "slate" and "bottle glass" and once, in a hard frost,
"the inside of a mussel". After forty years the third book had become the longest of the three, and
people who came to look up a ship would leave an hour later knowing nothing of the ship. When he
retired, the office sent the first two books to the archive and asked him what should be done with the
third. He said that it was not finished. The new man was a careful clerk who had never looked at water
except to see how high it stood. He found the book on the sill, with a pencil on a string, and at noon
on his first day, because the page was ruled and dated, he went to the window to see what he ought to
write in it. It took him some time."""


def page():
    dpi = 300
    width, height = int(8.27 * dpi), int(11.69 * dpi)  # A4
    picture = Image.new("L", (width, height), 255)
    draw = ImageDraw.Draw(picture)
    left, right = 260, width - 260

    def font(name, points):
        return ImageFont.truetype(os.path.join(FONTS, name), points * dpi // 72)

    draw.text((left, 240), "The Third Book", font=font("DejaVuSerif-Bold.ttf", 24), fill=0)
    draw.line((left, 372, right, 372), fill=0, width=5)
    body, y = font("DejaVuSerif.ttf", 11), 440
    sentences = PROSE.replace("\n", " ").split(". ")
    for first in (0, 3):
        line, indent = "", 80
        for word in ". ".join(sentences[first:]).split():
            longer = (line + " " + word).strip()
            if body.getlength(longer) > right - left - indent:
                draw.text((left + indent, y), line, font=body, fill=0)
                y, line, indent = y + 66, word, 0
            else:
                line = longer
        draw.text((left + indent, y), line, font=body, fill=0)
        y += 96
    # A small ruled table and a drawing, for long runs and slanted edges.
    small = font("DejaVuSans.ttf", 9)
    for row in range(5):
        draw.line((left, y + row * 64, left + 900, y + row * 64), fill=0, width=3)
        if row < 4:
            cells = [("Noon", "Water", "Frost"), ("1 March", "slate", "none"),
                     ("2 March", "bottle glass", "none"), ("3 March", "mussel", "hard")][row]
            for column, text in enumerate(cells):
                draw.text((left + 24 + column * 300, y + row * 64 + 12), text, font=small, fill=0)
    for column in range(4):
        draw.line((left + column * 300, y, left + column * 300, y + 256), fill=0, width=3)
    cx, cy = right - 330, y + 128
    draw.ellipse((cx - 130, cy - 130, cx + 130, cy + 130), outline=0, width=6)
    for ray in range(16):
        a = ray * math.pi / 8
        draw.line((cx + 40 * math.cos(a), cy + 40 * math.sin(a),
                   cx + 120 * math.cos(a), cy + 120 * math.sin(a)), fill=0, width=4)
    bilevel = picture.point(lambda v: 255 if v >= 128 else 0).convert("1")
    return bilevel, {"dpi": (dpi, dpi)}


# --- chart4.png and chart8.png: indexed charts ---------------------------------------------------


def chart(colors, indexes, size, labels):
    """Bars over a grid, drawn in the colour numbers `indexes` of the table `colors`."""
    width, height = size
    picture = Image.new("P", size, 0)
    picture.putpalette([c for color in colors for c in color])
    draw = ImageDraw.Draw(picture)
    draw.fontmode = "1"  # no half-tones: every pixel is one of the table's colours
    font = ImageFont.truetype(os.path.join(FONTS, "DejaVuSans.ttf"), 13)
    base, top = height - 34, 24
    for step in range(6):
        y = base - (base - top) * step // 5
        draw.line((44, y, width - 14, y), fill=2)
        draw.text((12, y - 8), str(step * 20), font=font, fill=1)
    room = (width - 72) / len(indexes)
    for i, index in enumerate(indexes):
        value = 0.16 + 0.8 * abs(math.sin(0.9 + i * 1.37 * 11 / len(indexes)))
        x = 54 + i * room
        draw.rectangle((x, base - (base - top) * value, x + room * 0.78, base), fill=index)
    draw.line((44, base, width - 14, base), fill=1, width=2)
    draw.line((44, top, 44, base), fill=1, width=2)
    for text, x in labels:
        draw.text((x, base + 10), text, font=font, fill=1)
    return picture


def chart4():
    colors = [(255, 255, 255), (0, 0, 0), (216, 216, 216), (31, 119, 180), (255, 127, 14), (44, 160, 44),
              (214, 39, 40), (148, 103, 189), (140, 86, 75), (227, 119, 194), (188, 189, 34), (23, 190, 207),
              (250, 220, 160)]
    labels = [("spring", 76), ("summer", 166), ("autumn", 256)]
    return chart(colors, list(range(3, 13)), (353, 240), labels), {"bits": 4}


def chart8():
    colors = [(255, 255, 255), (0, 0, 0), (224, 224, 224)]
    for i in range(197):  # once around the colour circle
        a = 2 * math.pi * i / 197
        colors.append(tuple(int(127.5 + 112 * math.cos(a - shift)) for shift in (0, 2.0944, 4.1888)))
    labels = [("red", 60), ("green", 260), ("blue", 450)]
    return chart(colors, list(range(3, 200)), (641, 301), labels), {}


# --- ramp.png: every grey level ------------------------------------------------------------------


def ramp():
    picture = Image.new("L", (512, 96))
    pixels = picture.load()
    for y in range(96):
        for x in range(512):
            if y < 40:
                pixels[x, y] = x // 2  # 256 steps of two pixels
            elif y < 64:
                pixels[x, y] = (x // 32) * 17  # 16 steps
            else:
                pixels[x, y] = 255 - x // 2 if (x // 64) % 2 == 0 else 255 * ((x + y) % 2)
    return picture


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    os.makedirs(folder, exist_ok=True)
    for name, (picture, options) in {
        "photo.png": (photo(), {}),
        "page.png": page(),
        "chart4.png": chart4(),
        "chart8.png": chart8(),
        "ramp.png": (ramp(), {}),
    }.items():
        path = os.path.join(folder, name)
        picture.save(path, optimize=True, **options)
        print(f"{path}: {picture.size[0]}x{picture.size[1]} {picture.mode}, {os.path.getsize(path)} bytes")


if __name__ == "__main__":
    main()
