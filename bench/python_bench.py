#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Times the Python package beside Pillow, tifffile and libvips, in one process and in turns.

    python_bench.py --build FOLDER [--runs N] [--folder FOLDER]

The photo of command_bench.py and a text page, of 12 megapixels each. Prints a table of medians: milliseconds by the
clock, their ratio to Pillow's, and the ratio of processor time, which other processes change less. `report.py` has it,
too. Nobody waits for the disk.
"""

import argparse
import ctypes
import io
import os
import statistics
import sys
import tempfile
import time

import numpy
from PIL import Image

import command_bench

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


class Vips:
    """As much of libvips as it takes, from arrays where they lie."""

    NONE, PACKBITS, CCITTFAX4, LZW = 0, 3, 4, 5  # VipsForeignTiffCompression
    UCHAR = 0  # VipsBandFormat

    def __init__(self):
        self.lib = ctypes.CDLL("libvips.so.42")
        self.lib.vips_init(b"raxel")
        self.lib.vips_image_new_from_memory.restype = ctypes.c_void_p

    def _image(self, array):
        height, width, bands = *array.shape[:2], array.shape[2] if array.ndim == 3 else 1
        return ctypes.c_void_p(self.lib.vips_image_new_from_memory(
            ctypes.c_void_p(array.ctypes.data), ctypes.c_size_t(array.nbytes), width, height, bands, self.UCHAR))

    def save(self, array, path, compression, bits=0):
        image = self._image(array)
        options = [b"compression", ctypes.c_int(compression)]
        if bits:
            options += [b"bitdepth", ctypes.c_int(bits)]
        if self.lib.vips_tiffsave(image, path.encode(), *options, None):
            sys.exit("vips_tiffsave fails")
        self.lib.g_object_unref(image)

    def buffer(self, array, compression):
        image, data, size = self._image(array), ctypes.c_void_p(), ctypes.c_size_t()
        if self.lib.vips_tiffsave_buffer(image, ctypes.byref(data), ctypes.byref(size), b"compression",
                                         ctypes.c_int(compression), None):
            sys.exit("vips_tiffsave_buffer fails")
        made = ctypes.string_at(data, size.value)
        self.lib.g_free(data)
        self.lib.g_object_unref(image)
        return made


def pillow_bytes(image, compression):
    file = io.BytesIO()
    image.save(file, "TIFF", compression=compression)
    return file.getvalue()


def jobs(folder):
    """Job to commands by name; Pillow's is the one that others are held against."""
    import raxel
    import tifffile

    photo_image = command_bench.write_photo(folder, SOURCE)
    with Image.open(os.path.join(SOURCE, "samples/page.png")) as page:
        page_image = page.convert("1").resize(photo_image.size, Image.NEAREST)
    photo, page = numpy.array(photo_image), numpy.array(page_image)
    grey_page = numpy.where(page, 255, 0).astype(numpy.uint8)
    vips, path = Vips(), lambda name: os.path.join(folder, name + ".tif")
    ours = lambda picture, code, **more: lambda: raxel.save(picture, path("raxel"), compress=code, no_sync=True, **more)
    pillow = lambda image, code: lambda: image.save(path("pillow"), "TIFF", compression=code)
    plain = {"predictor": "none"}  # as the others write it
    return {
        "photo, none": {
            "raxel, array": ours(photo, "none"),
            "raxel, Pillow's image": ours(photo_image, "none"),
            "Pillow": pillow(photo_image, None),
            "tifffile": lambda: tifffile.imwrite(path("tifffile"), photo),
            "libvips": lambda: vips.save(photo, path("vips"), vips.NONE),
        },
        "photo, LZW": {
            "raxel, array": ours(photo, "lzw", **plain),
            "raxel, Pillow's image": ours(photo_image, "lzw", **plain),
            "Pillow": pillow(photo_image, "tiff_lzw"),
            "libvips": lambda: vips.save(photo, path("vips"), vips.LZW),
        },
        "photo, PackBits, to bytes": {
            "raxel, array": lambda: raxel.tobytes(photo, compress="packbits"),
            "raxel, Pillow's image": lambda: raxel.tobytes(photo_image, compress="packbits"),
            "Pillow": lambda: pillow_bytes(photo_image, "packbits"),
            "libvips": lambda: vips.buffer(photo, vips.PACKBITS),
        },
        "text page, T.6": {
            "raxel, array": ours(page, "t6"),
            "raxel, Pillow's image": ours(page_image, "t6"),
            "Pillow": pillow(page_image, "group4"),
            "libvips": lambda: vips.save(grey_page, path("vips"), vips.CCITTFAX4, 1),
        },
    }


def timed(run):
    """Milliseconds by the clock, and of all threads."""
    wall, processor = time.perf_counter(), time.process_time()
    run()
    return (time.perf_counter() - wall) * 1000, (time.process_time() - processor) * 1000


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--runs", type=int, default=15)
    arguments.add_argument("--folder", default="/dev/shm")
    arguments.add_argument("--width", type=int, default=command_bench.WIDTH)
    wanted = arguments.parse_args()
    os.environ["RAXEL_HOST_LIBRARY"] = os.path.join(os.path.realpath(wanted.build), "libraxelhost.so.0")
    sys.path.insert(0, os.path.join(SOURCE, "python"))
    command_bench.WIDTH, command_bench.HEIGHT = wanted.width, wanted.width * 3 // 4
    print("| job | by | ms | of Pillow | of its processor time |\n|---|---|---:|---:|---:|")
    with tempfile.TemporaryDirectory(prefix="raxel-bench-", dir=wanted.folder) as folder:
        for job, contenders in jobs(folder).items():
            times = {name: [] for name in contenders}
            for _ in range(wanted.runs + 1):
                for name, run in contenders.items():
                    times[name].append(timed(run))
            medians = {name: [statistics.median(kind) for kind in zip(*taken[1:])] for name, taken in times.items()}
            for name, (wall, processor) in medians.items():
                theirs = medians["Pillow"]
                print(f"| {job} | {name} | {wall:.1f} | {wall / theirs[0]:.2f} | {processor / theirs[1]:.2f} |", flush=True)
                job = ""


if __name__ == "__main__":
    main()
