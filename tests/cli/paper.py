#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Pages, labels and panels: what the command makes of them is handed to the programs that they are for.

    paper.py --build FOLDER --source FOLDER

zint and zbarimg (zbar-tools) for barcodes; HylaFAX's tiffcheck (hylafax-server), efix (efax), fax2ps
(libtiff-tools) and spandsp's sender and receiver (fax_loop.c, with libspandsp-dev) for faxes. Where one is missing, its checks are counted as skipped.
"""

import json
import os
import random
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


class Paper(shared.Checks):
    def __init__(self, program, samples, folder):
        self.fax_loop = os.path.join(os.path.dirname(program), "fax_loop")
        super().__init__(folder)
        self.program, self.samples = program, samples

    # --- what the tests are made of

    def sample(self, name):
        return os.path.join(self.samples, name)

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

    def pages(self, path):
        """Size and rows of every page."""
        seen, image = [], Image.open(path)
        for number in range(getattr(image, "n_frames", 1)):
            image.seek(number)
            seen.append((image.size, image.convert("L").tobytes()))
        return seen

    # --- sizes and pages

    def sizes_are_exact(self):
        photo, out = self.sample("photo.png"), self.path("size.tif")
        with Image.open(photo) as picture:
            width, height = picture.size
        boxes = ((("--dpi", "204x98", "--size", "1728x1146px"), (1728, 1146)),
                 (("--dpi", "204x98", "--size", "1728x1146px", "--fit", "contain"), (round(1146 * width / height), 1146)),
                 (("--dpi", "100", "--size", "300x300px"), (300, round(300 * height / width))),
                 (("--dpi", "100", "--size", "300x300px", "--fit", "exact"), (300, 300)),
                 (("--dpi", "100", "--size", "3x4in", "--fit", "exact"), (300, 400)),
                 (("--dpi", "100", "--size", "3x4in", "--fit", "pad"), (300, 400)),
                 (("--dpi", "100x50", "--size", "300x300px", "--fit", "pad"), (300, 300)),
                 (("--dpi", "100", "--paper", "letter"), (850, 1100)),
                 (("--dpi", "100", "--paper", "a4"), (826, 1168)))
        for given, wanted in boxes:
            told = self.export("--verify", *given, photo, out)
            # An odd height has its last row twice.
            self.same(f"{given}", (told["file"]["width"], told["file"]["height"]), (wanted[0], (wanted[1] + 1) & ~1))
        self.export("--fit", "pad", photo, out, code=64)
        for fit in ("exact", "pad"):  # too large by what was asked for, not by the picture
            self.export("--size", "65536x2px", "--fit", fit, photo, out, code=64)
        self.export("--as-is", "--paper", "a4", photo, out, code=64)

    def pages_are_white_around_the_picture(self):
        black = self.path("black.pbm")
        with open(black, "wb") as file:
            file.write(b"P4\n40 20\n" + b"\xff" * 100)
        for mode in ("bilevel", "grey16", "grey256", "color8", "color16", "color256", "rgb"):
            out = self.path("padded.tif")
            self.export("--verify", "-m", mode, "--dpi", "100", "--size", "101x61px", "--fit", "pad", black, out)
            seen = Image.open(out).convert("L")
            # 40 by 20 pixels fit two and a half times; the rows make 50.5, so 51, in the middle of 61.
            box = ImageChops.invert(seen).getbbox()
            if mode not in ("color16", "color256"):  # whose colours are the picture's, which has no white
                self.same(f"{mode}: where the picture lies", (box[1], box[3], box[2] - box[0]), (5, 56, 101))
        with open(black, "wb") as file:
            file.write(b"P4\n64 8\n" + bytes([0x00, 0xff] * 32))
        out = self.path("columns.tif")
        self.export("-m", "bilevel", "--dpi", "100x200", "--size", "96x32px", "--fit", "pad", "--verify", black, out)
        seen = Image.open(out)
        self.same("unequal dots", seen.size, (96, 32))
        rows = [seen.convert("L").crop((0, y, 96, y + 1)).tobytes() for y in range(32)]
        self.same("twelve rows at half the width's dots an inch", sum(0 in row for row in rows), 24)

    def faxes_are_taken(self):
        self.scanned_page("fax.png")
        inputs = [self.path("fax.png"), self.sample("photo.png")]
        for name, rows, dpi in (("standard", 1144, None), ("fine", 2290, "196"), ("superfine", 4570, "391")):
            fax = self.path(f"{name}.tif")
            self.export("--verify", "--preset", f"fax-{name}", *inputs, "-o", fax)
            pages = self.pages(fax)
            self.same(f"{name}: pages", [size for size, _ in pages], [(1728, rows)] * 2)
            if self.has("/usr/lib/hylafax/bin/tiffcheck"):
                # It takes the standard resolution for granted.
                said = self.run("/usr/lib/hylafax/bin/tiffcheck", *(["-r", dpi] if dpi else []), fax)
                self.same(f"tiffcheck of {name}", said[:2], (0, "OK\n"))
            if self.has("efix"):
                code, _, errors = self.run("efix", "-v", "ew", "-o", "pbm", fax)
                self.same(f"efix of {name}", (code, errors), (0, ""))
            if self.has("fax2ps"):
                code, printed, errors = self.run("fax2ps", fax)
                self.same(f"fax2ps of {name}", (code, errors, printed.count("%%Page:")), (0, "", 2))
            if self.has(self.fax_loop):
                received = self.path("received.tif")
                self.same(f"sending {name}", self.run(self.fax_loop, fax, received)[:2], (0, "2\n"))
                self.true(f"{name}: what is received", self.pages(received) == pages)
        self.export("--preset", "fax-fine", "--paper", "letter", inputs[0], "-o", self.path("letter.tif"))
        self.same("a letter", self.pages(self.path("letter.tif"))[0][0], (1728, 2156))

    def presets_are_options(self):
        photo, out = self.sample("photo.png"), self.path("preset.tif")
        told = self.export("--preset", "fax-fine", "-c", "t6", photo, out)
        self.same("what is given goes before", told["pages"][0]["file"]["compression"], "t6")
        told = self.export("-c", "t6", "--preset", "fax-fine", photo, out)
        self.same("in either order", told["pages"][0]["file"]["compression"], "t6")
        told = self.export("--preset", "label", "--dither", photo, out)
        self.true("dots on a label", "threshold" not in told["file"])
        told = self.export("--preset", "label", photo, out)
        self.same("a label", (told["file"]["compression"], told["file"]["dpi"], "threshold" in told["file"]),
                  ("t6", [203, 203], True))
        told = self.export("--preset", "archive", photo, out)
        self.same("an archive's photo", (told["file"]["compression"], told["verified"]), ("lzw", True))
        told = self.export("--preset", "archive", self.sample("page.png"), out)
        self.same("an archive's page", (told["file"]["compression"], told["verified"]), ("t6", True))
        self.export("--preset", "none", photo, out, code=64)
        listed = json.loads(self.run(self.program, "--json", "--list")[1])["presets"]
        self.true("--list has the options", {"name": "label", "about": listed[-1]["about"],
                  "options": "--mode bilevel --compress t6 --strips one --threshold auto --dpi 203"} in listed)
        for preset in listed:
            # A preset is what its options are.
            outs = []
            for given in (["--preset", preset["name"]], preset["options"].split()):
                outs.append(self.path(f"by-{len(outs)}.tif"))
                self.export(*given, self.sample("chart4.png"), "-o", outs[-1])
            with open(outs[0], "rb") as one, open(outs[1], "rb") as other:
                self.true(preset["name"], one.read() == other.read())

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
        self.sizes_are_exact()
        self.pages_are_white_around_the_picture()
        self.faxes_are_taken()
        self.presets_are_options()
        self.pages_are_cut_and_photos_are_dots()
        self.levels_are_taken()
        self.barcodes_keep_their_bars()
        return self.told()


if __name__ == "__main__":
    _, source, program = shared.places()
    with tempfile.TemporaryDirectory() as folder:
        sys.exit(Paper(program, os.path.join(source, "samples"), folder).all())
