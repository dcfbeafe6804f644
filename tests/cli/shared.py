# SPDX-License-Identifier: MIT
"""What the programs of this folder share: where the command is, and how faults are told."""

import argparse
import os
import shutil
import signal
import subprocess


def places():
    """The folders given as --build and --source, and the command in the first of them."""
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--source", required=True)
    given = arguments.parse_args()
    build, source = os.path.realpath(given.build), os.path.realpath(given.source)
    return build, source, os.path.join(build, "raxel-export")


def take_signals():
    """Processes started from here on end by signals, though whoever runs the tests (nohup, a shell's background)
    has had some of them ignored, which the command respects."""
    stops = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
    for number in stops:
        signal.signal(number, signal.SIG_DFL)
    signal.pthread_sigmask(signal.SIG_UNBLOCK, stops)


def sanitized(program):
    """Whether the command looks after its memory itself, which valgrind and preloading do not go with."""
    # Who read it here would take as much memory, and processes count what the one that starts them had.
    return subprocess.run(["grep", "-q", "__asan_init", program], check=False).returncode == 0


def tell(faults, summary):
    """Prints a line for each fault and then the summary. Returns the exit code."""
    for fault in faults:
        print(f"FAILED {fault}")
    print(summary)
    return 1 if faults else 0


class Checks:
    """Checks with the programs that the files are for, and which of those are not here."""

    def __init__(self, folder):
        self.folder = folder
        self.faults, self.checks, self.skipped = [], 0, []

    def path(self, name):
        return os.path.join(self.folder, name)

    def same(self, what, seen, wanted):
        self.checks += 1
        if seen != wanted:
            self.faults.append(f"{what}: {str(seen)[:400]} instead of {str(wanted)[:400]}")

    def true(self, what, holds):
        self.checks += 1
        if not holds:
            self.faults.append(what)

    def has(self, program):
        """Whether a program is installed; one that is not is counted as skipped."""
        if shutil.which(program):
            return True
        if program not in self.skipped:
            self.skipped.append(program)
        return False

    def told(self):
        """Prints what was found. Returns the exit code."""
        for program in self.skipped:
            print(f"skipped: {program} is not installed")
        return tell(self.faults, f"{self.checks} checks, {len(self.faults)} failed, {len(self.skipped)} programs skipped")
