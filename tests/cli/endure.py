#!/usr/bin/python3
# SPDX-License-Identifier: MIT
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
import traceback

import shared
from processes import HANG, Replaced, is_running, running, until

KILLS = 200
STEP = 4096
SIZE = 1 << 20  # of the file that the full disk is tried on


class Endurance(Replaced):
    def __init__(self, program, source, folder):
        super().__init__(program, folder)
        self.sample = os.path.join(source, "samples/photo.png")
        # The sanitizers take ten times as long to start.
        self.sparse = 8 if self.sanitized else 1
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

    def kills(self):
        """kill -9 at random instants of an export and a little beyond."""
        arguments = [self.sample, self.target, "-c", "lzw"]
        self.start(*arguments).end()
        whole = self.content()
        rng, kills = random.Random(3), KILLS // self.sparse
        left_behind = replaced = 0
        longest = 0.1
        for _ in range(kills):
            self.put_old()
            process = self.start(*arguments)
            time.sleep(rng.uniform(0, longest))
            process.kill()
            seen = self.content()
            left_behind += bool(self.strays())
            replaced += seen == whole
            # However fast the machine is just now, some three in four are to come in time, and not all too soon.
            longest *= 0.9 if seen == whole else 1.035 if left_behind else 1.2
            self.check("kill: the file is neither the old nor the new one", seen in (self.old, whole),
                       f"{len(seen)} bytes that begin with {seen[:16]!r}")
        self.check("kill: too few came in time", replaced < kills / 2 and left_behind > 0,
                   f"{replaced} of {kills} came too late, {left_behind} left a temporary, the last within {longest:.4f} s")
        process = self.start(*arguments)
        self.check("kill: the next run", process.end() == 0 and self.content() == whole, process)
        self.check("kill: a temporary is left by the next run", not self.strays(), self.strays())
        return f"{kills} kills: {left_behind} left a temporary, {replaced} came too late"

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
        family = running(process.pid)
        self.check("orphans: three children and their parent", len(family) == 4, family)
        process.kill()
        until(lambda: not running(process.pid))
        alive = running(process.pid)
        self.check("orphans: they are at work", not alive, alive)
        for pid in alive:
            os.kill(pid, signal.SIGKILL)
        for writer in writers:
            os.close(writer)
        with open(os.path.join(to, ".other.tif.raxel-4"), "wb") as stray:
            stray.write(b"half")
        process = self.start(self.sample, os.path.join(to, "new.tif"))
        self.check("orphans: the next run", process.end() == 0, process)
        self.check("orphans: a temporary is left by the next run", not self.strays(to), self.strays(to))
        for path in pipes:
            os.unlink(path)
        return f"{len(alive)} orphans"

    def stopped(self, number, delay, by):
        """An export that a signal ends after a while: how long it went on, and with how much work. None when it was faster."""
        self.put_old()
        process = self.start(self.large, self.target, "-m", "color256" if number % 2 else "rgb", "-c", "lzw")
        time.sleep(delay)
        if process.has_ended():
            return None
        work = process.work()
        begin = time.monotonic()
        process.send(by)
        code = process.end()
        took = time.monotonic() - begin
        if by == signal.SIGINT:
            # It may have come before the handlers were there, or after all was done.
            self.check("interrupt: the exit code", code in (130, -signal.SIGINT, 0), process)
            self.kept("interrupt", process)
        return took, process.cpu - work

    def interrupts(self):
        """Ctrl-C ends an export within 100 ms of what the system itself takes for it, and leaves nothing behind."""
        self.large = self.big("big.ppm")
        soon = 2 if self.sanitized else 0.1
        slowest = most = 0
        for number, delay in enumerate((0.01, 0.02, 0.04, 0.06, 0.08, 0.1, 0.15, 0.2, 0.25, 0.3)):
            tries = []
            # Others on the machine may hold up any one of them, and do not work in its name.
            while len(tries) < 6:
                plain = self.stopped(number, delay, signal.SIGKILL)
                # What a kill leaves, a child that waits for the disk may hold for a while.
                for name in self.strays():
                    os.unlink(os.path.join(self.folder, name))
                mine = self.stopped(number, delay, signal.SIGINT)
                if plain is None or mine is None:
                    break
                tries.append((mine[0] - plain[0], mine[1]))
                if max(tries[-1]) < soon:
                    break
            if tries:
                slowest = max(slowest, tries[-1][0])
                most = max(most, tries[-1][1])
                self.check(f"interrupt: slow after {delay} s", max(tries[-1]) < soon,
                           "seconds above a kill, and of work, in each try: " + str([(round(a, 3), round(b, 3)) for a, b in tries]))
        return f"interrupts took at most {slowest * 1000:.0f} ms longer than a kill, and {most * 1000:.0f} ms of work"

    def slow_disk(self):
        """Ctrl-C while the disk takes its time."""
        if self.sanitized:
            return "no slow disk: nothing can be loaded before the sanitizers"
        big = self.big("big.ppm")
        gates = os.path.join(self.folder, "gates")
        os.makedirs(gates, exist_ok=True)
        slow = dict(os.environ, RAXEL_SLOW_DISK=gates,
                    LD_PRELOAD=os.path.join(os.path.dirname(self.program), "tests/cli/libslow_disk.so"))

        def waiting():
            return sorted(map(int, os.listdir(gates)))

        def start_until_disk():
            """The picture's process and the one that waits for its disk."""
            before = waiting()
            process = self.start(big, self.target, env=slow)
            until(lambda: process.has_ended() or len(waiting()) > len(before))
            new = [pid for pid in waiting() if pid not in before]
            self.check("slow disk: it is not waited for", len(new) == 1 and not process.has_ended() and self.content() == self.old,
                       f"{new} wait; {process.told()}")
            return process, new

        def written(pids):
            for pid in pids:
                os.unlink(os.path.join(gates, str(pid)))
            until(lambda: not any(is_running(pid) for pid in pids))

        self.put_old()
        process, disk = start_until_disk()
        work = process.work()
        process.send(signal.SIGINT)
        code = process.end(HANG)
        work = process.cpu - work
        self.check("slow disk: a stop that waits for it", code == 130 and work < 0.1, f"{work:.3f} s of work; {process.told()}")
        self.kept("slow disk", process)
        written(disk)

        # A killed one leaves a child behind that waits, with the temporary, which another run does not touch.
        process, disk = start_until_disk()
        process.kill()
        self.check("slow disk: the old file is gone after a kill", self.content() == self.old, process)
        self.check("slow disk: the temporary of a kill", len(self.strays()) == 1, self.strays())
        process, own = start_until_disk()
        self.check("slow disk: a temporary that somebody holds", len(self.strays()) == 2, self.strays())
        written(disk)
        written(own)
        self.check("slow disk: the next run", process.end(HANG) == 0 and self.content() != self.old, process)
        self.check("slow disk: a temporary is left by the next run", not self.strays(), self.strays())

        self.put_old()
        process = self.start("--no-sync", big, self.target, env=slow)
        process.end(HANG)
        self.check("slow disk: --no-sync waits", process.code == 0 and not waiting() and self.content() != self.old,
                   f"{waiting()} wait; {process.told()}")
        written(waiting())
        return f"a stop while the disk was writing took {work * 1000:.0f} ms of work"

    def cuts(self):
        """Somebody cuts the input short while it is read where it lies."""
        noticed = 0
        for tenths in range(20):
            cut = self.big("cut.ppm")
            self.put_old()
            process = self.start(cut, self.target, "-m", "color256")
            until(lambda: process.has_ended() or process.maps(cut))
            begin = process.work()
            until(lambda: process.has_ended() or process.work() - begin >= tenths % 5 * 0.03)
            os.truncate(cut, 100)
            code = process.end()
            noticed += code == 66
            self.check("cut: the exit code", code in (66, 0), process)
            self.check("cut: what it says", code != 66 or process.said().startswith(f"raxel-export: {cut}"), process)
            self.kept("cut", process)
            if tenths >= 4 and noticed:
                break
        self.check("cut: none was noticed", noticed > 0)
        return f"{noticed} inputs cut short were noticed"

    def jobs(self):
        """What a disk gets too small for: name, arguments, bytes of the file and what to vary the room by."""
        made = []
        for name, arguments, step in (("picture", [self.grey, self.target], STEP), ("pages", self.pages(), 700)):
            self.put_old()
            process = self.start(*arguments)
            self.check(f"{name}: with room enough", process.end() == 0 and self.content() != self.old, process)
            made.append((name, arguments, os.path.getsize(self.target), step * self.sparse))
        return made

    def limits(self):
        """A limit on file sizes, at every 4 KiB of a file of 1 MB, and within every page of fifty."""
        full = 0
        for name, arguments, size, step in self.jobs():
            for limit in [*range(0, size, step), size - 1, size]:
                self.put_old()
                process = self.start(*arguments, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
                code = process.end()
                full += code == 74
                self.check(f"{name}, limit {limit}: the exit code", code == (74 if limit < size else 0), process)
                self.kept(f"{name}, limit {limit}", process)
        return f"{full} sizes at which a limit was hit"

    def full_disk(self):
        """The same on a small disk that is really full; inside a namespace that may mount one."""
        done = subprocess.run(["unshare", "--user", "--map-root-user", "--mount", sys.executable,
                               os.path.abspath(__file__), "--inside", self.folder, "--program", self.program],
                              capture_output=True, text=True)
        *faults, last = done.stdout.strip().splitlines() or [""]
        if not last.startswith("disk:"):
            print('{"checks on a full tmpfs": 0}')
            return f"no full disk: a small one cannot be mounted here: {done.stderr.strip()[-300:]}"
        self.checks += int(last.split()[1])
        self.faults += faults
        print(f'{{"checks on a full tmpfs": {last.split()[1]}}}')
        return f"{last.split()[1]} checks on a full disk"


def inside(folder, program):
    """In a namespace of our own: a disk of 1.2 MB, with less and less room on it."""
    disk = os.path.join(folder, "disk")
    os.makedirs(disk, exist_ok=True)
    room = SIZE + 50 * STEP
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={room}", "none", disk], check=True)
    outside = Endurance(program, os.path.dirname(program), folder)
    tried = Replaced(program, disk)
    filler = os.path.join(disk, "filler")
    for name, arguments, size, _ in outside.jobs():
        arguments = [tried.target if each == outside.target else each for each in arguments]
        blocks = -(-size // STEP)  # the last one is not full, and takes as much
        for free in [*range(0, (blocks - 1) * STEP, STEP * outside.sparse), *range((blocks - 1) * STEP, (blocks + 3) * STEP, STEP)]:
            if os.path.exists(filler):
                os.unlink(filler)
            tried.put_old()
            about = os.statvfs(disk)
            with open(filler, "wb") as out:
                out.write(bytes(max(0, about.f_bavail * about.f_bsize - free)))
            process = tried.start(*arguments)
            code = process.end()
            enough = free >= blocks * STEP
            tried.check(f"{name}, disk with {free} bytes: the exit code", code == (0 if enough else 74) or (code == 73 and free == 0), process)
            tried.kept(f"{name}, disk with {free} bytes", process)
    for fault in tried.faults:
        print(fault)
    print("disk:", tried.checks)


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
    shared.take_signals()
    program = os.path.join(os.path.realpath(wanted.build), "raxel-export")
    with tempfile.TemporaryDirectory(prefix="raxel-endure-") as folder:
        tried = Endurance(program, os.path.realpath(wanted.source), folder)
        for step in (tried.kills, tried.orphans, tried.interrupts, tried.slow_disk, tried.cuts, tried.limits, tried.full_disk):
            begin = time.monotonic()
            try:
                print(f"{step()} ({time.monotonic() - begin:.1f} s)")
            except Exception:  # the other steps have something to tell as well
                tried.check(step.__name__, False, traceback.format_exc(limit=-2))
    return shared.tell(tried.faults, f"endure: {tried.checks - len(tried.faults)} passed, {len(tried.faults)} failed; "
                       f"load {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    sys.exit(main())
