#!/usr/bin/python3
"""Kills the command at random instants, interrupts it, and lets the disk run full: the old file must stay.

    endure.py --build FOLDER --source FOLDER
"""

import argparse
import os
import random
import resource
import signal
import subprocess
import sys
import tempfile
import time

import shared

KILLS = 200
STEP = 4096
SIZE = 1 << 20  # of the file that the full disk is tried on


class Endurance:
    def __init__(self, program, source, folder):
        self.program = program
        self.sample = os.path.join(source, "samples/photo.png")
        self.folder = folder
        self.target = os.path.join(folder, "out.tif")
        self.old = b"II*\0" + random.Random(1).randbytes(5000)
        self.failed = self.passed = 0
        self.sanitized = shared.sanitized(program)
        # A grey picture whose file has 1 MB.
        self.grey = os.path.join(folder, "grey.pgm")
        with open(self.grey, "wb") as out:
            out.write(b"P5\n1024 1024\n255\n" + random.Random(2).randbytes(SIZE))


    def big(self, name):
        """A picture that takes its time."""
        path = os.path.join(self.folder, name)
        with open(path, "wb") as out:
            out.write(b"P6\n3000 2000\n255\n" + random.Random(4).randbytes(3000) * 6000)
        return path

    def patience(self):
        """More time where every instruction is checked or the machine is shared."""
        return 20 if self.sanitized else max(1, min(10, os.getloadavg()[0]))

    def check(self, what, fine):
        if fine:
            self.passed += 1
        else:
            self.failed += 1
            print("FAILED", what)

    def put_old(self):
        with open(self.target, "wb") as out:
            out.write(self.old)

    def content(self):
        with open(self.target, "rb") as file:
            return file.read()

    def strays(self):
        return [name for name in os.listdir(self.folder) if ".raxel-" in name]

    def start(self, *arguments, **how):
        return subprocess.Popen([self.program, "-q", *arguments], stderr=subprocess.DEVNULL, **how)

    def kills(self):
        """kill -9 at random instants of an export and a little beyond."""
        arguments = [self.sample, self.target, "-c", "lzw"]
        times = []
        for _ in range(5):
            begin = time.monotonic()
            self.start(*arguments).wait()
            times.append(time.monotonic() - begin)
        whole = self.content()
        longest = sorted(times)[2] * 1.2
        rng = random.Random(3)
        left_behind = replaced = 0
        for _ in range(KILLS):
            self.put_old()
            process = self.start(*arguments)
            time.sleep(rng.uniform(0, longest))
            process.send_signal(signal.SIGKILL)
            process.wait()
            seen = self.content()
            left_behind += bool(self.strays())
            replaced += seen == whole
            self.check("kill: the file is neither the old nor the new one", seen in (self.old, whole))
        self.start(*arguments).wait()
        self.check(f"kill: {self.strays()} after the next run", not self.strays() and self.content() == whole)
        return f"{KILLS} kills: {left_behind} left a temporary, {replaced} came too late"

    def orphans(self):
        """kill -9 of a parent with children at work: they end with it, and the next run tidies up."""
        to = os.path.join(self.folder, "to")
        os.makedirs(to, exist_ok=True)
        pipes = [os.path.join(self.folder, f"{n}.fifo") for n in range(3)]
        for path in pipes:
            os.mkfifo(path)
        process = self.start("-j", "3", "-d", to, *pipes, start_new_session=True)
        writers = [os.open(path, os.O_WRONLY) for path in pipes]  # opens when a child reads
        for writer in writers:
            os.write(writer, b"P5\n1000 1000\n255\n")  # and no pixels, which it waits for
        self.check(f"orphans: {len(running(process.pid)) - 1} children", len(running(process.pid)) == 4)
        process.kill()
        process.wait()
        done = time.monotonic() + self.patience()
        while running(process.pid) and time.monotonic() < done:
            time.sleep(0.01)
        alive = running(process.pid)
        self.check(f"orphans: {alive} are at work", not alive)
        for pid in alive:
            os.kill(pid, signal.SIGKILL)
        for writer in writers:
            os.close(writer)
        with open(os.path.join(to, ".other.tif.raxel-4"), "wb") as stray:
            stray.write(b"half")
        self.start(self.sample, os.path.join(to, "new.tif")).wait()
        strays = [name for name in os.listdir(to) if ".raxel-" in name]
        self.check(f"orphans: {strays} after the next run", not strays)
        for path in pipes:
            os.unlink(path)
        return f"{len(alive)} orphans"

    def interrupts(self):
        """Ctrl-C ends an export within 100 ms and leaves nothing behind."""
        big = self.big("big.ppm")
        slowest = 0
        for number, delay in enumerate((0.01, 0.02, 0.04, 0.06, 0.08, 0.1, 0.15, 0.2, 0.25, 0.3)):
            self.put_old()
            process = self.start(big, self.target, "-m", "color256" if number % 2 else "rgb", "-c", "lzw",
                                 preexec_fn=lambda: signal.signal(signal.SIGINT, signal.default_int_handler))
            time.sleep(delay)
            if process.poll() is not None:
                continue
            process.send_signal(signal.SIGINT)
            begin = time.monotonic()
            code = process.wait()
            slowest = max(slowest, time.monotonic() - begin)
            # It may have come before the handlers were there, or after all was done.
            self.check(f"interrupt: exit code {code}", code in (130, -signal.SIGINT, 0))
            self.check("interrupt: the old file is gone", code == 0 or self.content() == self.old)
            self.check("interrupt: a temporary is left", not self.strays())
        self.check(f"interrupt: took {slowest:.3f} s", slowest < 0.1 * self.patience())
        return f"interrupts took at most {slowest * 1000:.0f} ms"

    def slow_disk(self):
        """Ctrl-C while the disk takes its time."""
        if self.sanitized:
            return "no slow disk: nothing can be loaded before the sanitizers"
        big = self.big("big.ppm")
        slow = dict(os.environ, LD_PRELOAD=os.path.join(os.path.dirname(self.program), "tests/cli/libslow_disk.so"))
        self.put_old()
        process = self.start(big, self.target, env=slow)
        time.sleep(0.7)
        self.check("slow disk: it is not waited for", process.poll() is None and self.content() == self.old)
        process.send_signal(signal.SIGINT)
        begin = time.monotonic()
        code = process.wait()
        took = time.monotonic() - begin
        self.check(f"slow disk: exit code {code} after {took:.3f} s", code == 130 and took < 0.1 * self.patience())
        self.check("slow disk: the old file is gone", self.content() == self.old)
        self.check("slow disk: a temporary is left", not self.strays())
        process = self.start(big, self.target, env=slow)
        time.sleep(0.7)
        process.kill()
        process.wait()
        self.check("slow disk: the old file is gone after a kill", self.content() == self.old)
        code = self.start(big, self.target, env=slow).wait()
        self.check(f"slow disk: exit code {code} at the end", code == 0 and self.content() != self.old)
        self.check("slow disk: a temporary is left by the next run", not self.strays())
        self.put_old()
        begin = time.monotonic()
        code = self.start("--no-sync", big, self.target, env=slow).wait()
        waited = time.monotonic() - begin
        self.check(f"slow disk: --no-sync took {waited:.3f} s", code == 0 and waited < 2 and self.content() != self.old)
        return f"a stop while the disk was writing took {took * 1000:.0f} ms"

    def cuts(self):
        """Somebody cuts the input short while it is read where it lies."""
        noticed = 0
        for delay in (0.02, 0.04, 0.08, 0.12, 0.16):
            cut = self.big("cut.ppm")
            self.put_old()
            process = subprocess.Popen([self.program, "-q", cut, self.target, "-m", "color256"], stderr=subprocess.PIPE, text=True)
            time.sleep(delay)
            os.truncate(cut, 100)
            said = process.communicate()[1]
            code = process.returncode
            noticed += code == 66
            self.check(f"cut: says {said}", code != 66 or said.startswith(f"raxel-export: {cut}"))
            self.check(f"cut: exit code {code}", code in (66, 0))
            self.check("cut: the old file is gone", code == 0 or self.content() == self.old)
            self.check("cut: a temporary is left", not self.strays())
        return f"{noticed} inputs cut short were noticed"

    def limits(self):
        """A limit on file sizes, at every 4 KiB of a file of 1 MB."""
        arguments = [self.grey, self.target]
        full = 0
        for limit in range(0, SIZE + 3 * STEP, STEP):
            self.put_old()
            process = self.start(*arguments, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
            code = process.wait()
            full += code == 74
            self.check(f"limit {limit}: exit code {code}", code == (74 if limit < SIZE + 186 else 0))
            self.check(f"limit {limit}: the old file is gone", code == 0 or self.content() == self.old)
            self.check(f"limit {limit}: a temporary is left", not self.strays())
        return f"{full} sizes at which a limit was hit"

    def full_disk(self):
        """The same on a small disk that is really full; inside a namespace that may mount one."""
        inside = subprocess.run(["unshare", "--user", "--map-root-user", "--mount", sys.executable,
                                 os.path.abspath(__file__), "--inside", self.folder, "--program", self.program],
                                capture_output=True, text=True)
        last = inside.stdout.strip().splitlines()[-1:] or [""]
        if not last[0].startswith("disk:"):
            return "no full disk: a small one cannot be mounted here"
        print("".join(line + "\n" for line in inside.stdout.splitlines() if line.startswith("FAILED")), end="")
        _, passed, failed = last[0].split()
        self.passed += int(passed)
        self.failed += int(failed)
        return f"{passed} checks on a full disk"


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


def inside(folder, program):
    """In a namespace of our own: a disk of 1.2 MB, with less and less room on it."""
    disk = os.path.join(folder, "disk")
    os.makedirs(disk, exist_ok=True)
    room = SIZE + 50 * STEP
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={room}", "none", disk], check=True)
    tried = Endurance(program, os.path.dirname(program), disk)
    os.unlink(tried.grey)  # the picture lies outside
    picture = os.path.join(folder, "grey.pgm")
    filler = os.path.join(disk, "filler")
    for free in range(0, SIZE + 4 * STEP, STEP):
        if os.path.exists(filler):
            os.unlink(filler)
        tried.put_old()
        about = os.statvfs(disk)
        with open(filler, "wb") as out:
            out.write(bytes(max(0, about.f_bavail * about.f_bsize - free)))
        code = tried.start(picture, tried.target).wait()
        enough = free >= SIZE + STEP  # 186 bytes of header take a block of their own
        tried.check(f"disk with {free} bytes: exit code {code}", code == (0 if enough else 74) or (code == 73 and free == 0))
        tried.check(f"disk with {free} bytes: the old file is gone", code == 0 or tried.content() == tried.old)
        tried.check(f"disk with {free} bytes: a temporary is left", not tried.strays())
    print("disk:", tried.passed, tried.failed)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build")
    arguments.add_argument("--source")
    arguments.add_argument("--inside")
    arguments.add_argument("--program")
    wanted = arguments.parse_args()
    if wanted.inside:
        inside(wanted.inside, wanted.program)
        return 0
    program = os.path.join(os.path.realpath(wanted.build), "raxel-export")
    with tempfile.TemporaryDirectory(prefix="raxel-endure-") as folder:
        tried = Endurance(program, os.path.realpath(wanted.source), folder)
        for step in (tried.kills, tried.orphans, tried.interrupts, tried.slow_disk, tried.cuts, tried.limits, tried.full_disk):
            print(step())
    print(f"endure: {tried.passed} passed, {tried.failed} failed")
    return 1 if tried.failed else 0


if __name__ == "__main__":
    sys.exit(main())
