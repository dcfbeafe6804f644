#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Golden files from every compiler, optimisation and machine at hand, with one thread and with several.

    golden.py --source FOLDER [--build FOLDER] [WAY...]

Builds `raxel_golden_files` (tests/golden) under build/campaign/golden in each way, or in those named, and compares what it
makes with tests/golden/files.txt, each file for each number of threads. Answers 77 where a way's compiler, processor or
emulator is not there.
"""

import argparse
import json
import os
import re
import shutil
import subprocess
import sys

THREADS = (1, 2, 3, 4, 8)
LEVELS = ("-O0", "-O1", "-O2", "-O3")
# With products and sums in one instruction, which would round once instead of twice.
FUSED = "-O3 -march=x86-64-v3"
NATIVE = {"gcc": "g++", "clang": "clang++"}
MACHINES = {"i686": [], "powerpc": ["qemu-ppc", "-L", "/usr/powerpc-linux-gnu"]}


def all_ways():
    """Name to what it needs, the arguments of CMake, what runs the program, and the flags."""
    found = {}
    for compiler, cxx in NATIVE.items():
        for level in LEVELS:
            found[compiler + level] = [cxx], [f"-DCMAKE_CXX_COMPILER={cxx}", f"-DCMAKE_C_COMPILER={compiler}"], [], level
        found[compiler + "-fused"] = *found[compiler + LEVELS[-1]][:3], FUSED
    for machine, run in MACHINES.items():
        for level in LEVELS:
            found[machine + level] = [f"{machine}-linux-gnu-g++", *run[:1]], ["--preset", machine], run, level
    return found


def is_missing(needs, flags):
    for program in needs:
        if shutil.which(program) is None:
            return f"{program} is not installed"
    with open("/proc/cpuinfo") as file:
        has = re.search(r"^flags\s*:(.*)$", file.read(), re.MULTILINE)
    if flags == FUSED and not (has and {"fma", "avx2", "bmi2"} <= set(has[1].split())):
        return "this processor has no fused products"
    return None


def build(source, folder, arguments, flags):
    """The program, or None where it does not build; then its output has been printed."""
    configure = ["cmake", "-S", source, "-B", folder, "-G", "Ninja", *arguments, "-DCMAKE_BUILD_TYPE=Release",
                 f"-DCMAKE_CXX_FLAGS_RELEASE={flags}", "-DRAXEL_HOST=OFF", "-DRAXEL_TESTS=ON"]
    # As in CI: no compiler cache, and several sources at a time.
    environment = dict(os.environ, CI="1")
    for command in (configure, ["cmake", "--build", folder, "-j", "2", "--target", "raxel_golden_files"]):
        done = subprocess.run(command, cwd=source, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            print(done.stdout[-3000:])
            return None
    return os.path.join(folder, "raxel_golden_files")


def compare(command, threads):
    """How many files are as listed, and how many are not."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          env=dict(os.environ, RAXEL_TEST_THREADS=str(threads)))
    said = re.search(r"^golden: (\d+) passed, (\d+) failed$", done.stdout, re.MULTILINE)
    if done.returncode == 0 and said and said[2] == "0":
        return int(said[1]), 0
    print("\n".join(done.stdout.splitlines()[:20]))
    return (int(said[1]), max(1, int(said[2]))) if said else (0, 1)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--source", required=True)
    arguments.add_argument("--build", help="not looked at: all is built anew")
    arguments.add_argument("ways", metavar="WAY", nargs="*", help=", ".join(all_ways()))
    wanted = arguments.parse_args()
    source = os.path.realpath(wanted.source)
    passed = failed = builds = missing = 0
    for way in wanted.ways or all_ways():
        needs, how, run, flags = all_ways()[way]
        if why := is_missing(needs, flags):
            print(f"{way}: {why}")
            missing += 1
            continue
        folder = os.path.join(source, "build/campaign/golden", way)
        shutil.rmtree(folder, ignore_errors=True)
        program = build(source, folder, how, flags)
        if program is None:
            print(f"{way}: does not build", flush=True)
            failed += 1
            continue
        builds += 1
        for threads in THREADS:
            fine, bad = compare([*run, program, "--compare", os.path.join(source, "tests/golden/files.txt")], threads)
            passed, failed = passed + fine, failed + bad
            print(f"{way}, {threads} threads: {fine} equal, {bad} not", flush=True)
        shutil.rmtree(folder)
    print(json.dumps({"builds": builds}))
    print(f"golden: {passed} passed, {failed} failed")
    if missing and not failed:
        return 77
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
