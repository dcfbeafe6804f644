#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Pictures of every format that are as their headers say, or wrong in one place: each is read or refused with a sentence,
soon and with memory in proportion; what is written does not depend on what the memory held before, or on where the decoder
works, and has the size that was announced.

    structured.py --build FOLDER --source FOLDER [--only FORMAT] [--number N] [--seed S] [--keep FOLDER]

The same seed makes the same files. Files that a fault was found with are put into --keep.
"""

import argparse
import concurrent.futures
import io
import json
import os
import subprocess
import sys
import tempfile

from PIL import Image

sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), "../cli"))

import pictures  # noqa: E402
import shared  # noqa: E402

READ, REFUSED = os.EX_OK, os.EX_NOINPUT
FILLS = (90, 165)  # which malloc puts into new blocks
CONFINED = 4  # of them one goes through a decoder's child as well
HANG = 60  # seconds
# What an export takes by itself, and for each byte of the file and of the picture as bytes of colours.
MEMORY, MEMORY_EACH = 96 << 20, 8
SECONDS, SECONDS_EACH = 1.5, 4e-6
LARGEST = 1 << 24  # pixels of a picture that a file may announce and still be worth its memory
LEAST, FEW = 0.5, 40  # of the sound files of a format, where there are more than a few, are read


class Run:
    """One call of the command: what it ended with, said, used and wrote."""

    def __init__(self, program, path, out, options, fill=None):
        environment = {name: value for name, value in os.environ.items() if name != "GLIBC_TUNABLES"}
        if fill is not None:
            environment["GLIBC_TUNABLES"] = f"glibc.malloc.perturb={fill}:glibc.malloc.tcache_count=0"
        command = ["timeout", "-s", "KILL", str(HANG), program, "-q", "--no-sync", *options, "-m", "rgb", "-c", "none", path, out]
        process = subprocess.Popen(command, stderr=subprocess.PIPE, env=environment)
        with process.stderr:
            self.said = process.stderr.read().decode(errors="replace").strip()
        _, status, used = os.wait4(process.pid, 0)
        self.code = process.returncode = os.waitstatus_to_exitcode(status)
        self.memory, self.seconds = used.ru_maxrss << 10, used.ru_utime + used.ru_stime
        self.written = b""
        if os.path.exists(out):
            with open(out, "rb") as file:
                self.written = file.read()
            os.unlink(out)


def size_of(written):
    """As Pillow sees it, or what it says instead."""
    try:
        with Image.open(io.BytesIO(written)) as image:
            image.load()
            return image.size
    except (OSError, ValueError, SyntaxError) as error:
        return f"no picture: {error}"


def sizes(drawn):
    """Which the output may have: below an odd last row it stands once more."""
    found = [drawn.size, drawn.size[::-1] if drawn.turned else drawn.size]
    return [(width, height + height % 2) for width, height in found]


class Structured:
    def __init__(self, program, folder, seed, keep):
        self.program, self.folder, self.seed, self.keep = program, folder, seed, keep
        # The sanitizers have a malloc of their own, which takes more.
        self.sanitized = shared.sanitized(program)

    def one(self, form, number):
        """Whether the file was read, whether it should have been, the checks that were made and what they found."""
        drawn = pictures.draw(pictures.FORMATS[form], f"{self.seed} {form} {number}")
        path, out = os.path.join(self.folder, f"{form}-{self.seed}-{number}.{form}"), os.path.join(self.folder, f"{form}-{number}-out.tif")
        with open(path, "wb") as file:
            file.write(drawn.data)
        found, checks = [], 0

        def check(holds, what):
            nonlocal checks
            checks += 1
            if not holds:
                found.append(f"{os.path.basename(path)} ({drawn.what}): {what}")

        first = self.run(path, out, check, drawn, ["--no-sandbox"], FILLS[0])
        second = self.run(path, out, check, drawn, ["--no-sandbox"], FILLS[1])
        check((first.code, first.written) == (second.code, second.written), f"shows what the memory held: {self.difference(first, second)}")
        if number % CONFINED == 0:
            child = self.run(path, out, check, drawn, [], None)
            check((first.code, first.written) == (child.code, child.written),
                  f"a decoder's child sees something else: {self.difference(first, child)}")
        if first.code == READ:
            seen = size_of(first.written)
            check(not isinstance(seen, str) and (not drawn.size or seen in sizes(drawn)), f"is {seen} instead of {drawn.size}")
        if found and self.keep:
            os.makedirs(self.keep, exist_ok=True)
            with open(os.path.join(self.keep, os.path.basename(path)), "wb") as file:
                file.write(drawn.data)
        os.unlink(path)
        return first.code == READ, drawn.sound, checks, found

    def run(self, path, out, check, drawn, options, fill):
        run = Run(self.program, path, out, options, fill)
        check(run.code in (READ, REFUSED), f"ends with {run.code}, says {run.said[-200:]!r}")
        check(bool(run.written) == (run.code == READ), f"ends with {run.code}, and the output is {'there' if run.written else 'not there'}")
        if run.code == REFUSED:
            check(os.path.basename(path) in run.said and len(run.said.split(": ", 2)[-1]) > 4, f"says {run.said[-200:]!r}")
        if not self.sanitized:
            announced = max(0, drawn.size[0]) * max(0, drawn.size[1]) if drawn.size else 0
            amount = len(drawn.data) + max(3 * min(announced, LARGEST), len(run.written))
            most = MEMORY + MEMORY_EACH * amount
            # What is filled is in use, whether the command writes there or not.
            taken = run.memory if fill is None or run.memory <= most else Run(self.program, path, out, options).memory
            check(taken <= most, f"takes {taken >> 20} MiB, for {amount} bytes")
            check(run.seconds <= SECONDS + SECONDS_EACH * amount, f"takes {run.seconds:.1f} s, for {amount} bytes")
        return run

    @staticmethod
    def difference(run, other):
        if run.code != other.code:
            return f"{run.code} and {other.code}, {run.said[-100:]!r} and {other.said[-100:]!r}"
        differ = [at for at, pair in enumerate(zip(run.written, other.written)) if pair[0] != pair[1]]
        return f"{len(differ)} of {len(run.written)} and {len(other.written)} bytes, from {differ[:1]} on"


def main():
    arguments = argparse.ArgumentParser(add_help=False)
    arguments.add_argument("--only", choices=list(pictures.FORMATS))
    arguments.add_argument("--number", type=int, default=400)
    arguments.add_argument("--seed", type=int, default=7)
    arguments.add_argument("--keep")
    wanted, sys.argv[1:] = arguments.parse_known_args()
    _, _, program = shared.places()
    shared.take_signals()
    faults, figure, checks = [], {"files": 0, "read": 0, "refused": 0}, 0
    with tempfile.TemporaryDirectory(prefix="raxel-structured-", dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as folder:
        tried = Structured(program, folder, wanted.seed, wanted.keep)
        for form in [wanted.only] if wanted.only else pictures.FORMATS:
            with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as threads:
                done = list(threads.map(lambda number, form=form: tried.one(form, number), range(wanted.number)))
            read, sound = sum(was for was, *_ in done), [was for was, is_sound, *_ in done if is_sound]
            found = [fault for *_, told in done for fault in told]
            checks += sum(count for *_, count, _ in done) + 1
            if len(sound) > FEW and sum(sound) < LEAST * len(sound):
                found.append(f"{form}: of {len(sound)} sound files {sum(sound)} are read")
            print(f"{form}: {len(done)} files, {read} read, {sum(sound)} of {len(sound)} sound ones, {len(found)} faults", flush=True)
            faults += found
            for name, count in (("files", len(done)), ("read", read), ("refused", len(done) - read)):
                figure[name] += count
    print(json.dumps(figure))
    return shared.tell(faults, f"structured: {checks - len(faults)} passed, {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
