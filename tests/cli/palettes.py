#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes files in given colours, and reads tables and indices back with libtiff and Pillow.

    palettes.py --build FOLDER --source FOLDER

Tables and indices are worked out by hand here.
"""

import json
import os
import re
import subprocess
import sys
import tempfile

import shared

try:
    from PIL import Image
except ImportError:
    print("SKIPPED: python3-pil is not installed")
    sys.exit(77)

LEVELS = (0, 51, 102, 153, 204, 255)
EINK = [(0, 0, 0), (255, 255, 255), (0, 255, 0), (0, 0, 255), (255, 0, 0), (255, 255, 0), (255, 128, 0)]
EGA = [(0, 0, 0), (0, 0, 170), (0, 170, 0), (0, 170, 170), (170, 0, 0), (170, 0, 170), (170, 85, 0), (170, 170, 170),
       (85, 85, 85), (85, 85, 255), (85, 255, 85), (85, 255, 255), (255, 85, 85), (255, 85, 255), (255, 255, 85), (255, 255, 255)]
NAMED = {"eink7": EINK, "ega16": EGA, "web216": [(r, g, b) for r in LEVELS for g in LEVELS for b in LEVELS]}


class Palettes(shared.Checks):
    def __init__(self, program, samples, folder):
        super().__init__(folder)
        self.program, self.samples = program, samples

    def export(self, *arguments, code=0):
        """Runs the command; returns what it says on standard error."""
        done = subprocess.run([self.program, *arguments], capture_output=True, text=True, cwd=self.folder)
        self.same(" ".join(arguments), (done.returncode, done.stderr if code == 0 and done.returncode else ""), (code, ""))
        return done.stderr

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8", newline="") as file:
            file.write(text)

    def table(self, name):
        """The table of a file, as Pillow reads it and as libtiff does, which have to agree."""
        with Image.open(self.path(name)) as image:
            entries = image.getpalette()
        pillow = [tuple(entries[i:i + 3]) for i in range(0, len(entries), 3)]
        if self.has("tiffinfo"):
            shown = subprocess.run(["tiffinfo", "-c", self.path(name)], capture_output=True, text=True).stdout
            rows = re.findall(r"^ +\d+: +(\d+) +(\d+) +(\d+)$", shown, re.M)
            libtiff = [tuple(int(v) // 257 for v in row) for row in rows]
            self.true(f"{name}: 16-bit entries", all(int(v) % 257 == 0 for row in rows for v in row))
            self.same(f"{name}: libtiff's table", libtiff, (pillow + [(0, 0, 0)] * 256)[:len(libtiff)])
            return libtiff
        return pillow

    def indices(self, name):
        with Image.open(self.path(name)) as image:
            return list(image.getdata())

    def named_tables_are_exact(self):
        for name, colors in NAMED.items():
            entries = 16 if len(colors) <= 16 else 256
            # Every colour in its turn, from the last to the first.
            own = Image.new("RGB", (len(colors), 2))
            own.putdata(colors[::-1] * 2)
            own.save(self.path("own.png"))
            for dither in ((), ("--dither",), ("--no-dither",)):
                said = self.export("--verify", "-c", "lzw", "--palette", name.upper(), *dither, "own.png", "own.tif")
                self.same(f"{name}: words", said, "")
                self.same(f"{name}: table", self.table("own.tif"), colors + [(0, 0, 0)] * (entries - len(colors)))
                self.same(f"{name}: indices", self.indices("own.tif"), list(range(len(colors)))[::-1] * 2)
            # In a larger table they are the same.
            self.export("--palette", name, "-m", "color256", "own.png", "own.tif")
            self.same(f"{name}: of 256", self.table("own.tif"), colors + [(0, 0, 0)] * (256 - len(colors)))

    def nearest_and_dithered(self):
        # By the squares of the distances: 30 * 30 twice from red, 33 * 33 from orange, 95 * 95 thrice from
        # white, where orange is 95 * 95 + 32 * 32 + 160 * 160 away, and 127 * 127 from blue.
        few = Image.new("RGB", (4, 2))
        few.putdata([(225, 30, 0), (255, 161, 0), (160, 160, 160), (0, 0, 128)] * 2)
        few.save(self.path("few.png"))
        self.export("--palette", "eink7", "--no-dither", "few.png", "few.tif")
        self.same("nearest", self.indices("few.tif"), [4, 6, 1, 3] * 2)
        photo = os.path.join(self.samples, "photo.png")
        told = {}
        for how in ((), ("--dither",), ("--no-dither",)):
            self.export("--verify", "--palette", "eink7", *how, photo, "photo.tif")
            told[how] = self.indices("photo.tif")
            self.true("indices of the table alone", max(told[how]) <= 6)
        self.true("16 colours are dithered by default", told[()] == told["--dither",] != told["--no-dither",])
        self.table_mean(photo)

    def table_mean(self, photo):
        """Seen from afar a dithered photo has the brightness of the photo; the nearest colours have not."""
        with Image.open(photo) as image:
            wanted = image.convert("RGB").resize((8, 6), Image.BOX).convert("L")
        loss = []
        for how in ("--dither", "--no-dither"):
            self.export("--palette", "eink7", how, photo, "photo.tif")
            with Image.open(self.path("photo.tif")) as image:
                seen = image.convert("RGB").resize((8, 6), Image.BOX).convert("L")
            loss.append(sum(abs(a - b) for a, b in zip(seen.getdata(), wanted.getdata())))
        self.true(f"dithering keeps brightness: {loss}", loss[0] * 2 < loss[1])

    def files_of_colors(self):
        self.write("two.gpl", "GIMP Palette\r\nName: two\r\nColumns: 1\r\n#\r\n10 20 30\tdark\r\n200 210 220\tlight\r\n")
        Image.new("RGB", (3, 2), (180, 200, 255)).save(self.path("plain.png"))
        self.export("--palette", "two.gpl", "--no-dither", "plain.png", "plain.tif")
        self.same(".gpl", self.table("plain.tif")[:3], [(10, 20, 30), (200, 210, 220), (0, 0, 0)])
        self.same(".gpl: indices", self.indices("plain.tif"), [1] * 6)
        # Through a pipe, as --palette <(program) has it.
        piped = subprocess.run(["sh", "-c", f'cat two.gpl | "{self.program}" --palette - plain.png piped.tif --no-dither'],
                               cwd=self.folder, capture_output=True, text=True)
        self.same("from a pipe", (piped.returncode, piped.stderr), (0, ""))
        self.same("the same file", open(self.path("piped.tif"), "rb").read(), open(self.path("plain.tif"), "rb").read())

        # A palette picture's table as it stands, with what is twice in it and what no pixel has.
        own = Image.new("P", (2, 2), 2)
        own.putpalette([1, 2, 3, 4, 5, 6, 1, 2, 3, 250, 250, 250])
        own.save(self.path("own.png"))
        self.export("--palette", "own.png", "plain.png", "plain.tif", "--no-dither")
        self.same("a picture's table", self.table("plain.tif")[:5], [(1, 2, 3), (4, 5, 6), (1, 2, 3), (250, 250, 250), (0, 0, 0)])
        self.same("a picture's table: indices", self.indices("plain.tif"), [3] * 6)
        # A file that was written with a table gives the same to the next one.
        self.export("--palette", "plain.tif", "plain.png", "again.tif", "--no-dither")
        self.same("a TIFF's table", self.table("again.tif"), self.table("plain.tif"))

        # Colours without a table, in the order in which they appear.
        small = Image.new("RGB", (2, 2))
        small.putdata([(9, 8, 7), (180, 200, 250), (9, 8, 7), (0, 1, 2)])
        small.save(self.path("small.png"))
        self.export("--palette", "small.png", "plain.png", "plain.tif", "--no-dither")
        self.same("a small picture's colours", self.table("plain.tif")[:4], [(9, 8, 7), (180, 200, 250), (0, 1, 2), (0, 0, 0)])
        ramp = Image.new("L", (256, 1))
        ramp.putdata(range(256))
        ramp.save(self.path("ramp.png"))
        self.export("--palette", "ramp.png", "plain.png", "plain.tif")
        self.same("256 greys", self.table("plain.tif"), [(v, v, v) for v in range(256)])

    def refusals(self):
        self.write("cut.gpl", "GIMP Palette\nName: cut\n1 2\n")
        self.write("empty.gpl", "GIMP Palette\nName: empty\n")
        self.write("text.gpl", "these are no colours\n")
        self.write("nothing.gpl", "")
        self.write("many.gpl", "GIMP Palette\n" + "".join(f"{i % 256} {i // 256} 0\n" for i in range(257)))
        Image.new("RGB", (3, 2), (180, 200, 255)).save(self.path("plain.png"))
        ramp = Image.new("RGB", (257, 1))
        ramp.putdata([(min(v, 255), 0, v // 256) for v in range(257)])
        ramp.save(self.path("ramp.png"))
        none = "is no palette: give a GIMP palette (.gpl), or a picture of few colours"
        for name, why in (("cut.gpl", "line 3 is no colour, which begins with red, green and blue from 0 to 255"),
                          ("empty.gpl", "has no colours"), ("text.gpl", none), ("nothing.gpl", "is empty"),
                          ("many.gpl", "has more than 256 colours"), ("/dev/zero", none),
                          ("ramp.png", "has more than 256 colours, which is too many for a palette"),
                          (self.folder, "is a folder; name a palette in it"),
                          ("eink", "cannot be opened: No such file or directory; those with names are eink7 ega16 web216")):
            said = self.export("--palette", name, "plain.png", "none.tif", code=66)
            self.same(f"--palette {name}", said, f"raxel-export: {name}: {why}\n")
        misfit = "plain.png: a palette is for the modes color16, with up to 16 colours, and color256: use --mode auto, or another --palette"
        for mode, name in (("rgb", "eink7"), ("bilevel", "eink7"), ("grey16", "ega16"), ("grey256", "ega16"), ("color8", "eink7"),
                           ("color16", "web216")):
            said = self.export("-m", mode, "--palette", name, "plain.png", "none.tif", code=64)
            self.same(f"{name} as {mode}", said, f"raxel-export: {misfit}\n")
        said = self.export("--as-is", "--palette", "eink7", "plain.png", "none.tif", code=64)
        self.same("--as-is", said, "raxel-export: --as-is leaves all to the filter: no --palette\n")
        self.export("--palette", "", "plain.png", "none.tif", code=64)
        self.true("nothing is written", not os.path.exists(self.path("none.tif")))

    def pages_and_lists(self):
        photo = os.path.join(self.samples, "photo.png")
        self.export("--verify", "--pages", "--palette", "eink7", "--size", "40x30px", photo, "plain.png", photo, "-o", "pages.tif")
        with Image.open(self.path("pages.tif")) as image:
            self.same("pages", image.n_frames, 3)
            for page in range(3):
                image.seek(page)
                self.same(f"table of page {page}", image.getpalette()[:21], [v for color in EINK for v in color])
        listed = json.loads(subprocess.run([self.program, "--list", "--json"], capture_output=True, text=True).stdout)
        self.same("--list", {p["name"]: p["colors"] for p in listed["palettes"]}, {n: len(c) for n, c in NAMED.items()})

    def manifests(self):
        """A manifest's line is of the palette's colours, and not of its file's name."""
        self.write("two.gpl", "GIMP Palette\n0 0 0\n255 255 255\n")
        job = ("--palette", "two.gpl", "--manifest", "all.jsonl", "--resume", "plain.png", "-o", "plain.tif")
        self.export(*job)
        before = os.stat(self.path("plain.tif")).st_ino
        self.export(*job)
        self.same("it is done", os.stat(self.path("plain.tif")).st_ino, before)
        self.write("two.gpl", "GIMP Palette\n0 0 0\n255 0 0\n")
        self.export(*job)
        self.same("other colours", self.table("plain.tif")[1], (255, 0, 0))

    def all(self):
        self.named_tables_are_exact()
        self.nearest_and_dithered()
        self.files_of_colors()
        self.refusals()
        self.pages_and_lists()
        self.manifests()


def main():
    _, source, program = shared.places()
    with tempfile.TemporaryDirectory() as folder:
        palettes = Palettes(program, os.path.join(source, "samples"), os.path.realpath(folder))
        palettes.all()
        return palettes.told()


if __name__ == "__main__":
    sys.exit(main())
