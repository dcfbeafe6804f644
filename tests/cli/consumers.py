#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Hands files of every finished kind to the readers that people have, and compares every pixel.

    consumers.py --build FOLDER --source FOLDER

LZW of differences, ICC profiles, greys of 4 bits, palettes, fax codes whose white is 0, tiles, true resolutions and pages; libtiff, Pillow, Leptonica,
MuPDF, ImageMagick, GraphicsMagick, netpbm, ffmpeg and Java's ImageIO. What is not installed is counted as skipped, and
so is what a reader is known not to read at all.
"""

import os
import shutil
import subprocess
import sys
import tempfile

import shared

try:
    from PIL import Image, ImageCms
except ImportError:
    print("SKIPPED: python3-pil is not installed")
    sys.exit(77)

import readers
import tiff

HERE = os.path.dirname(os.path.abspath(__file__))

# The colours of --palette eink7.
EINK7 = ((0, 0, 0), (255, 255, 255), (0, 255, 0), (0, 0, 255), (255, 0, 0), (255, 255, 0), (255, 128, 0))

# There is no way to name another one.
FIRST_PAGE_ONLY = ("netpbm", "MuPDF")

# Readers that people have, and that no package brings here.
NOT_IN_DEBIAN = ("UTIF.js (not in Debian)",)

# What a reader does not read, or shows otherwise on purpose.
KNOWN = {
    ("ImageIO", "profile"): "it converts the colours by the profile",
    ("Leptonica", "tiles"): "it reads no tiles",
    ("ffmpeg", "tiles"): "it takes tiles for strips",
}


def even(image):
    """With the last row once more where the height is odd."""
    if image.height % 2 == 0:
        return image
    out = Image.new(image.mode, (image.width, image.height + 1))
    out.paste(image.crop((0, image.height - 1, image.width, image.height)), (0, image.height))
    out.paste(image, (0, 0))
    return out


def pillow(path, page):
    with Image.open(path) as image:
        image.seek(page)
        return image.width, image.height, image.convert("RGB").tobytes()


def mupdf(path):
    if path.endswith("tiles.tif"):
        return readers.mupdf(path)
    pixels = readers.fitz.Pixmap(path)
    return pixels.width, pixels.height, readers.grey_rgb(pixels.samples) if pixels.n == 1 else pixels.samples


def run(*command):
    done = subprocess.run(command, capture_output=True)
    if done.returncode != 0 or not done.stdout:
        raise tiff.Bad(done.stderr[-200:].decode(errors="replace"))
    return readers.portable(done.stdout)[:3]


class Consumers:
    def __init__(self, program, source, folder):
        self.program, self.folder = program, folder
        self.photo = even(Image.open(os.path.join(source, "samples", "photo.png")).convert("RGB"))
        self.kinds = {}  # name to path, and the pictures of its pages
        self.checks = self.failed = 0
        self.missing, self.unread = list(NOT_IN_DEBIAN), []
        self.readers = self.installed()

    def installed(self):
        """Name to function of path and page; for the first page alone where there is no way to name one."""
        found = {"libtiff": readers.LibTiff(), "Pillow": pillow}
        for name, reader in readers.resting().items():
            if name != "Pillow":
                found[name] = reader
        if readers.fitz:
            found["MuPDF"] = mupdf
        commands = {
            "ImageMagick": lambda path, page: run("convert", f"{path}[{page}]", "-depth", "8", "ppm:-"),
            "GraphicsMagick": lambda path, page: run("gm", "convert", f"{path}[{page}]", "-depth", "8", "ppm:-"),
            "netpbm": lambda path: run("tifftopnm", "-quiet", path),
            "ffmpeg": lambda path, page: run("ffmpeg", "-v", "error", "-page", str(page + 1), "-i", path, "-f", "image2pipe",
                                             "-vcodec", "ppm", "-pix_fmt", "rgb24", "-"),
        }
        for (name, command), program in zip(commands.items(), ("convert", "gm", "tifftopnm", "ffmpeg")):
            if shutil.which(program):
                found[name] = command
        for name in ("Leptonica", "MuPDF", *commands):
            if name not in found:
                self.missing.append(name)
        return found

    def make(self, kind, pictures, *options):
        """A file of this kind."""
        inputs = []
        for number, picture in enumerate(pictures):
            inputs.append(os.path.join(self.folder, f"{kind}-{number}.png"))
            picture.save(inputs[-1], icc_profile=picture.info.get("icc_profile"))
        out = os.path.join(self.folder, kind + ".tif")
        subprocess.run([self.program, "-q", "--verify", *options, *inputs, "-o", out], check=True)
        self.kinds[kind] = out, [(p.width, p.height, p.convert("RGB").tobytes()) for p in pictures]

    def make_all(self):
        grey = self.photo.convert("L")
        # As wide as tiles may be, and with more than one of them each way.
        dots = self.photo.convert("1").resize((1200, 400))
        described = self.photo.copy()
        described.info["icc_profile"] = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
        differences = ("-c", "lzw", "--predictor", "horizontal")
        self.make("rgb", [self.photo], *differences)
        self.make("grey", [grey], *differences)
        self.make("profile", [described], *differences, "--description", "A lake", "--copyright", "none")
        self.make("grey16", [grey.point([v // 16 * 17 for v in range(256)])], "-m", "grey16", "-c", "packbits")
        self.make("color256", [self.photo.quantize(256)], "-m", "color256", "-c", "lzw")
        panel = Image.new("P", (1, 1))
        panel.putpalette([v for color in EINK7 for v in color] + 3 * 249 * [0])
        self.make("palette", [self.photo.quantize(palette=panel).convert("RGB")], "--palette", "eink7", "-c", "lzw")
        self.make("t4", [dots], "-c", "t4", "--strips", "one")
        self.make("huffman", [dots], "-c", "huffman", "--strips", "one")
        self.make("t6", [dots], "-c", "t6")
        self.make("tiles", [dots], "-c", "t6", "--layout", "tiles")
        self.make("resolution", [grey], "-c", "packbits", "--dpi", "600x1200")
        self.make("pages", [self.photo, grey, dots], "-c", "lzw", "--pages")
        self.make("fax-pages", [dots, dots.rotate(180)], "-c", "t6", "--strips", "one", "--pages")

    def same(self, what, seen, wanted):
        self.checks += 1
        if seen == wanted:
            return
        self.failed += 1
        print(f"FAILED {what}: " + (seen if isinstance(seen, str) else f"{seen[:2]} instead of {wanted[:2]}, or other pixels"))

    def knows(self, reader, kind):
        if (reader, kind) not in KNOWN:
            return True
        self.unread.append(f"{reader} of {kind}: {KNOWN[reader, kind]}")
        return False

    def read_all(self):
        for name, reader in self.readers.items():
            for kind, (path, pages) in self.kinds.items():
                if not self.knows(name, kind):
                    continue
                for page, wanted in enumerate(pages[:1] if name in FIRST_PAGE_ONLY else pages):
                    try:
                        seen = reader(path)[:3] if name in FIRST_PAGE_ONLY else reader(path, page)[:3]
                    except (tiff.Bad, OSError, RuntimeError) as why:
                        seen = str(why)
                    self.same(f"{name} of {kind}, page {page + 1}", seen, wanted)
        if readers.fitz:
            for kind, (path, pages) in self.kinds.items():
                self.same(f"MuPDF's pages of {kind}", str(readers.fitz.open(path).page_count), str(len(pages)))

    def read_with_java(self):
        done = subprocess.run(["java", os.path.join(HERE, "ReadImages.java"), *(path for path, _ in self.kinds.values())],
                              capture_output=True, text=True) if shutil.which("java") else None
        if not done or done.returncode != 0:  # a runtime alone does not compile it
            self.missing.append("ImageIO")
            return
        lines = dict(line.split(" ", 1) for line in done.stdout.splitlines())
        for kind, (path, pages) in self.kinds.items():
            width, height, _ = pages[-1]
            self.same(f"ImageIO of {kind}", lines[path], f"{len(pages)} {width} {height}")
            if not self.knows("ImageIO", kind):
                continue
            for page, wanted in enumerate(pages):
                try:
                    with open(f"{path}.{page}.rgb", "rb") as file:
                        self.same(f"ImageIO of {kind}, page {page + 1}", (*wanted[:2], file.read()), wanted)
                except OSError as why:
                    self.same(f"ImageIO of {kind}, page {page + 1}", str(why), wanted)


def main():
    _, source, program = shared.places()
    with tempfile.TemporaryDirectory(prefix="raxel-consumers-") as folder:
        consumers = Consumers(program, source, folder)
        consumers.make_all()
        consumers.read_all()
        consumers.read_with_java()
    for name in consumers.missing:
        print(f"skipped: {name} is not installed")
    for what in consumers.unread:
        print(f"skipped: {what}")
    print(f"consumers: {consumers.checks} checks of {len(consumers.kinds)} kinds, {consumers.failed} failed, "
          f"{len(consumers.missing)} readers missing, {len(consumers.unread)} kinds left out")
    return 1 if consumers.failed else 0


if __name__ == "__main__":
    sys.exit(main())
