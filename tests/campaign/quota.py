#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The command where a quota is used up: a real one, of a Btrfs in a file, at less and less room.

    quota.py --build FOLDER --source FOLDER [--step BYTES]

A picture, fifty pages and a profile are to replace what is there. With too little room the command says that the quota is
used up, and the old file stays, with nothing beside it. To be run as root, who can mount; answers 77 where that does not
go, or Btrfs has no programs.
"""

import argparse
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), "../cli"))

import shared  # noqa: E402
from processes import Replaced  # noqa: E402

DISK = 256 << 20
SIDE = 512  # of the picture
MOST = 1 << 20  # that a job takes, and the file system beside it
FIRST = "0/256"  # the quota of the first part of a disk
SETTINGS = b"[S]\r\nDriver=RAXEL.1\r\nCompression Mode=1\r\n"


class Quota(Replaced):
    def __init__(self, program, folder):
        super().__init__(program, folder)
        self.used_up = 0
        self.profile = os.path.join(folder, "own.ini")
        grey = os.path.join(folder, "grey.pgm")
        with open(grey, "wb") as out:
            out.write(b"P5\n%d %d\n255\n" % (SIDE, SIDE) + random.Random(2).randbytes(SIDE * SIDE))
        self.jobs = {"a picture": [grey, self.target], "fifty pages": self.pages(),
                     "a profile": [grey, self.target, "-c", "lzw", "--profile", self.profile, "--section", "S", "--save"]}

    def limit(self, most):
        """How much may lie in the folder; None for as much as there is room."""
        subprocess.run(["sync", "-f", self.folder], check=True)  # what lies there is counted when it is written
        subprocess.run(["btrfs", "qgroup", "limit", "none" if most is None else str(most), FIRST, os.path.dirname(self.folder)], check=True)

    def used(self):
        subprocess.run(["sync", "-f", self.folder], check=True)
        told = subprocess.run(["btrfs", "qgroup", "show", "--raw", "-f", self.folder], check=True, capture_output=True, text=True)
        return int(told.stdout.split()[-2])

    def prepare(self):
        self.limit(None)
        self.put_old()
        with open(self.profile, "wb") as out:
            out.write(SETTINGS)

    def profile_bytes(self):
        with open(self.profile, "rb") as file:
            return file.read()

    def run(self, step):
        for name, arguments in self.jobs.items():
            self.prepare()
            whole = self.start(*arguments)
            self.check(f"{name}, no quota", whole.end() == 0, whole)
            new, saved = self.content(), self.profile_bytes()
            fitted = False
            for room in range(0, MOST, step):
                self.prepare()
                self.limit(self.used() + room)
                process = self.start(*arguments)
                code = process.end()
                title = f"{name}, {room} bytes"
                fitted = code == 0
                if not fitted:
                    self.used_up += 1
                    self.check(f"{title}: the exit code", code in (73, 74), process)
                    self.check(f"{title}: why", "your quota is used up" in process.said(), process)
                self.check(f"{title}: a file that is none", not fitted or self.content() == new, process)
                self.check(f"{title}: the profile", self.profile_bytes() in (SETTINGS, saved) and (not fitted or self.profile_bytes() == saved), process)
                self.kept(title, process)
            self.check(f"{name}: with room enough", fitted)


def inside(program, folder, step):
    """In a namespace of our own, in which the disk is mounted; the folder is a part of it that has its own quota."""
    disk, image = os.path.join(folder, "disk"), os.path.join(folder, "image")
    os.mkdir(disk)
    with open(image, "wb") as out:
        out.truncate(DISK)
    for command in (["mkfs.btrfs", "-q", image], ["mount", "-o", "loop", image, disk], ["btrfs", "-q", "quota", "enable", disk],
                    ["btrfs", "-q", "subvolume", "create", os.path.join(disk, "own")]):
        done = subprocess.run(command, capture_output=True, text=True)
        if done.returncode:
            print(f"quota: {command[0]}: {done.stderr.strip()[-300:]}")
            return 77
    try:
        tried = Quota(program, os.path.join(disk, "own"))
        tried.run(step)
        tried.check("a quota that was used up", tried.used_up > 0)
    finally:
        subprocess.run(["umount", disk], check=True)
    print(json.dumps({"quotas used up": tried.used_up}))
    return shared.tell(tried.faults, f"quota: {tried.checks - len(tried.faults)} passed, {len(tried.faults)} failed")


def main():
    arguments = argparse.ArgumentParser(add_help=False)
    arguments.add_argument("--step", type=int, default=4096)
    arguments.add_argument("--inside")
    wanted, rest = arguments.parse_known_args()
    sys.argv[1:] = rest
    _, _, program = shared.places()
    shared.take_signals()
    if wanted.inside:
        return inside(program, wanted.inside, wanted.step)
    if os.geteuid() != 0 or not shutil.which("mkfs.btrfs"):
        print("quota: only root can mount a disk that has one, with btrfs-progs")
        return 77
    with tempfile.TemporaryDirectory(prefix="raxel-quota-") as folder:
        return subprocess.run(["unshare", "--mount", sys.executable, os.path.abspath(__file__), "--inside", folder, "--step", str(wanted.step),
                               *rest]).returncode


if __name__ == "__main__":
    sys.exit(main())
