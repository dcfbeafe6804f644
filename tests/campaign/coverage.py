#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Which lines and branches of the library and of the hosts the tests have reached, and what they have not.

    coverage.py --build FOLDER --source FOLDER [--report HTML]

Reads what the programs of `./dev coverage` have counted. Branches that only an exception takes do not count: the
compiler makes them behind every call. What cannot be reached stands in unreached.txt with its reason, a line each:
FILE | TEXT OF THE LINE | REASON. Such lines, and the branches in them, are left out of the shares and counted apart.
"""

import argparse
import json
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.realpath(__file__))
PARTS = ("src", "host")


def reasons():
    found = {}
    with open(os.path.join(HERE, "unreached.txt"), encoding="utf-8") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                path, text, reason = (cell.strip() for cell in line.rsplit(" | ", 1)[0].split(" | ", 1) + [line.rsplit(" | ", 1)[1]])
                found[path, text] = reason
    return found


def counted(source, build, report):
    """What gcovr says of each file: its lines, each with its branches."""
    pages = ["--html-details", os.path.realpath(report)] if report else []
    command = ["gcovr", "--root", source, "--json", "-", *pages, "--exclude-throw-branches",
               *(f"--filter={part}/" for part in PARTS), build]
    said = subprocess.run(command, cwd=source, check=True, capture_output=True, text=True).stdout
    return json.loads(said)["files"]


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
    lines = {part: Share() for part in PARTS}
    branches = {part: Share() for part in PARTS}
    for file in sorted(counted(source, os.path.realpath(wanted.build), wanted.report), key=lambda file: file["file"]):
        path = file["file"]
        part = path.split("/")[0]
        with open(os.path.join(source, path), encoding="utf-8") as text:
            rows = [row.strip() for row in text]
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            row = rows[line["line_number"] - 1]
            key = path, row
            excused = key in known
            lines[part].add(line["count"], excused)
            missed = [branch for branch in line["branches"] if not branch["count"]]
            for branch in line["branches"]:
                branches[part].add(branch["count"], excused)
            if excused and (not line["count"] or missed):
                used.add(key)
            elif not line["count"]:
                print(f"{path}:{line['line_number']}: not reached: {row}")
            elif missed and part == "src":
                print(f"{path}:{line['line_number']}: {len(missed)} of {len(line['branches'])} branches not taken: {row}")
    for path, text in sorted(set(known) - used):
        print(f"unreached.txt: {path} is reached, or has no such line: {text}")
    for part in PARTS:
        print(f"lines of {part}: {lines[part]}; branches: {branches[part]}")
    print(json.dumps({"lines of src": str(lines["src"]), "lines of host": str(lines["host"]), "branches of src": str(branches["src"])}))
    return 0


if __name__ == "__main__":
    sys.exit(main())
