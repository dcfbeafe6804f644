#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Cuts TIFF files short: each is refused, the old output stays, and the only line on stderr is the command's.

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
    for compression in ("none", "lzw", "packbits"):
        path = os.path.join(folder, "own.tif")
        subprocess.run([program, "-q", "-c", compression, sample, path], check=True)
        with open(path, "rb") as file:
            made[f"own {compression}"] = file.read()
    return made


def main():
    _, source, program = shared.places()
    sample = os.path.join(source, "samples/photo.png")
    faults, tried = [], 0
    with tempfile.TemporaryDirectory(prefix="raxel-truncated-") as folder:
        cut, target = os.path.join(folder, "cut.tif"), os.path.join(folder, "out.tif")
        for name, whole in kinds(program, sample, folder).items():
            for percent in (10, 30, 60, 90, 95, 99, 100):
                tried += 1
                with open(cut, "wb") as out:
                    out.write(whole[:len(whole) * percent // 100])
                with open(target, "wb") as out:
                    out.write(OLD)
                done = subprocess.run([program, "-q", "-c", "lzw", cut, target], capture_output=True, text=True)
                with open(target, "rb") as file:
                    kept = file.read() == OLD
                lines = done.stderr.splitlines()
                whole_here = percent == 100
                if done.returncode != (0 if whole_here else 66) or kept == whole_here:
                    faults.append(f"{name} at {percent} %: exit {done.returncode}, the old file is {'kept' if kept else 'gone'}")
                if len(lines) != (0 if whole_here else 1) or not all(line.startswith(f"raxel-export: {cut}") for line in lines):
                    faults.append(f"{name} at {percent} %: says {lines}")
    return shared.tell(faults, f"truncated: {tried} files, {len(faults)} faults")


if __name__ == "__main__":
    sys.exit(main())
