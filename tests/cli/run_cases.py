#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Runs the scripts of cases/ and compares what they print with the files beside them.

    run_cases.py --build FOLDER --source FOLDER [--update] [NAME...]
"""

import argparse
import difflib
import os
import subprocess
import sys
import tempfile

PRELUDE = r"""
set -u
# Prints the exit code of a command, and lets the script go on.
code() { "$@"; echo "exit $?"; }
"""


def run(script, build, source):
    with tempfile.TemporaryDirectory(prefix="raxel-cli-") as folder:
        environment = {
            "PATH": build + ":/usr/bin:/bin",
            "SAMPLES": os.path.join(source, "samples"),
            "FAKES": os.path.join(build, "tests/cli"),
            "EXAMPLES": os.path.join(source, "examples"),
            "HOME": folder,
            "LC_ALL": "C",
        }
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"):
            if name in os.environ:
                environment[name] = os.environ[name]
        with open(script) as text:
            done = subprocess.run(["bash", "-c", PRELUDE + text.read()], cwd=folder, env=environment,
                                  capture_output=True, timeout=300)
        output = []
        for raw in (done.stdout, done.stderr):
            text = raw.decode("utf-8", "replace")
            text = text.replace(environment["SAMPLES"], "@SAMPLES@").replace(environment["FAKES"], "@FAKES@")
            output.append(text.replace(build, "@BUILD@").replace(folder, "@HERE@"))
        return done.returncode, output


def difference(wanted, got, name):
    return "".join(difflib.unified_diff(wanted.splitlines(True), got.splitlines(True), name, "printed"))


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--source", required=True)
    arguments.add_argument("--update", action="store_true")
    arguments.add_argument("names", nargs="*")
    wanted = arguments.parse_args()
    cases = os.path.join(wanted.source, "tests/cli/cases")
    names = wanted.names or sorted(n[:-3] for n in os.listdir(cases) if n.endswith(".sh"))
    failed = 0
    for name in names:
        base = os.path.join(cases, name)
        code, output = run(base + ".sh", os.path.realpath(wanted.build), os.path.realpath(wanted.source))
        faults = "" if code == 0 else f"the script ends with {code}\n"
        for stream, text in zip(("stdout", "stderr"), output):
            path = f"{base}.{stream}"
            if wanted.update:
                with open(path, "w") as out:
                    out.write(text)
            with open(path) as expected:
                faults += difference(expected.read(), text, f"{name}.{stream}")
        if faults:
            failed += 1
            print(f"FAILED {name}\n{faults}")
    print(f"cli cases: {len(names) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
