#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Which lines and branches of the library and of the hosts the tests have reached, and what they have not.

    coverage.py --build FOLDER --source FOLDER [--report HTML]

Reads what the programs of `./dev coverage` have counted, those too that were killed (cmake/coverage). Of each line every
branch of its source counts once, however many copies the compiler made of it: for each file that includes a header, for
each kind of a template. What the compiler
makes by itself does not count: branches that only an exception takes, members that nobody wrote, which stand at the line
that opens a class, and destructors, at the bracket that closes a block; such lines are none.

What cannot be reached stands in unreached.txt with its reason, a line each: FILE | TEXT OF THE LINE | REASON. The text may
be that of the line before, " / ", and that of the line, where a file has several that are alike. Such lines, and the
branches in them, are left out of the shares and counted apart.
"""

import argparse
import concurrent.futures
import json
import os
import re
import subprocess
import sys

HERE = os.path.dirname(os.path.realpath(__file__))
PARTS = ("src", "host")
MADE = re.compile(r"(class|struct)\b.*\{|[\]})(;,]+")
# What has to be right in every case: coders, the directory, and the rewriting of profiles.
STRICT = re.compile(r"src/(tiff/(packbits|lzw|fax_|directory|patches|bit_writer|byte_masks)|runtime/(ini_|replace_file|rights|temporary)).*")
AT_ONCE = 16  # files that one run of gcov reads


def reasons(name="unreached.txt"):
    found = {}
    with open(os.path.join(HERE, name), encoding="utf-8") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                path, text, reason = (cell.strip() for cell in line.rsplit(" | ", 1)[0].split(" | ", 1) + [line.rsplit(" | ", 1)[1]])
                found[path, text] = reason
    return found


def gather(build):
    """Has each program and library of the build move what its processes have counted to where gcov looks for it."""
    counts = os.path.join(build, "counts")
    environment = dict(os.environ, RAXEL_COUNTS_WRITE="1")
    for folder, _, names in os.walk(build):
        for path in (os.path.join(folder, name) for name in names):
            if not os.path.isfile(path):
                continue
            with open(path, "rb") as file:
                if file.read(4) != b"\x7fELF" or path.endswith(".o"):
                    continue
            notes = subprocess.run(["readelf", "--notes", path], check=True, capture_output=True, text=True).stdout
            known = re.search(r"Build ID: ([0-9a-f]+)", notes)
            if not known or not os.path.exists(os.path.join(counts, known[1])):
                continue
            is_library = re.search(r"\.so(\.\d+)*$", path)
            load = [sys.executable, "-c", "import ctypes, sys; ctypes.CDLL(sys.argv[1])"] if is_library else []
            subprocess.run([*load, path], env=environment, check=True, stdin=subprocess.DEVNULL)
    for left in os.listdir(counts):
        print(f"counts/{left}: the program is no longer there")


def notes(build):
    """What the compiler noted of each file that it compiled."""
    return sorted(os.path.join(folder, name) for folder, _, names in os.walk(build) for name in names if name.endswith(".gcno"))


def read(files):
    said = subprocess.run(["gcov", "--json-format", "--branch-probabilities", "--stdout", *files], check=True,
                          capture_output=True, text=True).stdout
    return [json.loads(line) for line in said.splitlines() if line.startswith("{")]


class Line:
    """How often a line was reached, and each of its branches."""

    def __init__(self):
        self.count = 0
        self.branches = {}  # by how many a copy has: what is known as it is compiled may leave some out

    def add(self, line, new):
        """Counts of one more copy; those of the tests' own objects count only where the library's have the same."""
        taken = [branch["count"] for branch in line["branches"] if not branch["throw"]]
        self.count += line["count"]
        if len(taken) > 1 and (new or len(taken) in self.branches):
            known = self.branches.setdefault(len(taken), [0] * len(taken))
            self.branches[len(taken)] = [a + b for a, b in zip(known, taken)]


def counted(source, build):
    """The lines of each file, by its path and their numbers."""
    files = notes(build)
    own = [file for file in files if os.path.relpath(file, build).split("/")[0] in PARTS]
    found = {}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as crew:
        for new, some in ((True, own), (False, sorted(set(files) - set(own)))):
            for compiled in crew.map(read, (some[i:i + AT_ONCE] for i in range(0, len(some), AT_ONCE))):
                for base, file in ((unit["current_working_directory"], file) for unit in compiled for file in unit["files"]):
                    path = os.path.relpath(os.path.join(base, file["file"]), source)
                    if path.split("/")[0] not in PARTS:
                        continue
                    lines = found.setdefault(path, {})
                    for line in file["lines"]:
                        if new or line["line_number"] in lines:
                            lines.setdefault(line["line_number"], Line()).add(line, new)
    return found


def report(source, build, page):
    """Pages in which each line stands with its count, for people."""
    subprocess.run(["gcovr", "--root", source, "--html-details", page, "--exclude-throw-branches", "-j", str(os.cpu_count()),
                    *(f"--filter={part}/" for part in PARTS), build], cwd=source, check=True, stdout=subprocess.DEVNULL)


class Share:
    def __init__(self):
        self.reached = self.all = self.excused = 0

    def add(self, reached, excused):
        self.all += not excused
        self.reached += bool(reached and not excused)
        self.excused += bool(excused and not reached)

    def __str__(self):
        return f"{100 * self.reached / max(self.all, 1):.2f} % ({self.reached:,} of {self.all:,}; {self.excused} more have a reason)"


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--source", required=True)
    arguments.add_argument("--report")
    wanted = arguments.parse_args()
    source = os.path.realpath(wanted.source)
    known, used = reasons(), set()
    gather(os.path.realpath(wanted.build))
    if wanted.report:
        report(source, os.path.realpath(wanted.build), os.path.realpath(wanted.report))
    lines = {part: Share() for part in PARTS}
    branches = {part: Share() for part in (*PARTS, "strict")}
    for path, found in sorted(counted(source, os.path.realpath(wanted.build)).items()):
        part = path.split("/")[0]
        with open(os.path.join(source, path), encoding="utf-8") as text:
            rows = [row.strip() for row in text]
        for number, line in sorted(found.items()):
            row = rows[number - 1]
            if MADE.fullmatch(row):
                continue
            keys = {(path, row), (path, f"{rows[number - 2]} / {row}")}.intersection(known)
            lines[part].add(line.count, keys)
            taken = [count for copy in line.branches.values() for count in copy]
            for count in taken:
                branches[part].add(count, keys)
                if STRICT.fullmatch(path):
                    branches["strict"].add(count, keys)
            missed = taken.count(0)
            if keys and (not line.count or missed):
                used |= keys
            elif not line.count:
                print(f"{path}:{number}: not reached: {row}")
            elif missed and part == "src":
                print(f"{path}:{number}: {missed} of {len(taken)} branches not taken: {row}")
    for path, text in sorted(set(known) - used):
        print(f"unreached.txt: {path} is reached, or has no such line: {text}")
    for part in PARTS:
        print(f"lines of {part}: {lines[part]}; branches: {branches[part]}")
    print(json.dumps({"lines of src": str(lines["src"]), "lines of host": str(lines["host"]), "branches of src": str(branches["src"]),
                      "branches of coders, directory and profile rewriting": str(branches["strict"])}))
    return 0


if __name__ == "__main__":
    sys.exit(main())
