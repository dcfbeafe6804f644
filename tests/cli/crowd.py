#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Many processes at once: at one profile, at one file, and each with little memory. Whoever looks finds a whole file.

    crowd.py --build FOLDER --source FOLDER [--all]
"""

import ctypes
import functools
import multiprocessing
import os
import random
import resource
import sys
import tempfile

import shared
from processes import Replaced, Run

CROWD = 16
OTHERS = b"".join(b"[other %d]\r\nKey=%d\r\n" % (i, i) for i in range(500))


def rewrite(library, path, number, times):
    """One of the crowd: its own value under the one key, again and again."""
    loaded = ctypes.CDLL(library)
    for time in range(times):
        loaded.WritePrivateProfileString(b"S", b"Key", b"%d.%d" % (number, time), path.encode())


class Crowd(Replaced):
    def __init__(self, build, program, folder, everything):
        super().__init__(program, folder)
        self.library = os.path.join(build, "raxel.so")
        self.times = 500 if everything else 20
        self.rounds = 100 if everything else 3

    def profile(self):
        """All of them rewrite one profile. It is always one that one of them wrote."""
        path = os.path.join(self.folder, "own.ini")
        with open(path, "wb") as out:
            out.write(OTHERS + b"[S]\r\nKey=16.0\r\n")
        crowd = [multiprocessing.Process(target=rewrite, args=(self.library, path, number, self.times)) for number in range(CROWD)]
        for process in crowd:
            process.start()
        looked, values = 0, set()
        while any(process.is_alive() for process in crowd):
            with open(path, "rb") as file:
                seen = file.read()
            looked += 1
            line = seen[len(OTHERS):]
            whole = seen.startswith(OTHERS) and line.startswith(b"[S]\r\nKey=") and line.endswith(b"\r\n") and line.count(b"\n") == 2
            self.check("profile: it is whole", whole, f"{len(seen)} bytes, {line!r}")
            values.add(line)
        for process in crowd:
            process.join()
            self.check("profile: how one ends", process.exitcode == 0, process.exitcode)
        self.check("profile: nobody was seen at work", len(values) > 1, len(values))
        beside = [name for name in os.listdir(self.folder) if ".raxel-" in name]
        self.check("profile: a temporary is left", not beside, beside)
        return f"{CROWD * self.times} rewrites of one profile, looked at {looked} times, {len(values)} contents"

    def output(self):
        """All of them export to one file. Ten have the usual names for their temporaries, and the others find one."""
        pictures, wholes = [], {}
        for number in range(CROWD):
            path = os.path.join(self.folder, f"{number}.ppm")
            with open(path, "wb") as out:
                out.write(b"P6\n300 200\n255\n" + random.Random(number).randbytes(3 * 300 * 200))
            pictures.append(path)
            self.start(path, self.target, "-c", "lzw").end()
            wholes[self.content()] = number
        self.check("output: pictures of their own", len(wholes) == CROWD, len(wholes))
        looked = 0
        for _ in range(self.rounds):
            self.put_old()
            crowd = [self.start(path, self.target, "-c", "lzw") for path in pictures]
            while not all(process.has_ended() for process in crowd):
                content = self.content()
                looked += 1
                self.check("output: it is whole", content == self.old or content in wholes, f"{len(content)} bytes")
            for process in crowd:
                self.check("output: how one ends", process.end() == 0, process)
            self.check("output: the last one is whole", self.content() in wholes)
            self.check("output: a temporary is left", not self.strays(), self.strays())
        return f"{CROWD * self.rounds} exports to one file, looked at {looked} times"

    @functools.cached_property
    def side_by_side(self):
        """Eight pictures, what becomes of each, and the folder for it."""
        to = os.path.join(self.folder, "to")
        os.makedirs(to, exist_ok=True)
        pictures = [os.path.join(self.folder, f"{number}.ppm") for number in range(8)]
        wholes = {}
        for path in pictures:
            name = os.path.basename(path)[:-4] + ".tif"
            self.start(path, os.path.join(to, name), "-c", "lzw").end()
            with open(os.path.join(to, name), "rb") as file:
                wholes[name] = file.read()
        return to, pictures, wholes

    def squeezed(self, title, limit, most, codes, to, pictures, wholes):
        """Under a limit each file is whole or the old one, and the code tells which. Answers how many are old, and the words."""
        for name in wholes:
            with open(os.path.join(to, name), "wb") as out:
                out.write(self.old)
        process = Run([self.program, "-q", "-j", "4", "-c", "lzw", "-d", to, *pictures],
                      preexec_fn=lambda: resource.setrlimit(limit, (most, most)))
        code = process.end()
        kept = 0
        for name, whole in wholes.items():
            with open(os.path.join(to, name), "rb") as file:
                content = file.read()
            kept += content == self.old
            self.check(f"{title}: {name}", content in (whole, self.old), f"{len(content)} bytes; {process.told()}")
        self.check(f"{title}: how it ends", (code == 0) == (kept == 0) and code in codes, f"{kept} old; {process.told()}")
        self.check(f"{title}: a temporary is left", not self.strays(to), self.strays(to))
        return kept, process.told()

    def little_memory(self):
        """Side by side with less and less memory for each: what is there afterwards is whole, and the rest is told of."""
        work = self.side_by_side
        small = sum(self.squeezed(f"{room} MiB", resource.RLIMIT_AS, room << 20, (0, 70, 127), *work)[0] > 0
                    for room in range(16, 160, 4 if self.times > 20 else 16))
        self.check("little memory: it was never too little", small > 0)
        return f"little memory: {small} times too little"

    def few_descriptors(self):
        """The same from as many descriptors on as a process begins with, and one for what it loads."""
        work = self.side_by_side
        told = [self.squeezed(f"{most} descriptors", resource.RLIMIT_NOFILE, most, (0, 66, 70, 73), *work) for most in range(4, 24)]
        self.check("few descriptors: the first", told[0][0] == 8 and "cannot start a process: Too many open files" in told[0][1], told[0])
        self.check("few descriptors: they never were enough", told[-1][0] == 0, told[-1])
        return f"few descriptors: {sum(kept > 0 for kept, _ in told)} times too few"


def main():
    everything = "--all" in sys.argv
    sys.argv = [each for each in sys.argv if each != "--all"]
    build, _, program = shared.places()
    shared.take_signals()
    if shared.sanitized(program):
        print("crowd: the sanitizers' addresses know no limit, and their library needs a program of its own")
        return 77
    with tempfile.TemporaryDirectory(prefix="raxel-crowd-") as folder:
        tried = Crowd(build, program, folder, everything)
        for step in (tried.profile, tried.output, tried.little_memory, tried.few_descriptors):
            print(step(), flush=True)
    return shared.tell(tried.faults, f"crowd: {tried.checks - len(tried.faults)} passed, {len(tried.faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
