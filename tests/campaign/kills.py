#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A thousand kills each, at random instants of an export, of a job of fifty pages, and of a profile's rewriting.

    kills.py --build FOLDER --source FOLDER [--only export|fifty|profile] [--kills N] [--seed S]

Takes minutes, and is not among the tests that every change runs: tests/cli has 200 kills, and one at each step.
"""

import argparse
import collections
import json
import os
import random
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), "../cli"))

import shared  # noqa: E402
from processes import Replaced  # noqa: E402


class Campaign(Replaced):
    def __init__(self, program, source, folder, kills, seed):
        super().__init__(program, folder)
        self.sample = os.path.join(source, "samples/photo.png")
        self.number = kills
        self.rng = random.Random(seed)

    def kill_often(self, what, arguments, prepare, path, states):
        """`states` has a name for each content that the file may have, in the order in which they come."""
        counts = collections.Counter()
        longest = 0.1
        last = list(states.values())[-1]
        for _ in range(self.number):
            prepare()
            process = self.start(*arguments)
            time.sleep(self.rng.uniform(0, longest))
            process.kill()
            with open(path, "rb") as file:
                seen = file.read()
            state = states.get(seen)
            self.check(f"{what}: the file", state is not None, f"{len(seen)} bytes that begin with {seen[:16]!r}")
            counts[state or "neither"] += 1
            counts["with a temporary"] += bool(self.strays())
            longest *= 0.93 if state == last else 1.03
        return {"kills": self.number, **counts}

    def outputs(self, what, arguments):
        self.put_old()
        process = self.start(*arguments)
        self.check(f"{what}: undisturbed", process.end() == 0, process)
        states = {self.old: "old", self.content(): "new"}
        told = self.kill_often(what, arguments, self.put_old, self.target, states)
        process = self.start(*arguments)
        self.check(f"{what}: the next run", process.end() == 0 and not self.strays(), f"{self.strays()}; {process.told()}")
        return told

    def export(self):
        return self.outputs("export", [self.sample, self.target, "-c", "lzw"])

    def fifty(self):
        return self.outputs("fifty pages", self.pages())

    def profile(self):
        """A section without a driver gets one, and then the setting: two rewritings of a long file."""
        path = os.path.join(self.folder, "own.ini")
        others = b"".join(b"[other %d]\r\nDriver=RAXEL.1\r\nKey=%d\r\n" % (i, i) for i in range(2000))
        old = others + b"[S]\r\nKey=1\r\n"
        driver = old + b"Driver=RAXEL.1\r\n"
        states = {old: "old", driver: "with the driver", driver + b"Compression Mode=227\r\n": "new"}

        def prepare():
            with open(path, "wb") as out:
                out.write(old)

        page = self.pages()[0]
        arguments = [page, self.target, "--profile", path, "--section", "S", "--save", "-c", "lzw"]
        told = self.kill_often("profile", arguments, prepare, path, states)
        prepare()
        process = self.start(*arguments)
        self.check("profile: the next run", process.end() == 0 and not self.strays(), f"{self.strays()}; {process.told()}")
        return told


def main():
    arguments = argparse.ArgumentParser(add_help=False)
    arguments.add_argument("--only", choices=("export", "fifty", "profile"))
    arguments.add_argument("--kills", type=int, default=1000)
    arguments.add_argument("--seed", type=int, default=7)
    wanted, sys.argv[1:] = arguments.parse_known_args()
    _, source, program = shared.places()
    shared.take_signals()
    with tempfile.TemporaryDirectory(prefix="raxel-kills-") as folder:
        tried = Campaign(program, source, folder, wanted.kills, wanted.seed)
        for step in (tried.export, tried.fifty, tried.profile):
            if wanted.only in (None, step.__name__):
                print(f"{step.__name__}:", flush=True)
                print(json.dumps(step()), flush=True)
    return shared.tell(tried.faults, f"kills: {tried.checks - len(tried.faults)} passed, {len(tried.faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
