#!/usr/bin/python3
"""Pages, labels and panels: what the command makes of them is handed to the programs that they are for.

    paper.py --build FOLDER --source FOLDER

zint and zbarimg (zbar-tools) for barcodes. Where one is missing, its checks are counted as skipped.
"""

import json
import os
import random
import shutil
import subprocess
import sys
import tempfile

import shared

try:
    from PIL import Image, ImageChops, ImageDraw, ImageFilter, ImageFont
except ImportError:
    print("SKIPPED: python3-pil is not installed")
    sys.exit(77)

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


class Paper:
    def __init__(self, program, samples, folder):
        self.program, self.samples, self.folder = program, samples, folder
        self.faults, self.checks, self.skipped = [], 0, []

    # --- what the tests are made of

    def path(self, name):
        return os.path.join(self.folder, name)

    def sample(self, name):
        return os.path.join(self.samples, name)

    def same(self, what, seen, wanted):
        self.checks += 1
        if seen != wanted:
            self.faults.append(f"{what}: {str(seen)[:400]} instead of {str(wanted)[:400]}")

    def true(self, what, holds):
        self.checks += 1
        if not holds:
            self.faults.append(what)

    def has(self, program):
        if shutil.which(program):
            return True
        if program not in self.skipped:
            self.skipped.append(program)
        return False

    def export(self, *arguments, code=0):
        """Runs the command; returns what it reports on the first input."""
        done = subprocess.run([self.program, "--json", *arguments], capture_output=True, text=True)
        said = json.loads(done.stdout)
        self.same(" ".join(arguments), (done.returncode, said.get("error", "") if code == 0 else ""), (code, ""))
        return said["results"][0] if "results" in said else said

    def run(self, *arguments):
        done = subprocess.run(arguments, capture_output=True, text=True, errors="replace", cwd=self.folder)
        return done.returncode, done.stdout, done.stderr

    def scanned_page(self, name):
        """A page of text as a scanner gives it: grey, a little blurred, with noise, ink and paper not at the ends."""
        rng = random.Random(11)
        page = Image.new("L", (1240, 1754), 255)
        pen, font = ImageDraw.Draw(page), ImageFont.truetype(FONT, 22)
        for y in range(120, 1640, 31):
            words = " ".join("".join(rng.choice("etaoinshrdlucm") for _ in range(rng.randrange(1, 10))) for _ in range(12))
            pen.text((110, y), words, fill=0, font=font)
        page = page.filter(ImageFilter.GaussianBlur(0.7)).point([40 + v * 200 // 255 for v in range(256)])
        noise = Image.frombytes("L", page.size, random.Random(5).randbytes(page.width * page.height))
        page = ImageChops.add(page, noise.point([v // 26 for v in range(256)]), offset=-5)
        page.save(self.path(name), dpi=(150, 150))

    # --- grey becomes black and white

    def pages_are_cut_and_photos_are_dots(self):
        page, out = self.path("scan.png"), self.path("scan.tif")
        self.scanned_page("scan.png")
        size = {}
        for how in ((), ("--no-dither",), ("--dither",), ("--threshold", "auto"), ("--threshold", "adaptive")):
            told = self.export("--verify", "-m", "bilevel", "-c", "t6", *how, page, out)
            size[how] = told["file"]["bytes"]
            self.same(f"{how}: a note", ["taken for a document" in " ".join(told["notes"])], [how == ()])
        for how in ((), ("--threshold", "auto"), ("--threshold", "adaptive")):
            self.true(f"a page {how}: {size}", abs(size[how] - size["--no-dither",]) <= 0.05 * size["--no-dither",])
        self.true(f"dots cost more: {size}", size["--dither",] > 3 * size[()])
        told = self.export("-m", "bilevel", "-c", "t6", self.sample("photo.png"), out)
        dots = Image.open(out).tobytes()
        self.true("a photo's note", any("--threshold auto" in note for note in told["notes"]))
        self.export("-m", "bilevel", "-c", "t6", "--dither", self.sample("photo.png"), out)
        self.same("a photo is dithered", Image.open(out).tobytes(), dots)

    def levels_are_taken(self):
        ramp = self.path("ramp.pgm")
        with open(ramp, "wb") as file:
            file.write(b"P5\n256 2\n255\n" + bytes(range(256)) * 2)
        out = self.path("level.tif")
        for level in (0, 1, 77, 255):
            told = self.export("--verify", "-m", "bilevel", "--threshold", str(level), ramp, out)
            seen = Image.open(out).convert("L").tobytes()
            self.same(f"below {level}", seen, (bytes(level) + b"\xff" * (256 - level)) * 2)
            self.same("which is told", told["file"]["threshold"], level)
        for wrong in ("256", "-1", "half", "1.5", ""):
            self.export("-m", "bilevel", f"--threshold={wrong}", ramp, out, code=64)
        self.export("-m", "bilevel", "--threshold", "9", "--dither", ramp, out, code=64)
        self.export("--as-is", "-m", "bilevel", "--threshold", "9", ramp, out, code=64)
        told = self.export("-m", "grey256", "--threshold", "9", ramp, out)
        self.true("another mode's note", any("--mode bilevel" in note for note in told["notes"]))

    def barcodes_keep_their_bars(self):
        if not self.has("zint") or not self.has("zbarimg"):
            return
        words = "RAXEL-0123456789"
        self.run("zint", "-b", "20", "-d", words, "--scale=3", "-o", "bars.png")
        bars = Image.open(self.path("bars.png"))
        bars.convert("L").save(self.path("bars.jpg"), quality=75)
        bars.convert("L").resize((790, 275), Image.LANCZOS).save(self.path("soft.png"))
        for name in ("bars.png", "bars.jpg", "soft.png"):
            for inches in ("1.8", "2", "2.5"):
                label = self.path("label.tif")
                self.export("--verify", "-m", "bilevel", "-c", "t6", "--dpi", "203", "--size", inches + "x", self.path(name), label)
                seen = Image.open(label).convert("L")
                rows = {seen.crop((0, y, seen.width, y + 1)).tobytes() for y in range(8, seen.height * 7 // 10)}
                self.same(f"{name} at {inches} inches: rows", len(rows), 1)
                seen.save(self.path("label.png"))
                self.same(f"{name} at {inches} inches", self.run("zbarimg", "-q", "label.png")[1], f"CODE-128:{words}\n")

    def all(self):
        self.pages_are_cut_and_photos_are_dots()
        self.levels_are_taken()
        self.barcodes_keep_their_bars()
        for program in self.skipped:
            print(f"skipped: {program} is not installed")
        return shared.tell(self.faults, f"{self.checks} checks, {len(self.faults)} failed, "
                                        f"{len(self.skipped)} programs skipped")


if __name__ == "__main__":
    _, source, program = shared.places()
    with tempfile.TemporaryDirectory() as folder:
        sys.exit(Paper(program, os.path.join(source, "samples"), folder).all())
