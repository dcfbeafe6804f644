#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Runs the commands of docs/recipes.md, and looks at what they leave.

    recipes.py --build FOLDER --source FOLDER
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile

import shared

try:
    from PIL import Image, ImageDraw, ImageFilter, ImageFont
except ImportError:
    print("SKIPPED: python3-pil is not installed")
    sys.exit(77)

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


def recipes(source):
    """The commands under each heading."""
    with open(os.path.join(source, "docs/recipes.md"), encoding="utf-8") as file:
        parts = re.split(r"^## (.*)\n", file.read(), flags=re.M)
    return {parts[i]: re.findall(r"^    (.*)$", parts[i + 1], flags=re.M) for i in range(1, len(parts), 2)}


def make_inputs(folder, source):
    font = ImageFont.truetype(FONT, 30)
    for name in ("scan-1", "scan-2", "scan-3", "letter"):
        page = Image.new("L", (827, 1169), 255)
        ImageDraw.Draw(page).text((90, 120), f"This is {name},\na page of few words", fill=0, font=font)
        page = page.filter(ImageFilter.GaussianBlur(0.7)).point([50 + v * 190 // 255 for v in range(256)])
        page.save(os.path.join(folder, name + ".png"), dpi=(100, 100))
    shutil.copy(os.path.join(source, "samples/photo.png"), folder)
    photo = Image.open(os.path.join(folder, "photo.png")).convert("RGB")
    photo.save(os.path.join(folder, "book.tif"), save_all=True, append_images=[photo.rotate(180)])
    subprocess.run(["zint", "-b", "20", "-d", "RAXEL-0123456789", "--scale=3", "-o", "barcode.png"], cwd=folder, check=True)


def size(path):
    with Image.open(path) as image:
        return image.size, getattr(image, "n_frames", 1)


def pixels_of(path, height):
    """Of every page as many rows: the even row below an odd height is left out."""
    pages = []
    with Image.open(path) as image:
        for page in range(getattr(image, "n_frames", 1)):
            image.seek(page)
            pages.append(image.convert("RGB").crop((0, 0, image.width, height)).tobytes())
    return pages


def is_kept(folder):
    """Every page of every picture, in the colours that it had."""
    names = {"barcode": "png", "photo": "png", "scan-1": "png", "book": "tif"}
    if sorted(os.listdir(folder + "/kept")) != sorted(name + ".tif" for name in names):
        return False
    for name, kind in names.items():
        (_, height), _ = size(f"{folder}/{name}.{kind}")
        if pixels_of(f"{folder}/kept/{name}.tif", height) != pixels_of(f"{folder}/{name}.{kind}", height):
            return False
    return size(folder + "/kept/book.tif")[1] == 2


def has_panel_colors(path):
    """Black, white, green, blue, red, yellow and orange are the numbers 0 to 6, and none is missing in a photo."""
    with Image.open(path) as image:
        table = image.getpalette()[:21]
        return (sorted({index for _, index in image.getcolors()}) == list(range(7)) and
                bytes(table).hex() == "000000" "ffffff" "00ff00" "0000ff" "ff0000" "ffff00" "ff8000")


def label_decodes(folder):
    Image.open(os.path.join(folder, "label.tif")).convert("L").save(os.path.join(folder, "label.png"))
    done = subprocess.run(["zbarimg", "-q", "label.png"], cwd=folder, capture_output=True, text=True)
    return done.stdout == "CODE-128:RAXEL-0123456789\n"


def text_of(path):
    import fitz

    return [page.get_text() for page in fitz.open(path)]


# What there must be when a heading's commands have run, by a word of the heading.
CHECKS = {
    "PDF/A": lambda f: size(f + "/scans.tif") == ((827, 1170), 3) and
             ["few words" in text for text in text_of(f + "/archive.pdf")] == [True] * 3,
    "fax": lambda f: size(f + "/fax.tif") == ((1728, 2290), 2),
    "Labels": lambda f: size(f + "/label.tif") == ((406, 142), 1) and label_decodes(f),
    "e-ink": lambda f: size(f + "/panel.tif") == ((800, 480), 1) and size(f + "/colors.tif") == ((600, 448), 1) and
             has_panel_colors(f + "/colors.tif"),
    "folder": is_kept,
}


def main():
    build, source, _ = shared.places()
    faults, run, skipped = [], 0, set()
    if not shutil.which("zint") or not shutil.which("zbarimg"):
        print("SKIPPED: zint or zbar-tools is not installed")
        sys.exit(77)
    environment = dict(os.environ, PATH=build + ":" + os.environ["PATH"], LC_ALL="C.UTF-8")
    with tempfile.TemporaryDirectory() as folder:
        make_inputs(folder, source)
        found = recipes(source)
        if len(found) != len(CHECKS):
            faults.append(f"{len(found)} recipes, and {len(CHECKS)} are looked at")
        for heading, commands in found.items():
            missing = [c.split()[0] for c in commands if not shutil.which(c.split()[0], path=environment["PATH"])]
            if missing:
                skipped.update(missing)
                continue
            for command in commands:
                run += 1
                done = subprocess.run(["sh", "-c", command], cwd=folder, env=environment, capture_output=True, text=True)
                if done.returncode != 0:
                    faults.append(f"{command}: exit {done.returncode}: {done.stderr[-300:]}")
            look = [check for word, check in CHECKS.items() if word in heading]
            if len(look) != 1 or (not faults and not look[0](folder)):
                faults.append(f"{heading}: what is left is not what was promised")
    for program in sorted(skipped):
        print(f"skipped: {program} is not installed")
    return shared.tell(faults, f"{run} commands, {len(faults)} faults, {len(skipped)} programs skipped")


if __name__ == "__main__":
    sys.exit(main())
