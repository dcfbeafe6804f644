# SPDX-License-Identifier: MIT
"""Processes that end before their time, and the file that they were to replace."""

import os
import random
import signal
import subprocess
import tempfile
import time

import shared

PAGES = 50
HANG = 120  # seconds after which what does not come is taken not to


class Replaced:
    """A folder with an old file in it, which a command replaces or leaves alone."""

    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.target = os.path.join(folder, "out.tif")
        self.old = b"II*\0" + random.Random(1).randbytes(5000)
        self.checks, self.faults = 0, []
        self.sanitized = shared.sanitized(program)

    def check(self, what, fine, seen=""):
        """`seen` is told when it is not fine; a process is told of by how it ended and what it said."""
        self.checks += 1
        if not fine:
            self.faults.append(f"{what}: {seen.told() if isinstance(seen, Run) else seen}")

    def kept(self, what, process):
        """Whether the old file is there, unless the process ended well, and nothing beside it."""
        content = self.content()
        self.check(f"{what}: the old file is gone", process.code == 0 or content == self.old,
                   f"{len(content)} bytes that begin with {content[:16]!r}; {process.told()}")
        self.check(f"{what}: a temporary is left", not self.strays(), f"{self.strays()}; {process.told()}")

    def pages(self):
        """Fifty small pages, into one file."""
        paths = [os.path.join(self.folder, f"page{number:02}.pgm") for number in range(PAGES)]
        for number, path in enumerate(paths):
            with open(path, "wb") as out:
                out.write(b"P5\n40 30\n255\n" + random.Random(number).randbytes(40 * 30))
        return [*paths, "-o", self.target, "--pages"]

    def put_old(self):
        with open(self.target, "wb") as out:
            out.write(self.old)

    def content(self):
        with open(self.target, "rb") as file:
            return file.read()

    def strays(self, folder=None):
        return [name for name in os.listdir(folder or self.folder) if ".raxel-" in name]

    def start(self, *arguments, **how):
        return Run([self.program, "-q", *arguments], **how)


class Run:
    """A process, with what it said and what it has cost."""

    def __init__(self, command, **how):
        self.messages = tempfile.TemporaryFile()
        self.process = subprocess.Popen(command, stderr=self.messages, **how)
        self.pid = self.process.pid
        self.code = None
        self.cpu = 0.0  # seconds, when it has ended

    def has_ended(self):
        """Whether it has, without taking note of it."""
        return self.code is not None or os.waitid(os.P_PID, self.pid, os.WEXITED | os.WNOHANG | os.WNOWAIT) is not None

    def end(self, patience=None):
        """Waits for it, or kills it when its time is up. Returns the exit code."""
        if self.code is None:
            if patience is not None and not until(self.has_ended, patience):
                self.send(signal.SIGKILL)
            _, status, usage = os.wait4(self.pid, 0)
            self.code = self.process.returncode = os.waitstatus_to_exitcode(status)
            self.cpu = usage.ru_utime + usage.ru_stime
        return self.code

    def send(self, number):
        os.kill(self.pid, number)  # it has not been waited for

    def kill(self):
        self.send(signal.SIGKILL)
        self.end()

    def work(self):
        """Seconds of processor time so far, on all its threads."""
        return time.clock_gettime(~self.pid << 3 | 2)  # how the system numbers that clock

    def maps(self, path):
        try:
            with open(f"/proc/{self.pid}/maps") as file:
                return path in file.read()
        except OSError:
            return False

    def said(self):
        self.messages.seek(0)
        return self.messages.read().decode(errors="replace")

    def told(self):
        return f"exit {self.code}, {self.cpu:.3f} s of work, said {self.said()[-400:]!r}"


def until(holds, patience=None):
    """Waits for a state, as long as it may take on the worst of machines. Whether it came."""
    end = time.monotonic() + (patience or HANG)
    while not holds():
        if time.monotonic() > end:
            return False
        time.sleep(0.001)
    return True


def is_running(pid):
    try:
        with open(f"/proc/{pid}/stat") as file:
            return file.read().rpartition(")")[2].split()[0] not in "ZX"
    except OSError:
        return False


def running(session):
    """The processes of a session that have not ended."""
    found = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/stat") as file:
                fields = file.read().rpartition(")")[2].split()
        except OSError:
            continue
        if int(fields[3]) == session and fields[0] not in "ZX":
            found.append(int(name))
    return found
