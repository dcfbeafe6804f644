"""What the programs of this folder share: where the command is, and how faults are told."""

import argparse
import os


def places():
    """The folders given as --build and --source, and the command in the first of them."""
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--source", required=True)
    given = arguments.parse_args()
    build, source = os.path.realpath(given.build), os.path.realpath(given.source)
    return build, source, os.path.join(build, "raxel-export")


def sanitized(program):
    """Whether the command looks after its memory itself, which valgrind and preloading do not go with."""
    with open(program, "rb") as binary:
        return b"__asan_init" in binary.read()


def tell(faults, summary):
    """Prints a line for each fault and then the summary. Returns the exit code."""
    for fault in faults:
        print(f"FAILED {fault}")
    print(summary)
    return 1 if faults else 0
