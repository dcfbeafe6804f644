#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Where the instructions of an LZW export go: a table of instructions a byte of the picture, by part.

    lzw_parts.py --build FOLDER

Counted by callgrind, in one thread: a photo in RGB, the sample as it is, whose rows become differences; a scan, the
page of text in grey with the noise of a camera; and the page in black and white.
"""

import argparse
import os
import random
import re
import subprocess
import tempfile

from PIL import Image, ImageChops

import counts

# Part to the functions that it is of, by name or by the object that they are in; the first that fits counts.
PARTS = {
    "looking strings up and noting them": r"codeWithLists|codeWithColumns|encodeLzw",
    "packing codes into bits": r"packTable",
    "copying and clearing memory": r"mem(cpy|move|set|chr|cmp)|calloc",
    "rows, strips and the file, in the filter": r"in raxel\.so$",
    "reading, differences and writing, in the command": r"in raxel-export$",
    "starting, and the system's library": r"",
}


def write_pictures(folder):
    counts.write_pictures(folder)
    page = Image.open(os.path.join(folder, "page.pbm")).convert("L")
    noise = Image.frombytes("L", page.size, bytes(
        v % 13 + 122 for v in random.Random(1).randbytes(page.width * page.height)))
    ImageChops.add(page.point(lambda v: 16 + v * 7 // 8), noise, 1, -128).save(os.path.join(folder, "scan.pgm"))


def by_part(profile):
    """Instructions that callgrind charged to the functions of each part themselves."""
    found, part, of_a_call, where = dict.fromkeys(PARTS, 0), None, False, ""
    with open(profile, encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("ob="):
                where = os.path.basename(line.strip())
            elif line.startswith("fn="):
                name = f"{line[3:].strip()} in {where}"
                part = next(part for part, of in PARTS.items() if re.search(of, name))
            elif line.startswith("calls="):
                of_a_call = True  # the next line is the cost of the callee
            elif line[0].isdigit() or line[0] in "+-*":
                if not of_a_call:
                    found[part] += int(line.split()[1])
                of_a_call = False
    return found


def count(build, folder, options, picture):
    profile, out = os.path.join(folder, "profile"), os.path.join(folder, "out.tif")
    # The instruction that sets memory byte by byte would count once for each.
    environment = {"PATH": os.environ["PATH"], "LC_ALL": "C", "RAXEL_THREADS": "1",
                   "GLIBC_TUNABLES": "glibc.cpu.x86_rep_stosb_threshold=0x7fffffff:"
                                     "glibc.cpu.x86_rep_movsb_threshold=0x7fffffff"}
    subprocess.run(
        ["valgrind", "-q", "--tool=callgrind", "--compress-strings=no", "--compress-pos=no",
         f"--callgrind-out-file={profile}", os.path.join(build, "raxel-export"), "-q", "-f", "-c", "lzw", *options, picture,
         "out.tif"], cwd=folder, check=True, env=environment)
    with Image.open(out) as made:
        made.load()
        size = (made.width * {"1": 1, "L": 8, "RGB": 24}[made.mode] + 7) // 8 * made.height
    return {part: number / size for part, number in by_part(profile).items()}


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    build = os.path.realpath(arguments.parse_args().build)
    with tempfile.TemporaryDirectory(prefix="raxel-parts-") as folder:
        write_pictures(folder)
        jobs = {"photo": ([], "photo.ppm"), "scan": (["-m", "grey256"], "scan.pgm"), "page": ([], "page.pbm")}
        found = {name: count(build, folder, *job) for name, job in jobs.items()}
    print("| instructions a byte | " + " | ".join(found) + " |\n|---|" + "---|" * len(found))
    for part in PARTS:
        print(f"| {part} | " + " | ".join(f"{parts[part]:.2f}" for parts in found.values()) + " |")
    print("| in all | " + " | ".join(f"{sum(parts.values()):.2f}" for parts in found.values()) + " |")


if __name__ == "__main__":
    main()
