#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Golden files from every compiler, optimisation and machine at hand, with one thread and with several.

    golden.py --source FOLDER [--build FOLDER] [--only NAME]

Builds `raxel_golden_files` (tests/golden) under build/campaign/golden, a folder for each way, and compares what it makes
with tests/golden/files.txt, each file for each number of threads. A compiler that is not installed is told of.
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
# name, compiler that it needs, arguments of CMake, what runs the program, flags
NATIVE = [(compiler, compiler, [f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_C_COMPILER={c}"], [], level)
          for compiler, c in (("g++", "gcc"), ("clang++", "clang")) for level in LEVELS]
# Where a compiler may make one instruction of a product and a sum, and round once instead of twice.
FUSED = [(compiler, compiler, arguments, run, "-O3 -march=x86-64-v3")
         for compiler, _, arguments, run, level in NATIVE if level == "-O3"]
OTHERS = [(machine, f"{machine}-linux-gnu-g++", ["--preset", machine], run, level)
          for machine, run in (("i686", []), ("powerpc", ["qemu-ppc", "-L", "/usr/powerpc-linux-gnu"]))
          for level in LEVELS]


def can_fuse():
    with open("/proc/cpuinfo") as file:
        flags = re.search(r"^flags\s*:(.*)$", file.read(), re.MULTILINE)
    return flags is not None and {"fma", "avx2", "bmi2"} <= set(flags[1].split())


def build(source, folder, arguments, level):
    """The program, or None where it cannot be built; then its output has been printed."""
    shutil.rmtree(folder, ignore_errors=True)
    configure = ["cmake", "-S", source, "-B", folder, "-G", "Ninja", *arguments, "-DCMAKE_BUILD_TYPE=Release",
                 f"-DCMAKE_CXX_FLAGS_RELEASE={level}", "-DRAXEL_HOST=OFF", "-DRAXEL_TESTS=ON"]
    # As in CI: no compiler cache, and several sources at a time.
    environment = dict(os.environ, CI="1")
    for command in (configure, ["nice", "-n", "10", "cmake", "--build", folder, "-j", "2", "--target", "raxel_golden_files"]):
        done = subprocess.run(command, cwd=source, env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            print(done.stdout[-3000:])
            return None
    return os.path.join(folder, "raxel_golden_files")


def compare(program, run, threads, wanted):
    """How many files are as listed, and how many are not."""
    done = subprocess.run(["nice", "-n", "10", *run, program, "--compare", wanted], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, env=dict(os.environ, RAXEL_TEST_THREADS=str(threads)))
    said = re.search(r"^golden: (\d+) passed, (\d+) failed$", done.stdout, re.MULTILINE)
    if done.returncode != 0 or not said or int(said[2]):
        print("\n".join(done.stdout.splitlines()[:20]))
        return (int(said[1]), max(1, int(said[2]))) if said else (0, 1)
    return int(said[1]), 0


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--source", required=True)
    arguments.add_argument("--build", help="not looked at: all is built anew")
    arguments.add_argument("--only", metavar="NAME", default="", help="only ways whose name has this in it")
    wanted = arguments.parse_args()
    source = os.path.realpath(wanted.source)
    listed = os.path.join(source, "tests/golden/files.txt")
    passed = failed = builds = 0
    missing = set()
    for name, compiler, how, run, level in NATIVE + (FUSED if can_fuse() else []) + OTHERS:
        way = f"{name} {level}"
        if wanted.only not in way:
            continue
        if any(shutil.which(tool) is None for tool in [compiler, *run[:1]]):
            missing.add(compiler)
            continue
        folder = os.path.join(source, "build/campaign/golden", re.sub(r"[^\w+-]", "", way))
        program = build(source, folder, how, level)
        if program is None:
            print(f"{way}: does not build", flush=True)
            failed += 1
            continue
        builds += 1
        for threads in THREADS:
            fine, bad = compare(program, run, threads, listed)
            passed, failed = passed + fine, failed + bad
            print(f"{way}, {threads} threads: {fine} equal, {bad} not", flush=True)
        shutil.rmtree(folder)
    with open(listed) as file:
        files = len(file.readlines())
    figure = {"files": files, "builds": builds, "numbers of threads": str(len(THREADS))}
    if missing:
        figure["without"] = ", ".join(sorted(missing))
    print(json.dumps(figure))
    print(f"golden: {passed} passed, {failed} failed")
    return 1 if failed or not builds else 0


if __name__ == "__main__":
    sys.exit(main())
