#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Chooses colours for pictures of many kinds, beside four others, and draws error against time.

    quantize_bench.py --build FOLDER [--runs N] [--plot FILE.svg] [PICTURE...]

The pictures are those of samples/, one of matplotlib's (a portrait), and drawn ones, the same each time; any
others can be named. Nothing is dithered. The error is the root of the mean square over all channels. Times are
processor time: of the whole process for raxel-export and ImageMagick; from opening the picture to having
written the result for the two that are called through Pillow, whose start is left out.
"""

import argparse
import math
import os
import random
import resource
import statistics
import subprocess
import sys
import tempfile
import time

# Threads that wait for one another by running in circles would count as work of libimagequant.
os.environ["OMP_NUM_THREADS"] = "1"

import matplotlib
import numpy
from PIL import Image, ImageDraw, ImageFilter

import command_bench

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def drawing(seed):
    """Lines, ellipses and boxes with soft edges."""
    picture, numbers = Image.new("RGB", (1600, 1200), "white"), random.Random(seed)
    pen = ImageDraw.Draw(picture)
    for n in range(120):
        x, y = numbers.randrange(1500), numbers.randrange(1100)
        color = tuple(numbers.randrange(256) for _ in range(3))
        if n % 3 == 0:
            pen.line([x, y, numbers.randrange(1600), numbers.randrange(1200)], color, numbers.randrange(2, 12))
        elif n % 3 == 1:
            pen.ellipse([x, y, x + 80, y + 60], fill=color)
        else:
            pen.rectangle([x, y, x + 70, y + 90], fill=color)
    return picture.resize((800, 600), Image.LANCZOS)


def pictures(folder):
    """Name to path of a PPM."""
    numbers = numpy.random.default_rng(5)
    photo = command_bench.write_photo(folder, SOURCE)
    sample = lambda name: Image.open(os.path.join(SOURCE, "samples", name)).convert("RGB")
    portrait = Image.open(os.path.join(matplotlib.get_data_path(), "sample_data/grace_hopper.jpg")).convert("RGB")
    noise = Image.fromarray(numbers.integers(0, 256, (768, 1024, 3), dtype=numpy.uint8))
    y, x = numpy.mgrid[0:768, 0:1024]
    slopes = numpy.dstack([x * 255 // 1023, y * 255 // 767, (x + y) * 255 // 1790]).astype(numpy.uint8)
    sky = numpy.dstack([90 + y * 60 // 767, 130 + y * 70 // 767 + x * 8 // 1023, 200 + x * 40 // 1023]).astype(numpy.uint8)
    colors = numbers.integers(0, 256, (1000, 3), dtype=numpy.uint8)
    of = lambda count: Image.fromarray(colors[(numbers.random((500, 500)) ** 3 * count).astype(int)])
    skin = portrait.crop((180, 60, 340, 260)).resize((640, 800), Image.BICUBIC)
    found = {
        "photo, 12 megapixels": photo, "photo": sample("photo.png"), "portrait": portrait, "skin": skin,
        "blurred photo": sample("photo.png").filter(ImageFilter.GaussianBlur(4)), "chart": sample("chart8.png"),
        "drawing": drawing(3), "slopes": Image.fromarray(slopes), "sky": Image.fromarray(sky), "noise": noise,
        "blurred noise": noise.filter(ImageFilter.GaussianBlur(3)), "1000 colours": of(1000),
        "300 colours": of(300), "200 colours": of(200),
    }
    paths = {}
    for name, picture in found.items():
        paths[name] = os.path.join(folder, name.replace(" ", "-").replace(",", "") + ".ppm")
        picture.save(paths[name])
    return paths


def children():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def process(*command):
    before = children()
    subprocess.run(command, check=True)
    return children() - before


def through_pillow(method):
    def run(path, out, colors):
        start = time.process_time()
        Image.open(path).quantize(colors, method=method, dither=Image.Dither.NONE).save(out)
        return time.process_time() - start
    return run


def rivals(build):
    """Name to a function of (picture, output, colours) that returns seconds."""
    program = os.path.join(os.path.realpath(build), "raxel-export")
    ours = lambda quantizer: lambda path, out, colors: process(
        program, "-q", "-f", "-m", f"color{colors}", "--no-dither", "--quantizer", quantizer, path, out)
    return {
        "raxel-export": ours("best"),
        "libimagequant": through_pillow(Image.Quantize.LIBIMAGEQUANT),
        "Leptonica": ours("fast"),
        "Pillow": through_pillow(Image.Quantize.MEDIANCUT),
        "ImageMagick": lambda path, out, colors: process(
            "convert", path, "+dither", "-colors", str(colors), "-compress", "none", out),
    }


def rms(path, out):
    wanted = numpy.asarray(Image.open(path).convert("RGB")).astype(numpy.int32)
    made = numpy.asarray(Image.open(out).convert("RGB"))[:wanted.shape[0]]  # a height that is odd gets one more row
    return math.sqrt(((wanted - made) ** 2).mean())


def plot(measured, file):
    """One panel for each number of colours: milliseconds to the right, error upwards."""
    matplotlib.use("Agg")
    matplotlib.rcParams["svg.hashsalt"] = "raxel"
    from matplotlib import pyplot
    figure, panels = pyplot.subplots(1, len(measured), figsize=(9, 3.6))
    for panel, (colors, results) in zip(panels, measured.items()):
        for name, (seconds, error) in results.items():
            panel.plot(1000 * seconds, error, "o", color="tab:red" if name == "raxel-export" else "tab:gray")
            beside = (6, -10) if name == "libimagequant" else (6, 4)  # which is close to ImageMagick
            panel.annotate(name, (1000 * seconds, error), textcoords="offset points", xytext=beside)
        panel.set_xscale("log")
        panel.set_xlim(min(1000 * s for s, _ in results.values()) / 1.5, max(1000 * s for s, _ in results.values()) * 4)
        panel.set_ylim(0, 1.15 * max(e for _, e in results.values()))
        panel.set_xlabel("processor time, ms")
        panel.set_ylabel("RMS error")
        panel.set_title(f"{colors} colours")
    figure.tight_layout()
    figure.savefig(file, metadata=dict.fromkeys(("Creator", "Date", "Format", "Type")))


def compare(methods, paths, folder, runs):
    """Number of colours to (picture to errors by method, seconds by method of the first picture, medians)."""
    out = os.path.join(folder, "out.tif")
    first = next(iter(paths.values()))
    found = {}
    for colors in (256, 16):
        # Those that are timed take turns.
        seconds = {name: [] for name in methods}
        for _ in range(runs):
            for name, method in methods.items():
                seconds[name].append(method(first, out, colors))
        errors = {}
        for picture, path in paths.items():
            errors[picture] = {}
            for name, method in methods.items():
                method(path, out, colors)
                errors[picture][name] = rms(path, out)
        found[colors] = errors, {name: statistics.median(seen) for name, seen in seconds.items()}
    return found


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--runs", type=int, default=5)
    arguments.add_argument("--folder", default="/dev/shm")
    arguments.add_argument("--plot")
    arguments.add_argument("pictures", nargs="*")
    wanted = arguments.parse_args()
    methods = rivals(wanted.build)
    with tempfile.TemporaryDirectory(prefix="raxel-bench-", dir=wanted.folder) as folder:
        paths = pictures(folder)
        first = next(iter(paths))
        paths |= {os.path.basename(path): path for path in wanted.pictures}
        found = compare(methods, paths, folder, wanted.runs)
    for colors, (errors, seconds) in found.items():
        print(f"\n| {colors} colours | " + " | ".join(methods) + " |\n|---|" + "---|" * len(methods))
        for picture, of in errors.items():
            print(f"| {picture} | " + " | ".join(f"{e:.2f}" for e in of.values()) + " |")
        print(f"| {first}, ms | " + " | ".join(f"{1000 * s:.0f}" for s in seconds.values()) + " |")
    if wanted.plot:
        plot({colors: {name: (seconds[name], errors[first][name]) for name in methods}
              for colors, (errors, seconds) in found.items()}, wanted.plot)


if __name__ == "__main__":
    sys.exit(main())
