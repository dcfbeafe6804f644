#!/usr/bin/python3
"""Decodes what the command writes with three readers, and compares it with the picture that went in.

    matrix.py --build FOLDER --source FOLDER

Pictures that a mode keeps must come back exactly, at every width from 1 to 70, in every compression,
layout and at resolutions from 32 to 400. Reduced pictures must stay near, and must not have moved.
"""

import argparse
import io
import math
import os
import random
import shutil
import subprocess
import sys
import tempfile

from PIL import Image, ImageChops, ImageFilter, ImageStat

import readers

FAX = ("huffman", "t4", "t6")
MODES = ("bilevel", "grey16", "grey256", "color8", "color16", "color256", "rgb")
RESOLUTIONS = ("32", "72", "96", "100", "150", "200x100", "300", "400")


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


def beyond_mupdf(what, width, tiles):
    """MuPDF reads a tile of fax codes as if it were as wide as the picture, and refuses pictures with a
    colour map whose rows take less than 8 bytes."""
    small = {"color8": 15, "color16": 15, "color256": 8}
    return tiles or width < small.get(what.split("-")[0], 0)


class Matrix:
    def __init__(self, build, source, folder):
        self.program = os.path.join(os.path.realpath(build), "raxel-export")
        self.source = os.path.realpath(source)
        self.folder = folder
        self.libtiff = readers.LibTiff()
        self.others = readers.independent()
        self.files = self.failed = 0

    def export(self, options, inputs):
        done = subprocess.run([self.program, "-q", *options, "-d", self.folder, *inputs], capture_output=True, text=True)
        if done.returncode:
            self.fail(" ".join(options), done.stderr)

    def fail(self, what, why):
        self.failed += 1
        if self.failed <= int(os.environ.get("RAXEL_FAULTS", "20")):
            print(f"FAILED {what}: {why}")

    def check(self, what, path, expected, dpi, slow, tiles=False):
        """Every reader must see the expected picture; tiff.py only when `slow` things are wanted."""
        self.files += 1
        for name, reader in {"libtiff": self.libtiff, **self.others}.items():
            if name == "tiff.py" and not slow:
                continue
            if name == "mupdf" and beyond_mupdf(what, expected[0], tiles):
                continue
            try:
                width, height, rgb, seen = reader(path)
            except Exception as error:  # a reader's trouble is the file's fault
                self.fail(f"{what} in {name}", error)
                continue
            if (width, height) != expected[:2]:
                self.fail(f"{what} in {name}", f"is {width} by {height} instead of {expected[0]} by {expected[1]}")
            elif rgb != expected[2]:
                at = next(i for i in range(len(rgb)) if rgb[i] != expected[2][i]) // 3
                self.fail(f"{what} in {name}", f"differs at column {at % width}, row {at // width}")
            elif seen and tuple(map(round, seen)) != dpi:
                self.fail(f"{what} in {name}", f"has a resolution of {seen}")

    def exact(self):
        for number, mode in enumerate(MODES):
            rng = random.Random(mode)
            inputs, expected = [], {}
            for width in range(1, 71):
                height = rng.choice((1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 13, 16, 27, 31, 40, 55, 70))
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
                    for path in inputs:
                        out = path[:-4] + ".tif"
                        what = f"{os.path.basename(path)[:-4]} by {expected[path][1]}, {compression}, {layout}, {dpi} dpi"
                        # Tiles hold 65536 pixels each, which take Python its time.
                        slow = layout == "strips" or expected[path][0] % 23 == 0
                        self.check(what, out, expected[path], both, slow, layout == "tiles")
                        os.unlink(out)

    # --- real pictures ---------------------------------------------------------------------------

    def sample(self, name):
        image = Image.open(os.path.join(self.source, "samples", name + ".png"))
        return image.convert("RGB")

    def real_exact(self):
        kept = {"photo": ("rgb",), "page": MODES, "chart4": ("color16", "color256", "rgb"),
                "chart8": ("color256", "rgb"), "ramp": ("grey256", "color256", "rgb")}
        for name, modes in kept.items():
            image = self.sample(name)
            expected = (image.width, *even(image.width, image.height, image.tobytes()))
            path = os.path.join(self.source, "samples", name + ".png")
            for mode in modes:
                for compression in compressions(mode):
                    if name == "page" and compression == "none":
                        continue  # 26 MB that other pictures try as well
                    self.export(["-m", mode, "-c", compression, "--dpi", "300"], [path])
                    out = os.path.join(self.folder, name + ".tif")
                    self.check(f"{name} {mode} {compression}", out, expected, (300, 300), False)

    def programs(self):
        """Other programs that people open files with: they rest on libtiff, but colours and which way is up are
        their own work."""
        tools = {
            "tifftopnm": ["tifftopnm", "IN"],
            "ImageMagick": ["convert", "IN", "-depth", "8", "ppm:-"],
            "GraphicsMagick": ["gm", "convert", "IN", "-depth", "8", "ppm:-"],
        }
        tools = {name: command for name, command in tools.items() if shutil.which(command[0])}
        path = os.path.join(self.source, "samples/photo.png")
        out = os.path.join(self.folder, "photo.tif")
        jobs = [(mode, "lzw", ()) for mode in MODES] + [("bilevel", code, ()) for code in FAX]
        for mode, compression, more in [*jobs, ("bilevel", "t6", ("--layout", "tiles"))]:
            self.export(["-m", mode, "-c", compression, *more], [path])
            width, height, rgb, _ = self.libtiff(out)
            for name, command in tools.items():
                done = subprocess.run([out if word == "IN" else word for word in command], capture_output=True)
                try:
                    seen = Image.open(io.BytesIO(done.stdout)).convert("RGB")
                except OSError:
                    self.fail(f"photo {mode} {compression} in {name}", done.stderr[-200:])
                    continue
                if seen.size != (width, height) or seen.tobytes() != rgb:
                    self.fail(f"photo {mode} {compression} in {name}", "is another picture")
        self.tools = list(tools)

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
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--source", required=True)
    wanted = arguments.parse_args()
    # In memory where there is such a place: every file is synced.
    place = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="raxel-matrix-", dir=place) as folder:
        matrix = Matrix(wanted.build, wanted.source, folder)
        matrix.exact()
        matrix.real_exact()
        matrix.reduced()
        matrix.programs()
    names = ", ".join(["libtiff", *matrix.others, *matrix.tools])
    print(f"matrix: {matrix.files} files read by {names}; {matrix.failed} failed")
    return 1 if matrix.failed else 0


if __name__ == "__main__":
    sys.exit(main())
