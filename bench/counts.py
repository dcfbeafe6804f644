#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Counts the instructions of ten small jobs of raxel-export and compares them with those in counts.txt.

    counts.py --build FOLDER --compiler NAME [--update]

Only what the filter, the library of the host and the command carry themselves is counted: neither the dynamic
loader nor the C library, which differ from machine to machine. One thread, an environment without anything
else, and the processor that valgrind offers (up to AVX2; one without it is another machine, and the
comparison is left out, as it is for another compiler). More than a twentieth above the number that is kept
fails; a job that became faster passes and asks for --update (`./dev bench --counts`).
"""

import argparse
import os
import subprocess
import sys
import tempfile

from PIL import Image

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
KEPT = os.path.join(SOURCE, "bench/counts.txt")
SLACK = 0.05
LEFT_OUT = 77

JOBS = {
    "one pixel": ["one.ppm"],
    "RGB none": ["photo.ppm"],
    "RGB PackBits": ["-c", "packbits", "photo.ppm"],
    "RGB LZW": ["-c", "lzw", "photo.ppm"],
    "page T.4": ["-c", "t4", "page.pbm"],
    "page T.6": ["-c", "t6", "page.pbm"],
    "page T.6 in tiles": ["-c", "t6", "--layout", "tiles", "page.pbm"],
    "page Huffman": ["-c", "huffman", "page.pbm"],
    "256 colours": ["-m", "color256", "photo.ppm"],
    "dithered T.6": ["-m", "bilevel", "--dither", "-c", "t6", "part.ppm"],
}


def write_pictures(folder):
    photo = Image.open(os.path.join(SOURCE, "samples/photo.png")).convert("RGB")  # 640 by 427
    photo.save(os.path.join(folder, "photo.ppm"))
    photo.crop((160, 100, 480, 300)).save(os.path.join(folder, "part.ppm"))
    page = Image.open(os.path.join(SOURCE, "samples/page.png"))
    page.convert("1").crop((0, 0, 1240, 1750)).save(os.path.join(folder, "page.pbm"))
    with open(os.path.join(folder, "one.ppm"), "wb") as one:
        one.write(b"P6\n1 1\n255\nabc")


def own_instructions(profile, build):
    """Sum of what callgrind charged to the objects in the build folder themselves."""
    total, own, of_a_call = 0, False, False
    with open(profile, encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("ob="):
                own = line[3:].startswith(build + os.sep)
            elif line.startswith("calls="):
                of_a_call = True  # the next line is the cost of the callee
            elif line[0].isdigit():
                if own and not of_a_call:
                    total += int(line.split()[1])
                of_a_call = False
    return total


def count(build, folder, job):
    profile, out = os.path.join(folder, "profile"), os.path.join(folder, "out.tif")
    subprocess.run(
        ["valgrind", "-q", "--tool=callgrind", "--compress-strings=no", "--compress-pos=no",
         f"--callgrind-out-file={profile}", os.path.join(build, "raxel-export"), "-q", "-f", *job, "out.tif"],
        cwd=folder, check=True, env={"PATH": os.environ["PATH"], "LC_ALL": "C", "RAXEL_THREADS": "1"})
    Image.open(out).load()  # what is counted is a job that was done
    return own_instructions(profile, build)


def read_kept():
    """(compiler, name to count)."""
    with open(KEPT, encoding="utf-8") as lines:
        rows = [line.rstrip("\n").split("\t") for line in lines if line.strip() and line[0] != "#"]
    return rows[0][1], {name: int(number) for name, number in rows[1:]}


def write_kept(compiler, counts):
    with open(KEPT, "w", encoding="utf-8") as kept:
        kept.write("# Instructions of the jobs in counts.py, written by `./dev bench --counts`.\n")
        kept.write(f"compiler\t{compiler}\n")
        kept.writelines(f"{name}\t{number}\n" for name, number in counts.items())


def has_avx2():
    with open("/proc/cpuinfo", encoding="utf-8") as cpu:
        return any(" avx2" in line for line in cpu if line.startswith("flags"))


def compare(counts, kept):
    """Prints a row for each job; whether any is too slow."""
    slower = False
    for name, number in counts.items():
        ratio = number / kept[name]
        verdict = ""
        if ratio > 1 + SLACK:
            slower, verdict = True, "  SLOWER"
        elif ratio < 1 - SLACK:
            verdict = "  faster: keep it, with ./dev bench --counts"
        print(f"{name:18} {number:12,} {kept[name]:12,} {ratio:6.3f}{verdict}")
    return slower


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--compiler", required=True)
    arguments.add_argument("--update", action="store_true")
    wanted = arguments.parse_args()
    if not has_avx2():
        print("left out: valgrind offers no AVX2 on this machine, so other code would be counted")
        return LEFT_OUT
    if not wanted.update:
        compiler, kept = read_kept()
        if compiler != wanted.compiler:
            print(f"left out: the counts are of {compiler}, this is {wanted.compiler}; ./dev bench --counts refreshes them")
            return LEFT_OUT
        if list(kept) != list(JOBS):
            sys.exit("counts.txt does not name the jobs that are counted; ./dev bench --counts refreshes it")
    with tempfile.TemporaryDirectory(prefix="raxel-counts-") as folder:
        write_pictures(folder)
        counts = {name: count(os.path.realpath(wanted.build), folder, job) for name, job in JOBS.items()}
    if wanted.update:
        write_kept(wanted.compiler, counts)
        return 0
    if compare(counts, kept):
        print("More than a twentieth more instructions than before. If that is meant, ./dev bench --counts keeps the new ones.")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
