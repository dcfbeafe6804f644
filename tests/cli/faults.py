#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fails every call to the system in turn by which the command writes its files, once and from then on.

    faults.py --build FOLDER --source FOLDER [--all]

The nth open, read, write, seek, close, sync and rename, the nth look at a file, lock, change of rights and fork, and
the nth allocation. Whatever fails, the file is the new one and the command says so by 0, or the old one and it says what
went wrong; and nothing lies beside it. The same goes for a program that exports through libraxelhost, but that the
filter ends it, as any process, when an allocation of its own fails. Without --all, what is called often fails now and
then.
"""

import collections
import json
import os
import random
import re
import resource
import signal
import subprocess
import sys
import tempfile

from PIL import Image

import shared
from processes import Replaced, Run

KINDS = ("open", "read", "write", "seek", "close", "sync", "rename", "memory")
MORE = ("look", "lock", "right")  # that go the same way in each job
SPARED = ("read", "seek")  # what a job may do without
# What is out of order when the command ends so: an input, the filter or the memory, a file that cannot be made, written.
NO_INPUT, NO_MEMORY, NO_WRITE = 66, 70, 74
CODES = (NO_INPUT, NO_MEMORY, 73, NO_WRITE)
CLOSING_STDOUT = "raxel-export: standard output: cannot be written: Input/output error\n"
MEMORY = re.compile("memory|cannot be loaded|No space for|malloc|Insertion in")
FILTERS_END = re.compile(r"GloalAlloc function failed due to insufficient memory: needs (\d+) bytes memory!!\n")
FEW = 24  # of calls of a kind, that are tried of many


class Job:
    """What the command is asked for, the file that comes of it, and what the file is before and after."""

    def __init__(self, name, arguments, path, old, kinds=KINDS, program=None):
        self.name, self.arguments, self.path, self.old, self.kinds = name, arguments, path, old, kinds
        self.program = program  # another one that exports
        self.new = None


class Faults(Replaced):
    def __init__(self, build, program, source, folder, everything):
        super().__init__(program, folder)
        self.library = os.path.join(build, "tests/cli/libfaults.so")
        self.examples = build
        self.filter = os.path.join(build, "raxel.so")
        self.everything = everything
        self.seen = os.path.join(folder, "seen")
        self.counts = collections.Counter()
        self.ends = collections.Counter()

    def picture(self, name, magic, size, width, height):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as out:
            out.write(b"%s\n%d %d\n%s" % (magic, width, height, b"" if magic == b"P4" else b"255\n"))
            out.write(random.Random(5).randbytes(size))
        return path

    def jobs(self):
        color = self.picture("color.ppm", b"P6", 3 * 60 * 50, 60, 50)
        page = self.picture("page.pbm", b"P4", 80 * 700, 640, 700)
        pages = self.pages()
        few = [*pages[:3], *pages[-3:]]
        profile = os.path.join(self.folder, "own.ini")
        settings = b"[other]\r\nKey=1\r\n[S]\r\nDriver=RAXEL.1\r\nCompression Mode=1\r\n"
        made = [
            ("lzw", [color, self.target, "-m", "rgb", "-c", "lzw"]),
            ("tiles", [page, self.target, "-m", "bilevel", "-c", "t6", "--verify"]),
            ("pages", [*few, "-m", "bilevel", "-c", "t6"]),
        ]
        if self.everything:
            for coder in ("none", "packbits"):
                made.append((coder, [color, self.target, "-m", "rgb", "-c", coder]))
            for coder in ("huffman", "t4", "t6"):
                made.append((coder, [page, self.target, "-m", "bilevel", "-c", coder]))
            made.append(("color16", [color, self.target, "-m", "color16", "-c", "lzw", "--verify"]))
            made.append(("fifty pages", [*pages, "-c", "lzw"]))
        jobs = [Job(name, arguments, self.target, self.old) for name, arguments in made]
        jobs[0].kinds += MORE
        # Which another process decodes.
        photo = os.path.join(self.folder, "photo.jpg")
        Image.frombytes("L", (60, 50), random.Random(6).randbytes(3000)).save(photo)
        jobs.append(Job("library", [color, self.target], self.target, self.old, program=os.path.join(self.examples, "example_write")))
        jobs.append(Job("photo", [photo, self.target], self.target, self.old, ("fork",)))
        arguments = [color, os.path.join(self.folder, "beside.tif"), "-m", "rgb", "-c", "lzw", "--profile", profile, "--section", "S", "--save"]
        jobs.append(Job("profile", arguments, profile, settings, KINDS + MORE))
        return jobs

    def prepare(self, job):
        with open(job.path, "wb") as out:
            out.write(job.old)

    def command(self, job):
        return [job.program, *job.arguments] if job.program else [self.program, "-q", *job.arguments]

    def words(self):
        """What has been said on standard output."""
        with open(os.path.join(self.folder, "said"), "rb") as said:
            return said.read().decode(errors="replace")

    def run(self, job, kind, number, how, command=None):
        """One run with one fault. Whether it came."""
        self.prepare(job)
        if os.path.exists(self.seen):
            os.unlink(self.seen)
        environment = dict(os.environ, LD_PRELOAD=self.library, RAXEL_FAULT=f"{kind} {number} {how}", RAXEL_FAULT_SEEN=self.seen,
                           OMP_NUM_THREADS="1")
        with open(os.path.join(self.folder, "said"), "wb") as said:
            process = Run(command or self.command(job), env=environment, stdout=said)
            code = process.end()
        return code, process, os.path.exists(self.seen)

    def judge(self, job, what, process):
        with open(job.path, "rb") as file:
            content = file.read()
        code = process.code
        self.ends[code] += 1
        loading = self.ends_loading(process)
        if job.program and code == -signal.SIGABRT:
            # Nothing of the library's comes to clear up: a temporary may be left, as after a kill.
            self.check(f"{what}: the filter's last words", FILTERS_END.search(self.words()), process)
            self.check(f"{what}: the file", content == job.old, process)
            for name in self.strays():
                os.unlink(os.path.join(self.folder, name))
            return
        self.check(f"{what}: how it ends", code == 0 or code in CODES or loading, process)
        if code == 0:
            fine = content == job.new
        elif job.name == "profile":
            fine = self.is_profile(job, content)
        else:
            fine = content == job.old
        self.check(f"{what}: the file", fine, f"{len(content)} bytes that begin with {content[:16]!r}; {process.told()}")
        self.check(f"{what}: what it says", code == 0 or loading or self.has_said(job, process), process)
        self.check(f"{what}: a temporary is left", not self.strays(), f"{self.strays()}; {process.told()}")
        for name in self.strays():
            os.unlink(os.path.join(self.folder, name))

    @staticmethod
    def tells_of_memory(job, process):
        """Whether it ended for want of memory by its code or its words; the loader and libtiff have words of their own, and
        the filter answers alike for whatever keeps a profile from being read or written."""
        if job.program and process.code in (NO_INPUT, -signal.SIGABRT):
            return True
        if job.name == "profile" and re.search("cannot be stored|can be read", process.said()):
            return True
        return process.code == NO_MEMORY or MEMORY.search(process.said())

    @staticmethod
    def has_said(job, process):
        """Whether it said a sentence; the other program does not where it cannot read the picture itself."""
        return re.match("." if job.program else "raxel-export: .", process.said()) or (job.program and process.code == NO_INPUT)

    @staticmethod
    def ends_loading(process):
        """The system's loader ends a process that has no memory for a library, whenever one is loaded."""
        return process.code == 127 and process.said() == "out of memory\n"

    @staticmethod
    def is_profile(job, content):
        """Settings are saved one by one, each with a whole profile: no line is cut, and no key of the old one missing."""
        def keys(profile):
            return [line.split(b"=")[0] for line in profile.splitlines()]

        lines = content.splitlines(keepends=True)
        known = job.old.splitlines(keepends=True) + job.new.splitlines(keepends=True)
        return set(lines) <= set(known) and set(keys(job.old)) <= set(keys(content))

    def chosen(self, calls):
        """Which of so many are tried."""
        if self.everything or calls <= FEW:
            return range(1, calls + 1)
        # The last ones come when the file has its name.
        end = FEW // 3
        between = random.Random(calls).sample(range(end + 1, calls - end + 1), min(end, calls - 2 * end))
        return sorted({*range(1, end + 1), *between, *range(calls - end + 1, calls + 1)})

    def calls(self, job, kind):
        """How many calls of a kind an undisturbed run makes."""
        low, high = 0, 1
        while self.run(job, kind, high, "once")[2]:
            low, high = high, high * 4
        while high - low > 1:
            middle = (low + high) // 2
            if self.run(job, kind, middle, "once")[2]:
                low = middle
            else:
                high = middle
        return low

    def job(self, job):
        code, process, _ = self.run(job, "none", 0, "once")
        with open(job.path, "rb") as file:
            job.new = file.read()
        self.check(f"{job.name}: undisturbed", code == 0 and job.new != job.old, process)
        for kind in job.kinds:
            calls = self.calls(job, kind)
            self.check(f"{job.name}: calls of {kind}", calls > 0 or kind in SPARED, calls)
            for number in self.chosen(calls):
                for how in ("once", "forever"):
                    _, process, came = self.run(job, kind, number, how)
                    self.counts[kind] += came
                    self.judge(job, f"{job.name}, {kind} {number} {how}", process)
                    if kind == "memory":
                        self.check(f"{job.name}, {kind} {number} {how}: why", process.code == 0 or self.tells_of_memory(job, process), process)
        if "write" in job.kinds:
            self.quota(job)

    def quota(self, job):
        """A user's quota is told from a full disk, by who writes the file."""
        for number in (1, 2):
            _, process, came = self.run(job, "write", number, "quota")
            self.counts["quota"] += came
            self.judge(job, f"{job.name}, quota {number}", process)
            if job.name != "profile":
                self.check(f"{job.name}, quota {number}: why", not came or "your quota is used up" in process.said(), process)

    def standard_output(self):
        """What only the closing of standard output tells is no success, though all the bytes are there."""
        job = Job("standard output", [self.picture("color.ppm", b"P6", 3 * 60 * 50, 60, 50), "-", "-c", "lzw"], self.target, self.old)
        told = 0
        for number in range(1, self.calls(job, "close") + 1):
            code, process, _ = self.run(job, "close", number, "once")
            known = code == 0 or (code == NO_WRITE and process.said() == CLOSING_STDOUT)
            self.check(f"standard output, close {number}: how it ends", known or (code in CODES and self.has_said(job, process)), process)
            told += code == NO_WRITE
        self.check("standard output: nobody heard its closing", told == 1, told)

    def inspection(self):
        """What --inspect tells is whole, or it is told that memory was wanting, which may look like a fault of the file."""
        path = self.picture("color.ppm", b"P6", 3 * 60 * 50, 60, 50)
        pages = os.path.join(self.folder, "pages.tif")
        self.start(path, path, "-o", pages, "--pages", "-c", "lzw").end()
        job = Job("inspection", [], self.target, self.old)
        command = [self.program, "--inspect", "--json", pages]
        code, process, _ = self.run(job, "none", 0, "once", command)
        whole, refused = self.words(), 0
        self.check("inspection: undisturbed", code == 0, process)
        for number in self.chosen(self.calls_of(job, command)):
            for how in ("once", "forever"):
                code, process, _ = self.run(job, "memory", number, how, command)
                refused += code == NO_MEMORY
                told = MEMORY.search(self.words() + process.said())
                fine = self.words() == whole if code == 0 else code in CODES and told
                self.check(f"inspection, memory {number} {how}", fine or self.ends_loading(process), f"{self.words()[-400:]!r}; {process.told()}")
        self.check("inspection: it always had enough", refused > 0, refused)

    def filter_alone(self):
        """The library itself, in a process of its own: it says what it has always said, and the process ends."""
        output = os.path.join(self.folder, "one.tif")
        job = Job("one call", [], output, b"old")
        command = [os.path.join(self.examples, "example_one_call"), self.filter, output]
        ended = 0
        calls = self.calls_of(job, command)
        for number in self.chosen(calls):
            for how in ("once", "forever"):
                code, process, _ = self.run(job, "memory", number, how, command)
                words = self.words()
                told = FILTERS_END.search(words)
                ended += code == -signal.SIGABRT
                fine = (code == -signal.SIGABRT) == bool(told) and code in (0, 1, 2, -signal.SIGABRT)
                self.check(f"the library, memory {number} {how}", fine or self.ends_loading(process), f"{words!r}; {process.told()}")
        self.check("the library: none of its own allocations failed", ended > 0, calls)
        return f"the library ended {ended} times with its words"

    def calls_of(self, job, command):
        number = 1
        while self.run(job, "memory", number, "once", command)[2]:
            number += 1
        return number - 1

    def little_room(self):
        """Less and less room for addresses, as a system gives it that has no more memory."""
        job = self.jobs()[0]
        _, process, _ = self.run(job, "none", 0, "once")
        with open(job.path, "rb") as file:
            job.new = file.read()
        step = 1 if self.everything else 8
        refused = 0
        for room in range(16, 160, step):
            self.prepare(job)
            process = Run(self.command(job), preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (room << 20, room << 20)))
            if process.end() == 127:
                continue  # the system's loader had not enough for the program itself
            refused += process.code != 0
            self.judge(job, f"{room} MiB", process)
        self.check("little room: it was never too little", refused > 0)
        return f"{refused} sizes of memory were too small"


def main():
    everything = "--all" in sys.argv
    sys.argv = [each for each in sys.argv if each != "--all"]
    build, source, program = shared.places()
    shared.take_signals()
    if shared.sanitized(program):
        print("faults: nothing can be loaded before the sanitizers")
        return 77
    with tempfile.TemporaryDirectory(prefix="raxel-faults-") as folder:
        tried = Faults(build, program, source, folder, everything)
        for job in tried.jobs():
            tried.job(job)
        tried.standard_output()
        tried.inspection()
        told = {f"{kind}s failed": count for kind, count in tried.counts.items()}
        told |= {f"ended with {code}": count for code, count in sorted(tried.ends.items())}
        print(f"{tried.filter_alone()}; {tried.little_room()}")
        print(json.dumps(told))
    return shared.tell(tried.faults, f"faults: {tried.checks - len(tried.faults)} passed, {len(tried.faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
