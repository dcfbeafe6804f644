#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Where numbers of the library wrap, lose bits, change their value or are divided by zero, while the unit tests run.

    integers.py --source FOLDER [--build FOLDER] [--work FOLDER]
    integers.py --source FOLDER --check

Builds the unit tests with clang and its checks of integers, most of which are of what the language defines: numbers
without a sign wrap, and a double divided by zero is infinite. Each place is to be one of those in integers.txt, a line
each with the reason: FILE | TEXT OF THE LINE | REASON. What the language does not define has no reason. Answers 77 where
clang is not there. --check tells which rows are about a line that is no more.
"""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys

import coverage

CHECKS = "integer,undefined,float-divide-by-zero"
FLAGS = f"-O1 -g1 -fsanitize={CHECKS}"
REPORT = re.compile(r"^(\S+?):(\d+):\d+: runtime error: (.*)$", re.MULTILINE)
LIST = "integers.txt"
DEFINED = re.compile(r"unsigned integer overflow|left shift of \d+ by \d+ places cannot be represented in type '(uint|unsigned)|"
                     r"implicit conversion|negation of \d+|division by zero")


def build(source, folder):
    """Whether the tests were built; if not, their compiler's words are printed."""
    configure = ["cmake", "-S", source, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_COMPILER=clang++",
                 "-DCMAKE_C_COMPILER=clang", f"-DCMAKE_CXX_FLAGS_RELEASE={FLAGS}", "-DRAXEL_HOST=OFF", "-DRAXEL_TESTS=ON", "-DRAXEL_WERROR=OFF"]
    for command in (configure, ["cmake", "--build", folder, "--target", "raxel_tests"]):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            print(done.stdout[-3000:])
            return False
    return True


def places(source, folder, said):
    """What was told of the library's own lines, by file and the text of the line."""
    found = {}
    for path, number, what in REPORT.findall(said):
        name = os.path.relpath(os.path.join(folder, path), source)
        if name.split("/")[0] in ("src", "include"):
            with open(os.path.join(source, name), encoding="utf-8") as text:
                found.setdefault((name, text.read().splitlines()[int(number) - 1].strip()), []).append(what)
    return found


def check(source, known):
    """Which rows are about nothing that there is."""
    stale = 0
    for path, text in sorted(known):
        try:
            with open(os.path.join(source, path), encoding="utf-8") as file:
                there = text in map(str.strip, file)
        except FileNotFoundError:
            there = False
        if not there:
            print(f"{LIST}: {path} has no such line: {text}")
            stale += 1
    return 1 if stale else 0


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--source", required=True)
    arguments.add_argument("--build", help="not looked at: all is built anew")
    arguments.add_argument("--work")
    arguments.add_argument("--check", action="store_true")
    wanted = arguments.parse_args()
    source = os.path.realpath(wanted.source)
    known = coverage.reasons(LIST)
    if wanted.check:
        return check(source, known)
    folder = os.path.realpath(wanted.work or os.path.join(source, "build/campaign/integers"))
    if shutil.which("clang++") is None:
        print("integers: clang is not installed")
        return 77
    if not build(source, folder):
        print("integers: 0 passed, 1 failed")
        return 1
    # Tests that end a process do so in a copy of it, whose reports would come once more.
    ran = subprocess.run([os.path.join(folder, "raxel_tests"), "--gtest_filter=-*DeathTest*"], cwd=folder, stdout=subprocess.PIPE,
                         stderr=subprocess.PIPE, text=True, errors="replace", env=dict(os.environ, RAXEL_CASES="1"))
    passed = re.search(r"\[  PASSED  \] (\d+) test", ran.stdout)
    found = places(source, folder, ran.stderr)
    unknown = 0
    for place, what in sorted(found.items()):
        if place not in known or not all(map(DEFINED.match, what)):
            print(f"{': '.join(place)}\n    " + "\n    ".join(what))
            unknown += 1
    for path, text in sorted(set(known) - set(found)):
        print(f"{LIST}: {path} tells of nothing: {text}")
    print(json.dumps({"unit tests": int(passed[1]) if passed else 0, "places with a reason": len(found) - unknown}))
    fine = ran.returncode == 0 and passed
    print(f"integers: {len(found) - unknown + bool(fine)} passed, {unknown + (not fine)} failed")
    return 0 if fine and unknown == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
