#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Thirty large pages take no more memory than one of them.

    bounded.py --build FOLDER --source FOLDER
"""

import os
import random
import subprocess
import sys
import tempfile

import shared

WIDTH, HEIGHT, PAGES = 2480, 1800, 30
MORE = 1.2  # times what a single page takes; threads do not always have the same of it in hand


def most(command):
    """The memory that a command had in use at its peak, as a process of its own counts it."""
    child = subprocess.Popen(command, env=dict(os.environ, RAXEL_THREADS="3"))
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    return child.returncode, usage.ru_maxrss / 1024


def write_page(program, folder):
    """A page whose file is small, so that the disk has no part in the time."""
    row = bytes(random.Random(6).choices(range(4), k=3 * 64)) * -(-WIDTH // 64)
    row = row[:3 * WIDTH]
    path = os.path.join(folder, "page.ppm")
    with open(path, "wb") as out:
        out.write(b"P6\n%d %d\n255\n" % (WIDTH, HEIGHT))
        for _ in range(HEIGHT):
            out.write(row)
    pages = os.path.join(folder, "page.tif")
    subprocess.run([program, "-q", "-m", "rgb", "-c", "lzw", path, pages], check=True)
    os.unlink(path)
    return pages


def main():
    _, _, program = shared.places()
    if shared.sanitized(program):
        print("bounded: the sanitizers take memory of their own")
        return 77
    faults = []
    with tempfile.TemporaryDirectory(prefix="raxel-bounded-") as folder:
        page = write_page(program, folder)
        out = os.path.join(folder, "out.tif")
        command = [program, "-q", "--no-sync", "-m", "rgb", "-c", "lzw"]
        alone = [most([*command, page, out]) for _ in range(3)]
        code, many = most([*command, *[page] * PAGES, "-o", out, "--pages"])
        single = max(used for _, used in alone)
        if code != 0 or any(code for code, _ in alone):
            faults.append(f"exit codes {code}, {alone}")
        if many > single * MORE:
            faults.append(f"{PAGES} pages take {many:.1f} MiB, one takes {[round(used, 1) for _, used in alone]}")
    return shared.tell(faults, f"bounded: {PAGES} pages take {many:.1f} MiB, one {single:.1f}; {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
