#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Decodes what the command writes with every reader there is, and compares it with the picture that went in.

    matrix.py --build FOLDER --source FOLDER

Pictures that a mode keeps must come back exactly, at every width from 1 to 70, in every compression,
layout and at resolutions from 20 to 1200. Reduced pictures must stay near, and must not have moved.
"""

import math
import os
import random
import subprocess
import sys
import tempfile

from PIL import Image, ImageChops, ImageFilter, ImageStat

import readers
import shared

FAX = ("huffman", "t4", "t6")
MODES = ("bilevel", "grey16", "grey256", "color8", "color16", "color256", "rgb")
# Where rows end on a byte or just beside it: these are shown to programs too, which are slow to start.
TRIED_WIDTHS = (1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65)
RESOLUTIONS = ("32", "72", "96", "100", "150", "200x100", "300", "400", "600", "1200x20")


def compressions(mode):
    return ("none", "packbits", "lzw") + (FAX if mode == "bilevel" else ())


# --- pictures that a mode keeps ------------------------------------------------------------------


def palette(mode, rng):
    """The colours that a picture for this mode may have."""
    if mode == "bilevel":
        return [(0, 0, 0), (255, 255, 255)]
    if mode == "grey16":
        return [(17 * i,) * 3 for i in range(16)]
    if mode == "grey256":
        return [(i,) * 3 for i in range(256)]
    if mode == "color8":
        return [(r, g, b) for r in (0, 255) for g in (0, 255) for b in (0, 255)]
    count = {"color16": 16, "color256": 256, "rgb": 4000}[mode]
    return [tuple(rng.randrange(256) for _ in range(3)) for _ in range(count)]


def picture(width, height, colors, rng):
    """Noise, stripes, blocks or a single colour, by turns."""
    kind = rng.randrange(5)
    period = rng.randrange(1, 12)
    flat = rng.choice(colors)
    pair = rng.choice(colors), rng.choice(colors)
    out = []
    for y in range(height):
        for x in range(width):
            if kind == 0:
                out.append(rng.choice(colors))
            elif kind == 1:
                out.append(pair[x // period % 2])
            elif kind == 2:
                out.append(pair[(x // period + y // period) % 2])
            elif kind == 3:
                out.append(flat)
            else:
                out.append(rng.choice(colors) if rng.randrange(9) == 0 else flat)
    return b"".join(map(bytes, out))


def write_netpbm(path, width, height, rgb, mode):
    if mode == "bilevel":
        bits = [rgb[i] == 0 for i in range(0, len(rgb), 3)]
        body = bytearray()
        for y in range(height):
            text = "".join("1" if b else "0" for b in bits[y * width:(y + 1) * width])
            text += "0" * (-width % 8)
            body += int(text, 2).to_bytes(len(text) // 8, "big")
        header = f"P4\n{width} {height}\n"
    elif mode.startswith("grey"):
        body, header = rgb[::3], f"P5\n{width} {height}\n255\n"
    else:
        body, header = rgb, f"P6\n{width} {height}\n255\n"
    with open(path, "wb") as out:
        out.write(header.encode() + bytes(body))


def even(width, height, rgb):
    """An odd picture has its last row twice."""
    return (height, rgb) if height % 2 == 0 else (height + 1, rgb + rgb[-3 * width:])


class Matrix:
    def __init__(self, build, source, folder):
        self.program = os.path.join(os.path.realpath(build), "raxel-export")
        self.source = os.path.realpath(source)
        self.folder = folder
        self.libtiff = readers.LibTiff()
        self.others = readers.independent() | readers.resting()
        self.programs = readers.Programs()
        # With the sanitizers the same bytes come: there what counts is that they come quietly.
        self.sanitized = shared.sanitized(self.program)
        self.files = self.failed = 0

    def export(self, options, inputs):
        done = subprocess.run([self.program, "-q", *options, "-d", self.folder, *inputs], capture_output=True, text=True)
        if done.returncode:
            self.fail(" ".join(options), done.stderr)

    def fail(self, what, why):
        self.failed += 1
        if self.failed <= int(os.environ.get("RAXEL_FAULTS", "20")):
            print(f"FAILED {what}: {why}")

    def compare(self, what, seen, expected, dpi):
        width, height, rgb, resolution = seen
        if (width, height) != expected[:2]:
            self.fail(what, f"is {width} by {height} instead of {expected[0]} by {expected[1]}")
        elif rgb != expected[2]:
            at = next(i for i in range(len(rgb)) if rgb[i] != expected[2][i]) // 3
            self.fail(what, f"differs at column {at % width}, row {at // width}")
        elif resolution and tuple(map(round, resolution)) != dpi:
            self.fail(what, f"has a resolution of {resolution}")

    def check(self, what, path, expected, dpi, slow, tiles=False):
        """Every reader must see the expected picture; tiff.py only when `slow` things are wanted."""
        self.files += 1
        for name, reader in {"libtiff": self.libtiff, **({} if self.sanitized else self.others)}.items():
            if (name == "tiff.py" and not slow) or (name == "Leptonica" and tiles):  # Leptonica reads no tiles at all
                continue
            try:
                seen = reader(path)
            except Exception as error:  # a reader's trouble is the file's fault
                self.fail(f"{what} in {name}", error)
                continue
            self.compare(f"{what} in {name}", seen, expected, dpi)

    def check_programs(self, what, expected):
        """The same with programs; `expected` is a path to a picture."""
        if self.sanitized:
            return
        for name, path, seen in self.programs(list(expected)):
            title = f"{os.path.basename(path)}, {what} in {name}"
            if isinstance(seen, str):
                self.fail(title, seen)
            else:
                self.compare(title, seen, expected[path], None)

    def exact(self):
        for number, mode in enumerate(MODES):
            rng = random.Random(mode)
            inputs, expected = [], {}
            for width in range(1, 71, 3 if self.sanitized else 1):
                height = rng.choice((1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 13, 16, 27, 31, 40, 55, 63, 64, 65, 70))
                rgb = picture(width, height, palette(mode, rng), rng)
                path = os.path.join(self.folder, f"{mode}-{width}.pnm")
                write_netpbm(path, width, height, rgb, mode)
                inputs.append(path)
                expected[path] = (width, *even(width, height, rgb))
            for turn, compression in enumerate(compressions(mode)):
                for layout in ("strips", "tiles") if compression == "t6" else ("strips",):
                    dpi = RESOLUTIONS[(2 * number + turn) % len(RESOLUTIONS)]
                    self.export(["-m", mode, "-c", compression, "--layout", layout, "--dpi", dpi], inputs)
                    both = tuple(map(int, (dpi.split("x") * 2)[:2]))
                    outs = {path[:-4] + ".tif": expected[path] for path in inputs}
                    for out, meant in outs.items():
                        what = f"{os.path.basename(out)[:-4]} by {meant[1]}, {compression}, {layout}, {dpi} dpi"
                        # Tiles hold 65536 pixels each, which take Python its time.
                        slow = layout == "strips" or meant[0] % 23 == 0
                        self.check(what, out, meant, both, slow, layout == "tiles")
                    self.check_programs(compression, {out: p for out, p in outs.items() if p[0] in TRIED_WIDTHS})
                    for out in outs:
                        os.unlink(out)

    def alternating(self):
        """Rows with as many runs as pixels, for which libtiff has no room when they begin with coded black."""
        inputs, expected = [], {}
        colors = b"\xff\xff\xff", b"\0\0\0"
        for width in (31, 32, 33, 64, 96, 127, 128, 640):
            for first in (0, 1):
                rows = [b"".join(colors[(first + x) % 2] for x in range(width)) for y in range(8)]
                path = os.path.join(self.folder, f"dots-{width}-{first}.pnm")
                write_netpbm(path, width, 8, b"".join(rows), "bilevel")
                inputs.append(path)
                expected[path[:-4] + ".tif"] = (width, 8, b"".join(rows))
        for compression in FAX:
            self.export(["-m", "bilevel", "-c", compression], inputs)
            for out, meant in expected.items():
                self.check(f"{os.path.basename(out)} {compression}", out, meant, (96, 96), True)
                # Black is coded as black: only rows that begin with it need another code.
                crowded = compression != "t6" and meant[0] % 64 == 0
                with Image.open(out) as image:
                    became_t6 = image.tag_v2[259] == 4
                if crowded and became_t6 != out.endswith("-1.tif"):
                    self.failed += 1
                    print(f"{os.path.basename(out)} {compression}: T.6 {became_t6}")
            self.check_programs(compression, expected)

    # --- real pictures ---------------------------------------------------------------------------

    def sample(self, name):
        image = Image.open(os.path.join(self.source, "samples", name + ".png"))
        return image.convert("RGB")

    def real_exact(self):
        # The page makes 26 MB of colours in each reader: three modes of it are enough.
        kept = {"photo": ("rgb",), "page": ("bilevel", "grey16", "color256"), "chart4": ("color16", "color256", "rgb"),
                "chart8": ("color256", "rgb"), "ramp": ("grey256", "color256", "rgb")}
        for name, modes in kept.items():
            image = self.sample(name)
            expected = (image.width, *even(image.width, image.height, image.tobytes()))
            path = os.path.join(self.source, "samples", name + ".png")
            for mode in modes:
                for compression in compressions(mode):
                    if name == "page" and compression not in FAX + ("lzw",):
                        continue
                    self.export(["-m", mode, "-c", compression, "--dpi", "300"], [path])
                    out = os.path.join(self.folder, name + ".tif")
                    self.check(f"{name} {mode} {compression}", out, expected, (300, 300), False)

    def real_programs(self):
        """A reduced photo in every mode: all readers must see what libtiff sees."""
        out = os.path.join(self.folder, "photo.tif")
        jobs = [(mode, "lzw", ()) for mode in MODES] + [("bilevel", code, ()) for code in FAX]
        for mode, compression, more in [*jobs, ("bilevel", "t6", ("--layout", "tiles"))]:
            self.export(["-m", mode, "-c", compression, *more], [os.path.join(self.source, "samples/photo.png")])
            expected = self.libtiff(out)
            title = " ".join(("photo", mode, compression, *more))
            self.check(title, out, expected, (96, 96), bool(more), bool(more))
            self.check_programs(title, {out: expected})

    def near(self, what, mode, seen, meant, least):
        """Blurred, both must be alike; and nowhere more so than at their own places."""
        blur = ImageFilter.BoxBlur(4 if mode in ("bilevel", "color8") else 0)
        a, b = seen.filter(blur), meant.filter(blur)
        inner = (8, 8, a.width - 8, a.height - 8)

        def error(dx, dy):
            moved = ImageChops.offset(a, dx, dy).crop(inner)
            squares = ImageStat.Stat(ImageChops.difference(moved, b.crop(inner))).sum2
            return sum(squares) / (3 * moved.width * moved.height)

        psnr = 10 * math.log10(255 ** 2 / max(error(0, 0), 1e-9))
        if psnr < least:
            self.fail(what, f"is only {psnr:.1f} dB from the picture, and {least} are wanted")
        shifts = [(x, y) for x in (-1, 0, 1) for y in (-1, 0, 1)]
        best = min(shifts, key=lambda shift: error(*shift))
        if best != (0, 0):
            self.fail(what, f"has moved by {best}")
        return psnr

    def reduced(self):
        photo = self.sample("photo")
        brightness = Image.merge("RGB", [photo.convert("L")] * 3)
        bounds = {("bilevel", ()): 30, ("grey16", ()): 30, ("grey16", ("--no-dither",)): 32, ("grey256", ()): 50,
                  ("color8", ()): 29, ("color16", ()): 25, ("color16", ("--no-dither",)): 27, ("color256", ()): 40,
                  ("color256", ("--dither",)): 36, ("color256", ("--quantizer", "fast")): 34,
                  ("color16", ("--quantizer", "fast")): 20, ("color256", ("--quantizer", "filter")): 24}
        path = os.path.join(self.source, "samples/photo.png")
        for (mode, more), least in bounds.items():
            self.export(["-m", mode, "-c", "lzw", *more], [path])
            width, height, rgb, _ = self.libtiff(os.path.join(self.folder, "photo.tif"))
            seen = Image.frombytes("RGB", (width, height), rgb).crop((0, 0, *photo.size))
            meant = brightness if mode in ("bilevel", "grey16", "grey256") else photo
            psnr = self.near(f"photo {mode} {' '.join(more)}", mode, seen, meant, least)
            self.files += 1
            if os.environ.get("RAXEL_SHOW"):
                print(f"{mode:9} {' '.join(more):22} {psnr:.1f} dB")


def main():
    build, source, _ = shared.places()
    # In memory where there is such a place: every file is synced.
    place = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="raxel-matrix-", dir=place) as folder:
        matrix = Matrix(build, source, folder)
        matrix.exact()
        matrix.alternating()
        matrix.real_exact()
        matrix.reduced()
        matrix.real_programs()
    names = ", ".join(["libtiff", *matrix.others, *matrix.programs.names()])
    print(f"matrix: {matrix.files} files read by {names}; {matrix.failed} failed")
    return 1 if matrix.failed else 0


if __name__ == "__main__":
    sys.exit(main())
