#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Cuts TIFF, JPEG, GIF, WebP and JPEG 2000 short: each is refused, the old output stays, and the only line on stderr is the command's.

    truncated.py --build FOLDER --source FOLDER
"""

import io
import os
import struct
import subprocess
import sys
import tempfile

from PIL import Image

import shared

OLD = b"II*\0the old file"
FRAMES = "Pillow's GIF of frames"
TILED = "Pillow's JPEG 2000 of tiles"


def big_tiff(image):
    """The same colours as BigTIFF, in one strip behind its directory."""
    width, height = image.size
    tags = [(256, 4, width), (257, 4, height), (258, 3, 8), (259, 3, 1), (262, 3, 2), (273, 16, 0), (277, 3, 3),
            (278, 4, height), (279, 16, width * height * 3)]
    start = 16 + 8 + 20 * len(tags) + 8
    out = struct.pack("<2sHHHQ", b"II", 43, 8, 0, 16) + struct.pack("<Q", len(tags))
    for tag, kind, value in tags:
        count, value = (3, 0x800080008) if tag == 258 else (1, start if tag == 273 else value)
        out += struct.pack("<HHQQ", tag, kind, count, value)
    return out + struct.pack("<Q", 0) + image.tobytes()


def kinds(program, sample, folder):
    """Name to the bytes of a whole file."""
    photo = Image.open(sample).convert("RGB").resize((180, 120))
    made = {"big": big_tiff(photo)}
    for mode in ("RGB", "RGBA", "CMYK", "L", "1"):
        out = io.BytesIO()
        photo.convert(mode).save(out, "TIFF")
        made[f"Pillow's {mode}"] = out.getvalue()
    out = io.BytesIO()
    photo.quantize(200).save(out, "TIFF", compression="tiff_lzw")
    made["Pillow's palette"] = out.getvalue()
    for name, more in (("JPEG", {}), ("JPEG", {"progressive": True}), ("WEBP", {}), ("WEBP", {"lossless": True}), ("JPEG2000", {})):
        out = io.BytesIO()
        photo.save(out, name, **more)
        made[f"Pillow's {name} {more}"] = out.getvalue()
    out = io.BytesIO()
    photo.save(out, "JPEG2000", tile_size=(64, 64), no_jp2=True)
    made[TILED] = out.getvalue()
    out = io.BytesIO()
    frames = [photo.crop((0, 0, 40 + 20 * i, 60)).quantize(32) for i in range(4)]
    frames[0].save(out, "GIF", save_all=True, append_images=frames[1:], disposal=3, duration=100, comment=b"a")
    made[FRAMES] = out.getvalue()
    for compression in ("none", "lzw", "packbits"):
        path = os.path.join(folder, "own.tif")
        subprocess.run([program, "-q", "-c", compression, sample, path], check=True)
        with open(path, "rb") as file:
            made[f"own {compression}"] = file.read()
    return made


def pieces(made):
    """Each file as far as a share of it, and whole; a codestream also without its last tiles, but with its end."""
    for name, whole in made.items():
        for percent in (10, 30, 60, 90, 95, 99, 100):
            yield f"{name} at {percent} %", whole[:len(whole) * percent // 100], percent == 100
    whole = made[FRAMES]
    for length in range(len(whole) // 3, len(whole), 101):
        yield f"{FRAMES} as far as byte {length}", whole[:length], False
    at = whole.find(b"\x21\xf9\4", len(whole) // 2)
    for length in (at, at + 4, at + 8, at + 12, len(whole) - 1):
        yield f"{FRAMES} as far as byte {length}", whole[:length], False
    tile, end, whole = b"\xff\x90\0\x0a", b"\xff\xd9", made[TILED]
    at = whole.find(tile)
    while at > 0:
        yield f"{TILED} as far as byte {at}", whole[:at] + end, False
        at = whole.find(tile, at + 1)


def main():
    _, source, program = shared.places()
    sample = os.path.join(source, "samples/photo.png")
    faults, tried = [], 0
    with tempfile.TemporaryDirectory(prefix="raxel-truncated-") as folder:
        cut, target = os.path.join(folder, "cut"), os.path.join(folder, "out.tif")
        tries = [(*piece, more) for piece in pieces(kinds(program, sample, folder)) for more in ([], ["--pages"]) if more == [] or FRAMES in piece[0]]
        for name, whole, is_whole, more in tries:
            tried += 1
            with open(cut, "wb") as out:
                out.write(whole)
            with open(target, "wb") as out:
                out.write(OLD)
            done = subprocess.run([program, "-q", *more, "-c", "lzw", cut, target], capture_output=True, text=True)
            with open(target, "rb") as file:
                kept = file.read() == OLD
            lines = done.stderr.splitlines()
            if done.returncode != (0 if is_whole else 66) or kept == is_whole:
                faults.append(f"{name}: exit {done.returncode}, the old file is {'kept' if kept else 'gone'}")
            if len(lines) != (0 if is_whole else 1) or not all(line.startswith("raxel-export: ") and cut in line for line in lines):
                faults.append(f"{name}: says {lines}")
    return shared.tell(faults, f"truncated: {tried} files, {len(faults)} faults")


if __name__ == "__main__":
    sys.exit(main())
