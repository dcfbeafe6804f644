#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The long tests, one after the other, until all are through or the time is up.

    campaign.py --build FOLDER --source FOLDER [--hours H] [--only PART]
                                                              run what is left; `./dev campaign [HOURS]` builds first
    campaign.py --source FOLDER --add PART COMMAND FIGURE     note what was measured by another command
    campaign.py --source FOLDER --document [--check]          write the table of docs/reliability.md, or compare it

A part is a row of units, each of them a command that takes seconds to minutes. build/campaign/state.json has those that
are through, so that a campaign which is stopped goes on where it was. A finished part adds a line to
docs/reliability.jsonl (its date, command and figure), and the next campaign begins it anew.
"""

import argparse
import datetime
import fcntl
import glob
import json
import os
import re
import shlex
import signal
import subprocess
import sys
import time

import golden

HERE = os.path.dirname(os.path.realpath(__file__))
RECORD = "docs/reliability.jsonl"
DOCUMENT = "docs/reliability.md"
BEGIN, END = "<!-- figures: written by ./dev campaign -->\n", "<!-- end of figures -->\n"
WITHOUT_END = 10 ** 9  # seconds
MINUTE = 60
LONGEST = 6 * 3600  # that any unit takes
NOT_YET = 75  # the code of a unit that has not got as far as it is to
BEGUN = "begun"  # in the state, beside the units of a part
# What fails, one call after the other: disks and profiles, hosts' procedures, and blocks that end.
FAULTS = "*DiskFaults*:ProfileFaults.*:*FullDisk*:FailingStrips.*:*FailingOutput.*:*AtAnyCall*"


class Part:
    """`units` are the ends of its command, one for each. Where they take as long as they may, `share` is how much of the
    time left that is for all of them, and `seconds` how long it is for each where no time is given."""

    def __init__(self, name, command, units=("",), share=1, seconds=MINUTE):
        self.name, self.command, self.units, self.share, self.seconds = name, command, units, share, seconds


def python(program, more=""):
    return f"/usr/bin/python3 tests/{program} --build {{build}} --source . {more}".strip()


def parts(source):
    """In the order in which they run; what takes as long as it may comes last."""
    found = [
        Part("steps", python("cli/steps.py", "--all")),
        Part("faults", python("cli/faults.py", "--all")),
        Part("faults of the library", "{build}/raxel_tests --gtest_filter=" + FAULTS),
        Part("kills in an export", python("campaign/kills.py", "--only export --kills 100"), [f"--seed {n}" for n in range(10)]),
        Part("kills in fifty pages", python("campaign/kills.py", "--only fifty --kills 100"), [f"--seed {n}" for n in range(10)]),
        Part("kills in a profile", python("campaign/kills.py", "--only profile --kills 100"), [f"--seed {n}" for n in range(10)]),
        Part("sizes of the library's disk", "env RAXEL_EVERY_SIZE=1 {build}/raxel_tests --gtest_filter=*EverySizeOfDisk*"),
        Part("sizes of the command's disk", python("campaign/sizes.py"), [f"--from {n} --to {n + 2048}" for n in range(0, 67584, 2048)]),
        Part("quota", python("campaign/quota.py")),
        Part("full disks", python("cli/endure.py")),
        Part("crowd", python("cli/crowd.py", "--all")),
        Part("planted names", python("campaign/planted.py")),
        Part("golden", python("campaign/golden.py"), list(golden.all_ways())),
        Part("readers", python("campaign/golden_readers.py")),
        Part("sandbox", python("campaign/sandbox.py")),
        Part("structured", python("campaign/structured.py"), [f"--seed {n}" for n in range(10)]),
        Part("sanitizers", "./dev test --sanitize"),
        Part("integers", python("campaign/integers.py")),
        Part("slack", "build/sanitize/raxel_tests --gtest_filter=HandlesDeathTest.*"),
        Part("threads", "./dev test --threads"),
        # (A decoder's child may not do what valgrind does.)
        Part("valgrind", "env RAXEL_CASES=1 valgrind -q --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite",
             ["{build}/raxel_tests --gtest_filter=-*DeathTest*", "{build}/raxel_host_tests --gtest_filter=-*DeathTest*:Confined*"]),
        Part("tidy", "./dev tidy"),
        Part("hosts on 32 bit and big-endian", "./dev test --abi all"),
        Part("coverage", "./dev coverage"),
    ]
    if os.path.exists(os.path.join(source, "tests/campaign/mutants.py")):
        found.append(Part("mutation", "/usr/bin/python3 tests/campaign/mutants.py --source . --work build/campaign/mutants --again --seconds {seconds}", share=0.5, seconds=WITHOUT_END))
    # One program may be built for several formats: each target has a corpus.
    targets = sorted(map(os.path.basename, glob.glob(os.path.join(source, "fuzz/corpus/*"))))
    found.append(Part("fuzzing", "./dev fuzz {seconds}", targets))
    return [part for part in found if "tests/" not in part.command or os.path.exists(os.path.join(source, re.search(r"tests/\S+\.py|$", part.command)[0]))]


def figure_of(said):
    """What a unit has told of itself: counts by name, added up where several units tell of the same."""
    figure = {}
    for line in said.splitlines():
        if line.startswith("{"):
            figure.update(json.loads(line))
        for pattern, name in ((r": (\d+) passed, \d+ failed", "checks"), (r"\[  PASSED  \] (\d+) test", "tests"),
                              (r"^dev: (\d+) executions", "executions")):
            if counted := re.search(pattern, line):
                figure[name] = figure.get(name, 0) + int(counted[1])
        if "[  PASSED  ] 0 test" in line:
            figure["failed"] = figure.get("failed", 0) + 1  # a name that has changed, say
        if failed := re.search(r": \d+ passed, (\d+) failed|\[  FAILED  \] (\d+) test", line):
            figure["failed"] = figure.get("failed", 0) + int(failed[1] or failed[2])
    return figure


def add_up(figures):
    total = {}
    for figure in figures:
        for name, value in figure.items():
            total[name] = total.get(name, 0) + value if isinstance(value, (int, float)) else value
    return total


class Campaign:
    def __init__(self, source, build, hours):
        self.source, self.build = source, build
        self.until = time.monotonic() + (WITHOUT_END if hours is None else hours * 3600)
        self.hours = hours
        self.path = os.path.join(source, "build/campaign/state.json")
        self.state = self.kept()

    def kept(self):
        try:
            with open(self.path) as file:
                return json.load(file)
        except (FileNotFoundError, ValueError):
            return {}

    def save(self):
        os.makedirs(os.path.dirname(self.path), exist_ok=True)
        with open(self.path + ".new", "w") as file:
            json.dump(self.state, file, indent=1)
            file.flush()
            os.fsync(file.fileno())
        os.replace(self.path + ".new", self.path)

    def left(self):
        return self.until - time.monotonic()

    def unit(self, part, unit, seconds):
        command = f"{part.command} {unit}".strip().format(build=os.path.relpath(self.build, self.source), seconds=max(1, int(seconds)))
        print(f"campaign: {part.name}: {command}", file=sys.stderr, flush=True)
        os.makedirs(os.path.dirname(self.path), exist_ok=True)
        # Who kills the campaign ends what it was at, which would be in the way of the next one.
        # What that leaves of a unit's own children holds the lock.
        process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *shlex.split(command)], cwd=self.source, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT, text=True, errors="replace", pass_fds=[self.lock.fileno()], process_group=0)
        try:
            said, _ = process.communicate(timeout=max(LONGEST, 2 * seconds))
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            said, _ = process.communicate()
        done = subprocess.CompletedProcess(command, process.returncode, said)
        with open(os.path.join(os.path.dirname(self.path), part.name.replace(" ", "-") + ".log"), "w") as log:
            log.write(f"{command}\n{done.stdout}")
        figure = figure_of(done.stdout)
        if done.returncode == NOT_YET:
            return command, None
        if done.returncode not in (0, 77):
            figure["failed"] = max(1, figure.get("failed", 0))
            print(done.stdout[-4000:], file=sys.stderr, flush=True)
        if done.returncode == 77:
            figure["left out"] = 1
        if part.name == "fuzzing" and "executions" in figure:
            figure[f"of {unit}"] = figure["executions"]
        return command, figure

    def part(self, part):
        """Runs the units that are left. Whether all of them went well; None when there was no time for all."""
        units = self.state.setdefault(part.name, {})
        units.setdefault(BEGUN, {"at": datetime.datetime.now().isoformat(), "commit": commit_of(self.source)})
        todo = [unit for unit in part.units if unit not in units]
        for at, unit in enumerate(todo):
            if self.left() <= 0:
                return None
            seconds = part.seconds if self.hours is None else part.share * self.left() / (len(todo) - at)
            command, units[unit] = self.unit(part, unit, seconds)
            if units[unit] is None:
                del units[unit]
                print(f"campaign: {part.name} is not through, and goes on the next time")
                return True
            self.save()
        figure = add_up(units[unit] for unit in part.units)
        if figure.get("left out") == len(part.units):
            print(f"campaign: {part.name} cannot run here, and nothing is noted")
        else:
            ends = [""] if len(part.units) == 1 else [f" {part.units[0]}", f" to {part.units[-1]}"]
            note(self.source, part.name, (part.command + "".join(ends)).format(build="build/release", seconds="SECONDS"), figure, units[BEGUN])
        del self.state[part.name]
        self.save()
        return not figure.get("failed")

    def run(self, only=None):
        os.makedirs(os.path.dirname(self.path), exist_ok=True)
        # One campaign at a time, and none beside what a killed one has left at work.
        with open(os.path.join(os.path.dirname(self.path), "lock"), "w") as self.lock:
            fcntl.flock(self.lock, fcntl.LOCK_EX)
            self.state = self.kept()
            return self.run_parts(only)

    def run_parts(self, only):
        fine = True
        for part in parts(self.source):
            if only not in (None, part.name):
                continue
            went = self.part(part)
            if went is None:
                print("campaign: the time is up; it goes on from here the next time")
                return 0 if fine else 1
            fine = fine and went
            write_document(self.source)
        print("campaign: all parts are through" + ("" if fine else ", and some have found something"))
        return 0 if fine else 1


# ---- What was measured ------------------------------------------------------------------------------------------------


def commit_of(source):
    return subprocess.run(["git", "rev-parse", "--short", "HEAD"], cwd=source, capture_output=True, text=True).stdout.strip()


def note(source, part, command, figure, begun=None):
    """`begun` tells when and with which sources a campaign began with the part, which it may have been stopped in."""
    commit, line = commit_of(source), {"part": part, "date": datetime.date.today().isoformat()}
    line["commit"] = f"{begun['commit']} to {commit}" if begun and begun["commit"] != commit else commit
    line.update({"command": command, "figure": figure})
    if begun:
        line[BEGUN] = begun["at"]
    with open(os.path.join(source, RECORD), "a+") as file:
        file.seek(0)
        # A campaign that is killed between this line and its next step comes here again.
        if not begun or all(json.loads(each).get(BEGUN) != begun["at"] for each in file):
            file.write(json.dumps(line) + "\n")
            file.flush()
            os.fsync(file.fileno())


def told(figure):
    if isinstance(figure, str):
        return figure
    return ", ".join(f"{value:,} {name}" if isinstance(value, int) else f"{name}: {value}" for name, value in figure.items())


# The table's rows, and the parts that each is made of.
ROWS = (
    ("Lines of `src/` and `host/`, and branches of `src/`, that the tests reach", ("coverage",)),
    ("Fuzzing, with the address and undefined-behaviour sanitizers", ("fuzzing",)),
    ("Handle blocks: an overrun of one byte is seen by the address sanitizer", ("slack",)),
    ("The nth call to the disk fails, in the library", ("faults of the library",)),
    ("The nth call to the disk, and the nth allocation, fail in the command; the nth allocation in a host", ("faults",)),
    ("Small disks: a limit at every size of a file, and a quota", ("sizes of the library's disk", "sizes of the command's disk", "quota")),
    ("Full disks, and kills and interrupts beside", ("full disks",)),
    ("kill -9 at random instants", ("kills in an export", "kills in fifty pages", "kills in a profile")),
    ("kill -9 and a fault at each system call of a job of fifty pages", ("steps",)),
    ("Many processes at one profile, at one file, with little memory", ("crowd",)),
    ("Temporaries in a folder that others may write", ("planted names",)),
    ("Hostile pictures, decoded without files and sockets, and those that are wrong in one place", ("sandbox", "structured")),
    ("Undefined behaviour: the whole suite under the sanitizers", ("sanitizers",)),
    ("Undefined behaviour: integers, threads, valgrind, clang-tidy, cppcheck", ("integers", "threads", "valgrind", "tidy")),
    ("Mutation of `src/`", ("mutation",)),
    ("Golden files, equal on every machine, compiler and number of threads", ("golden",)),
    ("Golden files, decoded equal by independent readers", ("readers",)),
    ("32-bit and big-endian hosts", ("hosts on 32 bit and big-endian",)),
)


def record(source):
    """The last line of each part; of fuzzing, all of them added up."""
    lines = {}
    with open(os.path.join(source, RECORD)) as file:
        for line in map(json.loads, file):
            before = lines.get(line["part"])
            if before and line["part"] == "fuzzing" and isinstance(line["figure"], dict) and isinstance(before["figure"], dict):
                line["figure"] = add_up([before["figure"], line["figure"]])
            lines[line["part"]] = line
    return lines


def table(source):
    lines = record(source)
    known = {part for _, names in ROWS for part in names}
    assert known.issuperset(lines), f"no row is for {sorted(set(lines) - known)}"
    rows = ["| what | figure | command | date, commit |\n", "|---|---|---|---|\n"]
    for what, names in ROWS:
        for name in names:
            head = what if len(names) == 1 else f"{what}: {name}"
            line = lines.get(name)
            cells = [head, "not yet measured", "", ""]
            if line:
                cells = [head, told(line["figure"]), f"`{line['command']}`", f"{line['date']}, {line['commit']}"]
            rows.append("| " + " | ".join(cells) + " |\n")
    return "".join(rows)


def write_document(source, check=False):
    path = os.path.join(source, DOCUMENT)
    with open(path) as file:
        text = file.read()
    front, rest = text.split(BEGIN)
    written = front + BEGIN + table(source) + END + rest.split(END)[1]
    if check:
        return written == text
    with open(path + ".new", "w") as file:
        file.write(written)
    os.replace(path + ".new", path)
    return True


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--source", required=True)
    arguments.add_argument("--build")
    arguments.add_argument("--hours", type=float)
    arguments.add_argument("--only", metavar="PART")
    arguments.add_argument("--add", nargs=3, metavar=("PART", "COMMAND", "FIGURE"))
    arguments.add_argument("--document", action="store_true")
    arguments.add_argument("--check", action="store_true")
    wanted = arguments.parse_args()
    source = os.path.realpath(wanted.source)
    if wanted.add:
        note(source, *wanted.add)
        write_document(source)
        return 0
    if wanted.document:
        fine = write_document(source, wanted.check)
        if not fine:
            print(f"{DOCUMENT} does not have the figures of {RECORD}: ./dev campaign --document")
        return 0 if fine else 1
    return Campaign(source, os.path.realpath(wanted.build), wanted.hours).run(wanted.only)


if __name__ == "__main__":
    sys.exit(main())
