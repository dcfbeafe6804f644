#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Reads scaled pages with tesseract: text must be as legible as ImageMagick's best cut leaves it.

    legible.py --build FOLDER --source FOLDER

Three pages of 300 dots an inch, in black and white, go to a half and to a third of their size: with the command, and
with ImageMagick's -resize followed by -threshold 50 to 70 %. Errors are insertions, deletions and exchanges of
letters against the text that was drawn.
"""

import os
import shutil
import subprocess
import sys
import tempfile

from PIL import Image, ImageDraw, ImageFont

import shared

FONTS = "/usr/share/fonts/truetype/dejavu"
DPI, WIDTH, MARGIN = 300, 2000, 80
PAGES = (
    ("DejaVuSans.ttf", 10, """The harbour master kept three books. In the first he wrote the ships that came, in the
second those that left, and in the third, which nobody had asked him to keep, the colour of the water at noon. He had
no training in colours. He wrote "slate" and "bottle glass" and once, in a hard frost, "the inside of a mussel". After
forty years the third book had become the longest of the three, and people who came to look up a ship would leave an
hour later knowing nothing of the ship."""),
    ("DejaVuSerif.ttf", 9, """Invoice 20417 of 9 March: 36 boxes of brass hinges at 14.80 each, 112 metres of sash cord,
and one pair of scales, adjusted. Payable within thirty days to the account named below; for parts that come back
unused by the end of April we return the price less 5 per cent. Please quote the number above in every letter. Goods
stay ours until they are paid for in full, and damage that was done on the way must be told to the carrier at once."""),
    ("DejaVuSansCondensed.ttf", 11, """Section 7. Every keeper shall, before the lamp is lit, see that the glass is
clean, the wick even and the oil warm. In fog he sounds the bell twice each minute, and when the fog lifts he writes
down how long it lay. A keeper who leaves the rock in weather that lets no boat return must hold two weeks of food, a
gallon of water for each day, and the small flag by which he can be seen from the shore."""),
)
NONE_TO_TRY = 77  # what CTest takes for a test left out
THRESHOLDS = (50, 55, 60, 65, 70)
DIVISORS = (2, 3)


def page(name, points, text):
    """A page of two colours."""
    font = ImageFont.truetype(os.path.join(FONTS, name), points * DPI // 72)
    lines, line = [], ""
    for word in text.split():
        longer = (line + " " + word).strip()
        if font.getlength(longer) > WIDTH - 2 * MARGIN:
            lines.append(line)
            line = word
        else:
            line = longer
    lines.append(line)
    step = points * DPI // 50
    image = Image.new("L", (WIDTH, step * len(lines) + 2 * MARGIN), 255)
    draw = ImageDraw.Draw(image)
    for number, line in enumerate(lines):
        draw.text((MARGIN, MARGIN + step * number), line, font=font, fill=0)
    return image.point(lambda v: 255 if v >= 128 else 0).convert("1")


def distance(one, other):
    before = list(range(len(other) + 1))
    for i, a in enumerate(one, 1):
        row = [i]
        for j, b in enumerate(other, 1):
            row.append(min(before[j] + 1, row[j - 1] + 1, before[j - 1] + (a != b)))
        before = row
    return before[-1]


def read(paths, dpi, folder):
    """What tesseract reads in each picture; one process for all, since it takes its time to start."""
    listed = os.path.join(folder, "list.txt")
    with open(listed, "w") as out:
        out.write("\n".join(paths) + "\n")
    done = subprocess.run(["tesseract", listed, "-", "--psm", "6", "--dpi", str(dpi)], capture_output=True, text=True,
                          check=True, env=dict(os.environ, OMP_THREAD_LIMIT="1"))
    return [" ".join(text.split()) for text in done.stdout.split("\f")[:len(paths)]]


def main():
    _, _, program = shared.places()
    for needed in ("tesseract", "convert"):
        if not shutil.which(needed):
            print(f"legible: {needed} is not installed")
            return NONE_TO_TRY
    if shared.sanitized(program):
        print("legible: left out with the sanitizers, under which the same bytes are written")
        return NONE_TO_TRY
    faults, told = [], []
    with tempfile.TemporaryDirectory(prefix="raxel-legible-") as folder:
        inputs = []
        for number, spec in enumerate(PAGES):
            inputs.append(os.path.join(folder, f"page-{number}.png"))
            page(*spec).save(inputs[-1])
        for divisor in DIVISORS:
            width = WIDTH // divisor
            subprocess.run([program, "-q", "-f", "-m", "bilevel", "--size", f"{width}xpx", "-d", folder, *inputs], check=True)
            pictures = {"raxel-export": [path[:-4] + ".tif" for path in inputs]}
            for threshold in THRESHOLDS:
                pictures[threshold] = [f"{path[:-4]}-{threshold}.png" for path in inputs]
                for path, out in zip(inputs, pictures[threshold]):
                    subprocess.run(["convert", path, "-resize", f"{width}x", "-threshold", f"{threshold}%", out], check=True)
            texts = read([path for paths in pictures.values() for path in paths], DPI // divisor, folder)
            errors = {}
            for at, key in enumerate(pictures):
                found = texts[at * len(PAGES):(at + 1) * len(PAGES)]
                errors[key] = [distance(seen, " ".join(spec[2].split())) for seen, spec in zip(found, PAGES)]
            ours = errors.pop("raxel-export")
            best = min(errors, key=lambda threshold: sum(errors[threshold]))
            told.append(f"1/{divisor}: {sum(ours)} against {sum(errors[best])} at {best} %")
            if os.environ.get("RAXEL_VERBOSE"):
                print(divisor, ours, errors)
            if sum(ours) > sum(errors[best]):
                faults.append(f"1/{divisor}: {ours} errors, and ImageMagick has {errors[best]} at {best} %")
    return shared.tell(faults, "legible: " + ", ".join(told))


if __name__ == "__main__":
    sys.exit(main())
