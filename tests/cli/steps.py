#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Kills the command, stops it, and fails it, at each of the system calls by which it makes a file of fifty pages, and
kills it at each of those by which it rewrites a profile.

    steps.py --build FOLDER --source FOLDER [--all]

A killed run leaves the old file or the new one, and at most a temporary that the next run sweeps; one that a
full disk or a fault stops leaves the old file and nothing else. Without --all, the steps in the middle, where
one page is like the other, are tried now and then.
"""

import collections
import os
import re
import signal
import subprocess
import sys
import tempfile

import shared
from processes import Replaced, Run

NONE_TO_TRY = 77  # what CTest takes for a test left out
CALLS = "%file,%desc"


class Step:
    """The nth call of a name, and how strace shows it."""

    def __init__(self, name, number, line):
        self.name, self.number, self.line = name, number, line

    def __str__(self):
        return f"{self.name} {self.number} ({self.line[:90]})"


class Steps(Replaced):
    def __init__(self, program, folder, everything):
        super().__init__(program, folder)
        self.job = self.pages()
        self.next = [self.job[0], "-o", self.target]
        self.everything = everything
        self.environment = dict(os.environ)
        if self.sanitized:  # leaks cannot be looked for by a process that is watched itself
            self.environment["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"

    def watched(self, *options):
        return Run(["strace", "-f", "-qq", *options, self.program, "-q", *self.job], env=self.environment)

    def injected(self, step, what):
        # With all other calls at full speed, where that goes: a kill is lost.
        fast = ["--seccomp-bpf"] if what.startswith("error") else []
        return self.watched(*fast, "-o", os.path.join(self.folder, "calls"), "-e", f"trace={step.name}", "-e", f"inject={step.name}:{what}")

    def steps(self):
        """Those that touch the output, as an undisturbed run makes them."""
        calls = os.path.join(self.folder, "calls")
        self.put_old()
        process = self.watched("-y", "-o", calls, "-e", f"trace={CALLS}")
        self.check("steps: an undisturbed run", process.end() == 0, process)
        found, counts, made = [], collections.Counter(), False
        with open(calls, encoding="utf-8", errors="replace") as lines:
            for line in lines:
                call = re.match(r"\d+ +(\w+)\(", line)
                if not call:
                    continue
                counts[call[1]] += 1
                made |= "O_CREAT" in line
                # Looking for names that are not there changes nothing.
                if made and self.is_about(line) and "ENOENT" not in line:
                    found.append(Step(call[1], counts[call[1]], line[len(call[0]) - len(call[1]) - 1:].strip()))
        self.whole = self.content()
        names = [step.name for step in found]
        self.check("steps: what there are", self.are_whole(names) and names.count("rename") == 1, dict(collections.Counter(names)))
        return found

    def is_about(self, line):
        return ".raxel-" in line or self.target in line

    def are_whole(self, names):
        return names[0] == "openat" and names.count("pwrite64") >= 2 * len(self.job[:-3]) and names.count("fsync") == 1

    def chosen(self, steps):
        if self.everything:
            return steps
        first, last, each = (4, 5, 40) if self.sanitized else (10, 8, 12)
        return [step for at, step in enumerate(steps) if at < first or at >= len(steps) - last or at % each == 0]

    def kills(self, steps):
        left_behind = 0
        renamed = [step.name for step in steps].index("rename")
        for step in self.chosen(steps):
            self.put_old()
            process = self.injected(step, f"signal=KILL:when={step.number}")
            self.check(f"kill at {step}: it goes on", process.end() == -signal.SIGKILL, process)
            seen = self.content()
            at = steps.index(step)
            allowed = ([self.old] if at <= renamed else []) + ([self.whole] if at >= renamed else [])
            self.check(f"kill at {step}: the file", seen in allowed, f"{len(seen)} bytes that begin with {seen[:16]!r}")
            strays = self.strays()
            left_behind += len(strays)
            self.check(f"kill at {step}: temporaries", len(strays) <= 1, strays)
            process = self.start(*self.next)
            self.check(f"kill at {step}: the next run", process.end() == 0, process)
            self.check(f"kill at {step}: a temporary is left by the next run", not self.strays(), self.strays())
        self.check("kills: none has left a temporary", left_behind > 0)
        return f"{left_behind} temporaries were swept"

    def stops(self, steps):
        """Ctrl-C at the last steps: up to the rename the old file stays; with it the new one is there, and that is said."""
        tried = 0
        for step in steps[-12:]:
            if step.name not in ("pwrite64", "fsync", "rename"):
                continue
            self.put_old()
            process = self.injected(step, f"signal=INT:when={step.number}")
            late = step.name == "rename"
            tried += 1
            self.check(f"stop at {step}: the exit code", process.end() == (0 if late else 130), process)
            self.check(f"stop at {step}: the file", self.content() == (self.whole if late else self.old), process)
            self.check(f"stop at {step}: a temporary is left", not self.strays(), self.strays())
        # With another file to come it is in time.
        two = [os.path.join(self.folder, "two"), *self.job[:2]]
        os.makedirs(two[0])
        process = Run(["strace", "-f", "-qq", "-o", os.path.join(self.folder, "calls"), "-e", "trace=rename", "-e",
                       "inject=rename:signal=INT:when=1", self.program, "-q", "-d", *two], env=self.environment)
        self.check("stop at the first of two files: the exit code", process.end() == 130, process)
        self.check("stop at the first of two files: what there is", os.listdir(two[0]) == ["page00.tif"], os.listdir(two[0]))
        return f"{tried} stops"

    def faults_at(self, steps):
        """Each call fails once, or from then on."""
        wanted = {
            "openat": (("ENOSPC", "", 73), ("EROFS", "", 73)),
            "pwrite64": (("ENOSPC", "+", 74), ("EDQUOT", "", 74), ("EIO", "", 74), ("EINTR", "", 0)),
            "fsync": (("ENOSPC", "", 74), ("EIO", "", 74)),
            "rename": (("ENOSPC", "", 74), ("EIO", "", 74)),
            # Rights that cannot be had and locks that a disk has not are done without.
            "fchown": (("EPERM", "", 0),),
            "fchmod": (("EPERM", "", 0),),
            "flock": (("ENOLCK", "+", 0), ("EOPNOTSUPP", "+", 0)),
        }
        tried = 0
        for step in self.chosen(steps):
            if step.name == "openat" and "O_CREAT" not in step.line:
                continue
            for number, (error, on, code) in enumerate(wanted.get(step.name, ())):
                if step.name == "pwrite64" and not self.everything and number != step.number % 4:
                    continue  # they take turns
                self.put_old()
                process = self.injected(step, f"error={error}:when={step.number}{on}")
                process.end()
                tried += 1
                what = f"{error} at {step}"
                self.check(f"{what}: the exit code", process.code == code, process)
                self.check(f"{what}: what it says", code == 0 or process.said().startswith(f"raxel-export: {self.target}: cannot be "), process)
                self.check(f"{what}: the new file", code != 0 or self.content() == self.whole)
                self.kept(what, process)
        return f"{tried} faults"


class ProfileSteps(Steps):
    """The same for a profile that is rewritten when the picture is there."""

    def __init__(self, program, folder, everything):
        super().__init__(program, folder, everything)
        self.profile = os.path.join(folder, "own.ini")
        self.old = b"[other]\r\nKey=1\r\n[S]\r\nDriver=RAXEL.1\r\nCompression Mode=1\r\n"
        self.job = self.next = [*self.next, "-c", "lzw", "--profile", self.profile, "--section", "S", "--save"]

    def put_old(self):
        with open(self.profile, "wb") as out:
            out.write(self.old)
        if os.path.exists(self.target):  # each run makes it anew, by the same calls
            os.unlink(self.target)

    def content(self):
        with open(self.profile, "rb") as file:
            return file.read()

    def is_about(self, line):
        return "own.ini" in line or "(deleted)" in line  # what it is put together in has no name

    def chosen(self, steps):
        return steps if self.everything else steps[::3]

    def are_whole(self, names):
        return names.count("fsync") == 1 and min(names.count("write"), names.count("flock")) > 0


def main():
    everything = "--all" in sys.argv
    sys.argv = [each for each in sys.argv if each != "--all"]
    _, _, program = shared.places()
    shared.take_signals()
    try:
        subprocess.run(["strace", "-f", "-qq", "-o", "/dev/null", "true"], check=True, capture_output=True)
    except (OSError, subprocess.CalledProcessError) as error:
        print(f"steps: none can be seen here: {error} {getattr(error, 'stderr', b'')}")
        return NONE_TO_TRY
    with tempfile.TemporaryDirectory(prefix="raxel-steps-") as folder:
        profile = ProfileSteps(program, folder, everything)
        steps = profile.steps()
        print(f"a profile: {len(steps)} steps, {len(profile.chosen(steps))} of them tried; {profile.kills(steps)}")
    with tempfile.TemporaryDirectory(prefix="raxel-steps-") as folder:
        tried = Steps(program, folder, everything)
        tried.checks, tried.faults = profile.checks, profile.faults
        steps = tried.steps()
        print(f"{len(steps)} steps, {len(tried.chosen(steps))} of them tried; {tried.kills(steps)}; {tried.stops(steps)}; {tried.faults_at(steps)}")
    return shared.tell(tried.faults, f"steps: {tried.checks - len(tried.faults)} passed, {len(tried.faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
