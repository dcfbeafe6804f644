#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the samples in every mode and shows the written files in docs/gallery.md.

    samples/gallery.py BUILD-FOLDER          (./dev gallery)

The pictures of the page are decoded from the TIFF files that raxel-export has just written. Needs
python3-pil.
"""

import os
import subprocess
import sys
import tempfile

from PIL import Image

HERE = os.path.dirname(os.path.abspath(__file__))
DOCS = os.path.join(os.path.dirname(HERE), "docs")

# Title, and what each row shows: sample, options, words.
SECTIONS = (
    ("A photo", "photo", ("--size", "320x214px"), (
        ("rgb", ("-m", "rgb"), "24 bits: every pixel as it was"),
        ("color256", ("-m", "color256"), "256 colours of the picture's own"),
        ("color16", ("-m", "color16"), "16 colours of its own, dithered"),
        ("color16-nearest", ("-m", "color16", "--no-dither"), "the same without dithering"),
        ("color8", ("-m", "color8"), "the eight corners of the colour cube, dithered"),
        ("grey256", ("-m", "grey256"), "256 grey levels"),
        ("grey16", ("-m", "grey16"), "16 grey levels, dithered"),
        ("bilevel", ("-m", "bilevel"), "black and white, dithered"),
    )),
    ("Colour treatments", "photo", ("--size", "320x214px", "-m", "color256"), (
        ("invert", ("--color-treatment", "invert"), "every channel inverted"),
        ("invert-grey", ("--color-treatment", "invert-grey"), "only greys inverted"),
        ("grey", ("--color-treatment", "grey"), "all grey"),
        ("grey-invert", ("--color-treatment", "grey-invert"), "all grey, inverted"),
    )),
    ("A chart of 13 colours", "chart4", (), (
        ("color16", ("-m", "color16"), "16 colours: every pixel as it was"),
        ("grey16", ("-m", "grey16"), "16 grey levels, dithered"),
        ("bilevel", ("-m", "bilevel", "--no-dither"), "black and white, nearest"),
    )),
    ("Every grey level", "ramp", (), (
        ("grey256", ("-m", "grey256"), "256 grey levels: every pixel as it was"),
        ("grey16", ("-m", "grey16"), "16 grey levels, dithered"),
        ("bilevel", ("-m", "bilevel"), "black and white, dithered"),
    )),
    ("A page of text", "page", ("--size", "413x584px",), (
        ("bilevel", ("-m", "bilevel"), "black and white"),
        ("grey16", ("-m", "grey16", "--no-dither"), "16 grey levels"),
    )),
)


def main():
    program = os.path.join(os.path.abspath(sys.argv[1]), "raxel-export")
    folder = os.path.join(DOCS, "gallery")
    os.makedirs(folder, exist_ok=True)
    page = ["# Gallery", "",
            "One sample in every mode beside its source. Each picture was decoded from the TIFF file that",
            "`raxel-export` wrote; `./dev gallery` makes this page and all that it shows.", ""]
    written = set()
    with tempfile.TemporaryDirectory() as place:
        for title, sample, common, rows in SECTIONS:
            source = f"../samples/{sample}.png"
            page += [f"## {title}", "", f"Source: [samples/{sample}.png]({source})", "", f"![source]({source})", "",
                     "| | command | |", "|---|---|---|"]
            for name, options, words in rows:
                out = os.path.join(place, "out.tif")
                command = [*common, *options, "-c", "lzw"]
                subprocess.run([program, "--verify", *command, os.path.join(HERE, sample + ".png"), out], check=True)
                image = Image.open(out)
                shown = f"{sample}-{name}.png"
                written.add(shown)
                if image.mode == "L" and len(image.getcolors()) <= 16:
                    image = image.convert("P", palette=Image.Palette.ADAPTIVE, colors=16)
                image.save(os.path.join(folder, shown), optimize=True)
                page.append(f"| ![{words}](gallery/{shown}) | `{' '.join(command)}` | {words} |")
            page.append("")
    for left in set(os.listdir(folder)) - written:
        os.unlink(os.path.join(folder, left))
    with open(os.path.join(DOCS, "gallery.md"), "w") as text:
        text.write("\n".join(page))
    size = sum(os.path.getsize(os.path.join(folder, name)) for name in written)
    print(f"docs/gallery.md: {len(written)} pictures, {size} bytes")


if __name__ == "__main__":
    main()
