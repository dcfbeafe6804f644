#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Reads PNGs of every depth, colour type and size up to 70, and holds them against what Pillow reads.

    pngs.py --build FOLDER --source FOLDER

Interlaced or not, with transparent parts and without, from memory that was used before, under valgrind too. The files are
made here, since Pillow writes none that are interlaced. Of two kinds one has the odd widths and the other the even ones,
unless RAXEL_EVERY_SIZE is set.
"""

import filecmp
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

from PIL import Image

import shared

SIZES = range(1, 71)
# Colour type: its depths, its samples a pixel.
TYPES = {0: ((1, 2, 4, 8, 16), 1), 2: ((8, 16), 3), 3: ((1, 2, 4, 8), 1), 4: ((8, 16), 2), 6: ((8, 16), 4)}
OPAQUE = (0, 2, 3)  # may have a tRNS chunk
PASSES = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2))
BACKGROUND = (0x20, 0x40, 0x60)
DIGITS = b"0123456789abcdef" + bytes(240)  # of samples


def packed(row, depth):
    """Samples of less than a byte, one a byte, as the file has them."""
    if depth >= 8:
        return row
    base, each = 1 << depth, 8 // depth
    row += bytes(-len(row) % each)
    return int(row.translate(DIGITS), base).to_bytes(len(row) // each, "big")


def nearest(a, b, c):
    to_a, to_b, to_c = abs(b - c), abs(a - c), abs(a + b - c - c)
    return a if to_a <= to_b and to_a <= to_c else b if to_b <= to_c else c


def filtered(kind, line, above, step):
    """A row as one of the five filters leaves it."""
    left, corner = bytes(step) + line, bytes(step) + above
    if kind == 0:
        return line
    if kind == 1:
        return bytes((x - a) & 255 for x, a in zip(line, left))
    if kind == 2:
        return bytes((x - b) & 255 for x, b in zip(line, above))
    if kind == 3:
        return bytes((x - (a + b) // 2) & 255 for x, a, b in zip(line, left, above))
    return bytes((x - nearest(a, b, c)) & 255 for x, a, b, c in zip(line, left, above, corner))


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


class Made:
    """A picture of random pixels: as rows of one unit (a sample below 8 bits, else a pixel) and as files."""

    def __init__(self, rng, depth, kind, width, height):
        self.depth, self.kind, self.width, self.height = depth, kind, width, height
        self.unit = max(depth // 8, 1) * TYPES[kind][1]
        noise = rng.randbytes(width * height * self.unit)
        if depth < 8:
            noise = noise.translate(bytes(i & (1 << depth) - 1 for i in range(256)))
        if depth == 16:  # low bytes near the high ones, so that rounding and cutting to 8 bits agree
            high = noise[::2]
            noise = bytes(b for pair in zip(high, high.translate(bytes(i ^ rng.randrange(128) for i in range(256)))) for b in pair)
        stride = width * self.unit
        self.rows = [noise[y * stride:(y + 1) * stride] for y in range(height)]
        self.colors = rng.randbytes(3 << depth) if kind == 3 else b""
        self.opacities = bytes(rng.choice((0, 255)) for _ in range(1 << depth)) if kind == 3 else b""
        self.key = self.rows[0][:self.unit]

    def lines(self, column, row, across, down):
        """Every `across`-th pixel of every `down`-th row, as the file has them; the filter types take turns."""
        out = before = b""
        for y in range(row, self.height, down):
            line = b"".join(self.rows[y][x * self.unit:(x + 1) * self.unit] for x in range(column, self.width, across))
            if not line:
                continue
            line = packed(line, self.depth)
            step = self.unit if self.depth >= 8 else 1
            kind = (y // down + column + self.width) % 5
            out += bytes((kind,)) + filtered(kind, line, before or bytes(len(line)), step)
            before = line
        return out

    def file(self, interlaced, transparent, surplus=b""):
        data = b"".join(self.lines(*each) for each in PASSES) if interlaced else self.lines(0, 0, 1, 1)
        out = b"\x89PNG\r\n\x1a\n"
        out += chunk(b"IHDR", struct.pack(">IIBBBBB", self.width, self.height, self.depth, self.kind, 0, 0, interlaced))
        if self.colors:
            out += chunk(b"PLTE", self.colors)
        if transparent:
            # One sample takes two bytes at any depth.
            key = b"".join(bytes((0, b)) for b in self.key) if self.depth < 16 else self.key
            out += chunk(b"tRNS", self.opacities or key)
        return out + chunk(b"IDAT", zlib.compress(data + surplus, 1)) + chunk(b"IEND", b"")

    def clear(self):
        """The pixels that a tRNS chunk makes transparent, as a mask of them."""
        if self.kind == 3:
            return b"".join(row.translate(bytes(255 - o for o in self.opacities) + bytes(256 - len(self.opacities))) for row in self.rows)
        return b"".join(bytes((255 if row[i:i + self.unit] == self.key else 0,)) for row in self.rows for i in range(0, len(row), self.unit))


def levels(image):
    """What Pillow reads as red, green and blue of 8 bits."""
    if image.mode.startswith("I"):
        return Image.frombytes("L", image.size, b"".join(struct.pack("B", v >> 8) for v in image.getdata())).convert("RGB")
    if image.mode in ("LA", "RGBA"):
        under = Image.new("RGBA", image.size, (*BACKGROUND, 255))
        under.alpha_composite(image.convert("RGBA"))
        return under.convert("RGB")
    return image.convert("RGB")


def write_all(folder, rng, each):
    """Path: the opaque file that Pillow is asked for, and the mask of what is transparent or None."""
    made = {}
    kinds = 0

    def save(picture, interlaced, transparent, surplus=b""):
        name = f"{picture.width}x{picture.height}-{picture.depth}bit-type{picture.kind}{'-interlaced' * interlaced}{'-surplus' * bool(surplus)}{'-trns' * transparent}.png"
        path = os.path.join(folder, name)
        with open(path, "wb") as out:
            out.write(picture.file(interlaced, transparent, surplus))
        made[path] = picture

    for kind, (depths, _) in TYPES.items():
        for depth in depths:
            sizes = {(n, n * 29 % 70 + 1) for n in SIZES}
            if (depth, kind) in ((1, 0), (2, 3), (4, 0), (8, 2)):
                sizes |= {(x, y) for x in range(1, 10) for y in range(1, 10)}
            kinds += 1
            for width, height in sorted(sizes)[kinds % each::each]:
                picture = Made(rng, depth, kind, width, height)
                for interlaced in (0, 1):
                    save(picture, interlaced, False)
                    if kind in OPAQUE:
                        save(picture, interlaced, True)
                if width in (21, 22):  # more data than pixels is no fault, and takes the plain road
                    save(picture, 0, False, bytes(99))
                    if kind in OPAQUE:
                        save(picture, 0, True, bytes(99))
    return made


def meant(path, picture):
    opaque = path.replace("-trns", "")
    with Image.open(opaque) as image:
        seen = levels(image)
    if opaque != path:
        seen.paste(BACKGROUND, (0, 0), Image.frombytes("L", seen.size, picture.clear()))
    return seen


def compare(out, expected, exact):
    with Image.open(out) as image:
        size, seen = image.size, image.convert("RGB").crop((0, 0, *expected.size))
    if size != (expected.width, (expected.height + 1) & ~1):
        return f"is {size}, meant is {expected.size}"
    seen, wanted = seen.tobytes(), expected.tobytes()
    if seen == wanted:
        return ""
    off = [abs(a - b) for a, b in zip(seen, wanted)]
    # Rounding may go either way where transparent parts are laid over.
    return "" if not exact and max(off) <= 1 else f"{sum(o > 0 for o in off)} of {len(off)} channels differ, by {max(off)} at most"


# Memory that the pictures before have used, and for some of them blocks that malloc has filled: 17 MB each time.
MEMORIES = {"used": (1, ""), "filled": (25, "glibc.malloc.perturb=90")}


def main():
    _, source, program = shared.places()
    rng = random.Random(11)
    faults, tried = [], 0
    place = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="raxel-pngs-", dir=place) as folder:
        # The sanitizers take their time.
        made = write_all(folder, rng, 4 if shared.sanitized(program) else 1 if os.environ.get("RAXEL_EVERY_SIZE") else 2)
        expected = {path: meant(path, picture) for path, picture in made.items()}
        options = [program, "-q", "-m", "rgb", "--background", "#%02x%02x%02x" % BACKGROUND]
        for memory, (each, tunables) in MEMORIES.items():
            some = list(made)[::each]
            to = os.path.join(folder, memory)
            os.makedirs(to)
            done = subprocess.run([*options, "-d", to, *some], capture_output=True, text=True, env={**os.environ, "GLIBC_TUNABLES": tunables})
            if done.returncode:
                faults.append(f"{memory} memory: {done.stderr[:2000]}")
            for path in some:
                picture = made[path]
                tried += 1
                name = os.path.basename(path)
                out, seen = (os.path.join(folder, of, name[:-4] + ".tif") for of in (memory, "used"))
                if not os.path.exists(out):
                    fault = "is not written"
                elif out != seen and os.path.exists(seen) and filecmp.cmp(out, seen, shallow=False):
                    continue  # what there is to say has been said
                else:
                    fault = compare(out, expected[path], picture.kind < 4)
                if fault:
                    faults.append(f"{name} in {memory} memory: {fault}")
        # Nothing that was not written is looked at: one picture of each kind.
        if shutil.which("valgrind") and not shared.sanitized(program):
            some = [path for path in made if os.path.basename(path).startswith(("13x", "14x"))]
            to = os.path.join(folder, "valgrind")
            os.makedirs(to)
            done = subprocess.run(["valgrind", "-q", "--error-exitcode=99", *options, "-d", to, *some], capture_output=True, text=True)
            tried += len(some)
            if done.returncode:
                faults.append(f"valgrind: exit {done.returncode}: {done.stderr[:3000]}")
    return shared.tell(faults[:40], f"pngs: {tried - len(faults)} passed, {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
