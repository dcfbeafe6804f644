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


def milliseconds(command):
    start = time.perf_counter()
    subprocess.run(command, check=True)
    return (time.perf_counter() - start) * 1000


def main():
    build, source, program = shared.places()
    photo = Image.open(os.path.join(source, "samples/photo.png")).convert("RGB")
    faults, figure = [], {}
    with tempfile.TemporaryDirectory(prefix="raxel-sandbox-", dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as folder:
        for name, size, form in (("a JPEG of 12 megapixels", (4000, 3000), "JPEG"), ("one on its side", (4000, 3000), "JPEG"),
                                 ("a JPEG of 200 by 150", (200, 150), "JPEG"), ("a TIFF of 200 by 150", (200, 150), "TIFF")):
            path, out = os.path.join(folder, "in"), os.path.join(folder, "out.tif")
            exif = Image.Exif()
            exif[0x0112] = 6 if "side" in name else 1
            photo.resize(size).save(path, form, exif=exif, **({"quality": 90} if form == "JPEG" else {"compression": "tiff_lzw"}))
            times = {(): [], ("--no-sandbox",): []}
            for _ in range(RUNS):
                for how, taken in times.items():
                    taken.append(milliseconds([program, "-q", "--force", *how, path, out]))
            inside, without = (statistics.median(taken) for taken in times.values())
            figure[f"added to {name}"] = f"{inside - without:.1f} ms of {without:.0f}"
            if inside - without >= MOST:
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
