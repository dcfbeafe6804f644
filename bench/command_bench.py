#!/usr/bin/python3
"""Times whole processes of raxel-export beside ppm2tiff, raw2tiff, ImageMagick and libvips.

    command_bench.py --build FOLDER [--runs N] [--folder FOLDER]

All commands of a table take turns, so that a busy machine is busy for all of them. Two times are given:
the wall clock, and the processor time of the process, which other processes hardly change. raxel-export
syncs its file to the disk and the others do not; on a disk that is part of its wall clock.
"""

import argparse
import math
import os
import random
import resource
import shutil
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


def measure(commands, folder, runs):
    """Name to (wall, processor) medians in milliseconds."""
    times = {name: [] for name in commands}
    out = os.path.join(folder, "out.tif")
    for turn in range(runs + 1):
        for name, command in commands.items():
            if os.path.exists(out):
                os.unlink(out)
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            start = time.perf_counter()
            subprocess.run(command, cwd=folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            wall = time.perf_counter() - start
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            if turn:  # the first turn warms the caches
                times[name].append((wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime))
    return {name: [1000 * statistics.median(t) for t in zip(*seen)] for name, seen in times.items()}


def table(title, commands, folder, runs):
    print(f"\n{title}")
    found = measure(commands, folder, runs)
    first = next(iter(found.values()))
    for name, (wall, processor) in found.items():
        print(f"  {name:34} {wall:8.1f} ms wall {processor:8.1f} ms processor   "
              f"{first[0] / wall:5.2f} {first[1] / processor:5.2f} of it")


def rms(a, b):
    histogram = ImageChops.difference(a, b).histogram()
    squares = sum((i % 256) ** 2 * n for i, n in enumerate(histogram))
    return math.sqrt(squares / (3 * a.width * a.height))


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--runs", type=int, default=11)
    arguments.add_argument("--folder", default="/dev/shm")
    wanted = arguments.parse_args()
    program = os.path.join(os.path.realpath(wanted.build), "raxel-export")
    source = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    raw = ["raw2tiff", "-w", str(WIDTH), "-l", str(HEIGHT), "-b", "3"]
    with tempfile.TemporaryDirectory(prefix="raxel-bench-", dir=wanted.folder) as folder:
        photo = write_photo(folder, source)
        for code in ("none", "packbits", "lzw"):
            table(f"photo of 36 MB, {code}", {
                "raxel-export": [program, "-c", code, "photo.ppm", "out.tif"],
                "ppm2tiff": ["ppm2tiff", "-c", code, "photo.ppm", "out.tif"],
                "raw2tiff": [*raw, "-c", code, "photo.raw", "out.tif"],
            }, folder, wanted.runs)
        table("page of text, T.6", {
            "raxel-export": [program, "-c", "t6", "page.pbm", "out.tif"],
            "ppm2tiff": ["ppm2tiff", "-c", "g4", "page.pbm", "out.tif"],
        }, folder, wanted.runs)
        table("one pixel", {
            "raxel-export": [program, "one.ppm", "out.tif"],
            "ppm2tiff": ["ppm2tiff", "one.ppm", "out.tif"],
            "true": ["true"],
        }, folder, wanted.runs)
        for form in ("png", "jpg"):
            others = {"ImageMagick": ["convert"], "GraphicsMagick": ["gm", "convert"]}
            table(f"the photo from {form.upper()}, none", {
                "raxel-export": [program, f"photo.{form}", "out.tif"],
                **{name: [*command, f"photo.{form}", "-compress", "none", "out.tif"]
                   for name, command in others.items() if shutil.which(command[0])},
            }, folder, max(3, wanted.runs // 2))
        if shutil.which("vips"):
            for code in ("none", "lzw"):
                table(f"the photo from PNG, {code}", {
                    "raxel-export": [program, "-c", code, "photo.png", "out.tif"],
                    "libvips": ["vips", "tiffsave", "photo.png", "out.tif", "--compression", code],
                }, folder, max(3, wanted.runs // 2))
        for mode, colors in (("color256", "256"), ("color16", "16")):
            reduce = {f"raxel-export, {q}": [program, "-m", mode, "--no-dither", "--quantizer", q, "photo.ppm", "out.tif"]
                      for q in ("best", "fast", "filter")}
            reduce["ImageMagick"] = ["convert", "photo.ppm", "+dither", "-colors", colors, "-compress", "none", "out.tif"]
            table(f"photo to {colors} colours", reduce, folder, max(3, wanted.runs // 4))
            for name, command in reduce.items():
                subprocess.run(command, cwd=folder, check=True)
                print(f"  {name:34} error {rms(photo, Image.open(os.path.join(folder, 'out.tif')).convert('RGB')):.2f} rms")


if __name__ == "__main__":
    main()
