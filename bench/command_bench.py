#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Times whole processes of raxel-export beside ppm2tiff, raw2tiff, ImageMagick and libvips.

    command_bench.py --build FOLDER [--runs N] [--folder FOLDER]

All commands of a table take turns, so that a busy machine is busy for all of them. Two times are given:
the wall clock, and the processor time of the process, which other processes hardly change. raxel-export
syncs its file to the disk and the others do not; on a disk that is part of its wall clock. `report.py` has the
same jobs in its table.
"""

import argparse
import os
import random
import resource
import statistics
import subprocess
import tempfile
import time

from PIL import Image, ImageChops

WIDTH, HEIGHT = 4000, 3000


def write_photo(folder, source):
    """A photo of 12 megapixels: the sample enlarged, with the noise of a camera."""
    photo = Image.open(os.path.join(source, "samples/photo.png")).convert("RGB").resize((WIDTH, HEIGHT), Image.BICUBIC)
    noise = Image.frombytes("L", (WIDTH, HEIGHT), bytes(
        v % 13 + 122 for v in random.Random(1).randbytes(WIDTH * HEIGHT)))
    bands = [ImageChops.add(band, noise, 1, -128) for band in photo.split()]
    photo = Image.merge("RGB", bands)
    photo.save(os.path.join(folder, "photo.ppm"))
    with open(os.path.join(folder, "photo.raw"), "wb") as raw:
        raw.write(photo.tobytes())
    photo.save(os.path.join(folder, "photo.png"), compress_level=3)
    photo.save(os.path.join(folder, "photo.jpg"), quality=92)
    Image.open(os.path.join(source, "samples/page.png")).save(os.path.join(folder, "page.pbm"))
    with open(os.path.join(folder, "one.ppm"), "wb") as one:
        one.write(b"P6\n1 1\n255\nabc")
    return photo


def program(build):
    return os.path.join(os.path.realpath(build), "raxel-export")


def jobs(ours):
    """Job to commands by name, the first of them raxel-export's; the same options of the format in all."""
    raw = ["raw2tiff", "-w", str(WIDTH), "-l", str(HEIGHT), "-b", "3"]
    found = {}
    for job, options, code in (("none", ["-c", "none"], "none"), ("PackBits", ["-c", "packbits"], "packbits"),
                               ("LZW", ["-c", "lzw", "--predictor", "none"], "lzw"),
                               ("LZW, predictor", ["-c", "lzw", "--predictor", "horizontal"], "lzw:2")):
        found[f"photo from PPM, {job}"] = {
            "raxel-export": [ours, *options, "photo.ppm", "out.tif"],
            "ppm2tiff": ["ppm2tiff", "-c", code, "photo.ppm", "out.tif"],
            "raw2tiff": [*raw, "-c", code, "photo.raw", "out.tif"],
        }
    for job, code, theirs in (("PackBits", "packbits", "packbits"), ("T.4", "t4", "g3"), ("T.6", "t6", "g4")):
        found[f"page of text from PBM, {job}"] = {
            "raxel-export": [ours, "-c", code, "page.pbm", "out.tif"],
            "ppm2tiff": ["ppm2tiff", "-c", theirs, "page.pbm", "out.tif"],
        }
    found["one pixel"] = {
        "raxel-export": [ours, "one.ppm", "out.tif"],
        "ppm2tiff": ["ppm2tiff", "-c", "none", "one.ppm", "out.tif"],
        "true": ["true"],
    }
    vips = lambda source, code: ["vips", "tiffsave", source, "out.tif", "--compression", code, "--predictor", "none"]
    for source in ("photo.png", "photo.jpg"):
        found[f"photo from {source[6:].upper()}, none"] = {
            "raxel-export": [ours, "-c", "none", source, "out.tif"],
            "libvips": vips(source, "none"),
            "ImageMagick": ["convert", source, "-compress", "none", "out.tif"],
            "GraphicsMagick": ["gm", "convert", source, "-compress", "none", "out.tif"],
        }
    found["photo from PNG, LZW"] = {
        "raxel-export": [ours, "-c", "lzw", "--predictor", "none", "photo.png", "out.tif"],
        "libvips": vips("photo.png", "lzw"),
    }
    found["photo, dithered, T.6"] = {
        "raxel-export": [ours, "-m", "bilevel", "--dither", "-c", "t6", "photo.ppm", "out.tif"],
        "ImageMagick": ["convert", "photo.ppm", "-dither", "FloydSteinberg", "-monochrome", "-compress", "group4", "out.tif"],
    }
    found["photo to 256 colours, none"] = {
        "raxel-export": [ours, "-m", "color256", "--no-dither", "photo.ppm", "out.tif"],
        "ImageMagick": ["convert", "photo.ppm", "+dither", "-colors", "256", "-compress", "none", "out.tif"],
    }
    return found


def run(command, folder):
    """(wall seconds, processor seconds, MiB of memory at most) of a process that must succeed."""
    # What a process starts from counts as memory of its own: a small program has to start it, not this one.
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    subprocess.run(["/usr/bin/time", "-o", "used", "-f", "%M", *command], cwd=folder, check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wall = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    with open(os.path.join(folder, "used"), encoding="utf-8") as used:
        memory = int(used.read()) / 1024
    return wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, memory


def measure(commands, folder, runs):
    """Name to (wall, processor, memory) medians in milliseconds and MiB; the commands take turns."""
    times = {name: [] for name in commands}
    out = os.path.join(folder, "out.tif")
    for turn in range(runs + 1):
        for name, command in commands.items():
            if os.path.exists(out):
                os.unlink(out)
            measured = run(command, folder)
            if turn:  # the first turn warms the caches
                times[name].append(measured)
    medians = {name: [statistics.median(t) for t in zip(*seen)] for name, seen in times.items()}
    return {name: (1000 * wall, 1000 * processor, memory) for name, (wall, processor, memory) in medians.items()}


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--runs", type=int, default=11)
    arguments.add_argument("--folder", default="/dev/shm")
    wanted = arguments.parse_args()
    source = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    with tempfile.TemporaryDirectory(prefix="raxel-bench-", dir=wanted.folder) as folder:
        write_photo(folder, source)
        for title, commands in jobs(program(wanted.build)).items():
            print(f"\n{title}")
            found = measure(commands, folder, wanted.runs)
            first = next(iter(found.values()))
            for name, (wall, processor, memory) in found.items():
                print(f"  {name:16} {wall:8.1f} ms wall {processor:8.1f} ms processor {memory:5.0f} MiB   "
                      f"{first[0] / wall:5.2f} {first[1] / processor:5.2f} of it")


if __name__ == "__main__":
    main()
