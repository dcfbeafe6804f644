#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What it costs that other people's decoders work in a process of their own, on a machine that does nothing else.

    sandbox.py --build FOLDER --source FOLDER
"""

import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

from PIL import Image

HERE = os.path.dirname(os.path.realpath(__file__))
sys.path.insert(0, os.path.join(HERE, "../cli"))

import shared  # noqa: E402

MOST = 2  # ms
RUNS = 21  # of each, in turn
PAGES = 1000
LARGE, SMALL = (4000, 3000), (200, 150)
KINDS = (  # of pictures, and what Pillow is to know
    ("a JPEG of 12 megapixels", LARGE, "JPEG", {"quality": 90}), ("one on its side", LARGE, "JPEG", {"quality": 90}),
    ("a JPEG of 200 by 150", SMALL, "JPEG", {"quality": 90}), ("a TIFF", SMALL, "TIFF", {"compression": "tiff_lzw"}),
    ("a WebP", SMALL, "WEBP", {}), ("a GIF", SMALL, "GIF", {}),
    ("a JPEG 2000 of 64 by 48", (64, 48), "JPEG2000", {}),  # which takes its time
    (f"a TIFF of {PAGES} pages", (8, 8), "TIFF", {"compression": "group4"}))


def milliseconds(command):
    start = time.perf_counter()
    subprocess.run(command, check=True)
    return (time.perf_counter() - start) * 1000


def main():
    build, source, program = shared.places()
    photo = Image.open(os.path.join(source, "samples/photo.png")).convert("RGB")
    faults, figure = [], {}
    with tempfile.TemporaryDirectory(prefix="raxel-sandbox-", dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as folder:
        path, out = os.path.join(folder, "in"), os.path.join(folder, "out.tif")
        for name, size, form, options in KINDS:
            picture = photo.resize(size)
            pages = PAGES if "pages" in name else 1
            if "side" in name:
                options = {**options, "exif": Image.Exif()}
                options["exif"][0x0112] = 6
            if pages > 1:
                picture = picture.convert("1")
                options = {**options, "save_all": True, "append_images": [picture] * (pages - 1)}
            picture.save(path, form, **options)
            times = {(): [], ("--no-sandbox",): []}
            for _ in range(RUNS):
                for how, taken in times.items():
                    taken.append(milliseconds([program, "-q", "--force", *(["--pages"] if pages > 1 else []), *how, path, "-o", out]))
            inside, without = (statistics.median(taken) for taken in times.values())
            figure[f"added to {name}"] = f"{inside - without:.1f} ms of {without:.1f}"
            # A page after the first is to cost a tenth of it.
            if inside - without >= MOST * (1 + 0.1 * (pages - 1)):
                faults.append(f"{name}: takes {inside:.1f} ms, and {without:.1f} without")
    print(json.dumps(figure))
    checks = len(figure)
    confined = subprocess.run([sys.executable, os.path.join(HERE, "../cli/confined.py"), "--build", build, "--source", source],
                              stdout=subprocess.PIPE, text=True)
    print(confined.stdout)
    if confined.returncode != 0:
        faults.append("confined.py fails")
    return shared.tell(faults, f"sandbox: {checks - len(faults)} passed, {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
