#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The command on a disk that is full at each byte of a file of 64 KB.

    sizes.py --build FOLDER --source FOLDER [--from N] [--to N] [--step N]
"""

import argparse
import os
import random
import resource
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), "../cli"))

import shared  # noqa: E402
from processes import Replaced  # noqa: E402


def main():
    arguments = argparse.ArgumentParser(add_help=False)
    arguments.add_argument("--from", type=int, default=0, dest="first")
    arguments.add_argument("--to", type=int, default=1 << 17)
    arguments.add_argument("--step", type=int, default=1)
    wanted, sys.argv[1:] = arguments.parse_known_args()
    _, _, program = shared.places()
    shared.take_signals()
    full = 0
    with tempfile.TemporaryDirectory(prefix="raxel-sizes-", dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as folder:
        tried = Replaced(program, folder)
        grey = os.path.join(folder, "grey.pgm")
        with open(grey, "wb") as out:
            out.write(b"P5\n256 256\n255\n" + random.Random(2).randbytes(1 << 16))
        tried.put_old()
        process = tried.start(grey, tried.target)
        tried.check("with room enough", process.end() == 0 and tried.content() != tried.old, process)
        size = os.path.getsize(tried.target)
        for limit in range(wanted.first, min(wanted.to, size + 2), wanted.step):
            tried.put_old()
            process = tried.start(grey, tried.target, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
            code = process.end()
            full += code == 74
            tried.check(f"limit {limit}: the exit code", code == (74 if limit < size else 0), process)
            tried.kept(f"limit {limit}", process)
    print(f'{{"full": {full}}}')
    return shared.tell(tried.faults, f"sizes: {tried.checks - len(tried.faults)} passed, {len(tried.faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
