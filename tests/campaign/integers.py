#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Where numbers of the library and its hosts wrap, lose bits, change their value or are divided by zero, while the tests run.

    integers.py --source FOLDER [--build FOLDER] [--work FOLDER]
    integers.py --source FOLDER --check

Builds everything with clang and its checks of integers, most of which are of what the language defines: numbers
without a sign wrap, and a double divided by zero is infinite. Each place is to be one of those in integers.txt, a line
each with the reason: FILE | TEXT OF THE LINE | REASON. What the language does not define has no reason. Answers 77 where
clang is not there. --check tells which rows are about a line that is no more.

Each process tells of its places in a file of its own. A decoder in its child can open none: where it would tell of
a place it ends, and the test with it.
"""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys

import coverage

# Of an older kind of line numbers, which valgrind reads.
FLAGS = "-O1 -gline-tables-only -gdwarf-4"
# What runs the library, the hosts, the command or Python's binding...
TESTS = "^(unit-|library-(library|hostile|linked)|host|quantize|cli-|example-|python-|fuzz-)"
# ...but what counts their calls or leaves them little memory, in which the checks take part.
BUT = "^(host-api-memory|cli-faults|cli-steps)$"
PATIENCE = 1800  # seconds
REPORT = re.compile(r"^(\S+?):(\d+):\d+: runtime error: (.*)$", re.MULTILINE)
LIST = "integers.txt"
DEFINED = re.compile(r"unsigned integer overflow|left shift of \d+ by \d+ places cannot be represented in type '(uint|unsigned)|"
                     r"implicit conversion|negation of \d+|division by zero")


def build(source, folder):
    """Whether all was built; if not, the compiler's words are printed."""
    configure = ["cmake", "-S", source, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_COMPILER=clang++",
                 "-DCMAKE_C_COMPILER=clang", f"-DCMAKE_CXX_FLAGS_RELEASE={FLAGS}", f"-DCMAKE_C_FLAGS_RELEASE={FLAGS}",
                 "-DRAXEL_INTEGERS=ON", "-DRAXEL_TESTS=ON", "-DRAXEL_WERROR=OFF"]
    for command in (configure, ["cmake", "--build", folder]):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            print(done.stdout[-3000:])
            return False
    return True


def run(folder):
    """How many entries passed and failed, and all that the processes told of."""
    told = os.path.join(folder, "told")
    shutil.rmtree(told, ignore_errors=True)
    os.makedirs(told)
    ran = subprocess.run(["ctest", "--test-dir", folder, "--parallel", str(os.cpu_count()), "--timeout", str(PATIENCE), "--no-tests=error",
                          "--output-on-failure", "-R", TESTS, "-E", BUT], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                         errors="replace", env=dict(os.environ, RAXEL_CASES="1", UBSAN_OPTIONS=f"log_path={told}/process"))
    counted = re.search(r"(\d+) tests failed out of (\d+)", ran.stdout)
    failed, entries = (int(counted[1]), int(counted[2])) if counted else (1, 1)
    if failed or ran.returncode:
        print(ran.stdout[-10000:])
    said = []
    for name in os.listdir(told):
        with open(os.path.join(told, name), encoding="utf-8", errors="replace") as file:
            said.append(file.read())
    return entries - failed, failed or int(ran.returncode != 0), "".join(said)


def places(source, folder, said):
    """What was told of the project's own lines, by file and the text of the line."""
    found = {}
    for path, number, what in REPORT.findall(said):
        name = os.path.relpath(os.path.join(folder, path), source)
        if name.split("/")[0] in ("src", "include", "host"):
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
    passed, failed, said = run(folder)
    found = places(source, folder, said)
    unknown = 0
    for place, what in sorted(found.items()):
        if place not in known or not all(map(DEFINED.match, what)):
            print(f"{': '.join(place)}\n    " + "\n    ".join(what))
            unknown += 1
    for path, text in sorted(set(known) - set(found)):
        print(f"{LIST}: {path} tells of nothing: {text}")
    print(json.dumps({"entries": passed, "places with a reason": len(found) - unknown}))
    print(f"integers: {len(found) - unknown + passed} passed, {unknown + failed} failed")
    return 0 if failed == 0 and unknown == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
