#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Changes one operator, constant or condition of the library at a time, and sees whether a test notices.

    mutants.py --source FOLDER --work FOLDER [--number N] [--seconds S] [--files PATTERN] [--again]

The sources are copied to the work folder and built there. What has become of each change is a line of
results.jsonl in it, so that a run which is stopped goes on with the changes that are left; --again tries those
that no test had noticed once more. Ends with the share of those that were noticed, and names the others.
"""

import argparse
import fnmatch
import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

# What stands for what. A change that does not compile counts for nothing.
SWAPS = {
    "<": ("<=", ">"), "<=": ("<", ">"), ">": (">=", "<"), ">=": (">", "<"), "==": ("!=",), "!=": ("==",),
    "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "*": ("+",), "/": ("*",), "%": ("/",),
    "<<": (">>",), ">>": ("<<",), "&": ("|",), "|": ("&",), "^": ("|",), "++": ("--",), "--": ("++",),
    "+=": ("-=",), "-=": ("+=",), "|=": ("&=",), "&=": ("|=",), "<<=": (">>=",), ">>=": ("<<=",),
    "true": ("false",), "false": ("true",), "break": ("",), "continue": ("",),
}
# Comments, texts and characters are passed over; then names, numbers and operators, the longest first.
TOKEN = re.compile(r"""
    (?P<skip> //[^\n]* | /\*.*?\*/ | R"\(.*?\)" | "(?:\\.|[^"\\\n])*" | '(?:\\.|[^'\\\n])+' | ^[ \t]*\#(?:\\\n|[^\n])* )
  | (?P<number> \b(?:0[xX][0-9a-fA-F']+|[0-9][0-9']*)(?:\.[0-9]+)?[uUlLfF]*\b )
  | (?P<name> [A-Za-z_]\w* )
  | (?P<operator> <=> | -> | :: | <<= | >>= | \+\+ | -- | && | \|\| | [<>=!+\-*/%&|^]= | << | >> | [<>+\-*/%&|^!] )
""", re.X | re.S | re.M)
# With no name for what is passed over: tables and checks that the compiler makes.
LEFT_OUT = re.compile(r"\bstatic_assert\b|\btemplate\b|\busing\b|\boperator\b|\bnoexcept\b")
# A change that is still alive then goes round in circles, which is to be noticed.
PATIENCE = 120
PROGRAMS = ("raxel_tests", "raxel_library_tests", "raxel_hostile_tests")
SUITE = re.compile(r"^(?:TYPED_)?TEST(?:_[FP])?\((\w+),", re.M)


def changed_number(text):
    digits = re.match(r"(0[xX][0-9a-fA-F']+|[0-9']+)(.*)", text, re.S)
    value = int(digits[1].replace("'", ""), 16 if digits[1][:2] in ("0x", "0X") else 8 if digits[1][0] == "0" else 10)
    return f"{value + 1}{digits[2]}"


def changes(path, text):
    """Each change of a file: its place, what stands there, and what is to stand there."""
    for found in TOKEN.finditer(text):
        start = text.rfind("\n", 0, found.start()) + 1
        line = text[start:text.find("\n", found.start())]
        if found["skip"] or LEFT_OUT.search(line):
            continue
        was = found.group()
        if found["number"]:
            # Digits of a pattern of bits and of a table say nothing about the code.
            if not line.strip().startswith(("{", "0x")):
                yield found.start(), was, changed_number(was)
        elif was == "!":
            yield found.start(), was, ""
        elif was == "if" and (opened := re.match(r"if\s*\(", text[found.start():])):
            yield found.start(), opened.group(), opened.group() + "not "
        else:
            for other in SWAPS.get(was, ()):
                yield found.start(), was, other


def names(root, pattern):
    for folder, _, files in sorted(os.walk(os.path.join(root, "src"))):
        for name in sorted(files):
            path = os.path.relpath(os.path.join(folder, name), root)
            if path.endswith((".cpp", ".h")) and fnmatch.fnmatch(path, pattern):
                yield path


class Mutants:
    def __init__(self, source, work):
        self.source = os.path.realpath(source)
        self.tree = os.path.join(os.path.realpath(work), "tree")
        self.build = os.path.join(self.tree, "build/mutants")
        self.results = os.path.join(os.path.realpath(work), "results.jsonl")
        os.makedirs(work, exist_ok=True)

    def prepare(self):
        """Copies what has changed, so that little is built again."""
        def left_out(folder, names):
            return {"build", ".git"}.intersection(names) if folder == self.source else ()

        shutil.copytree(self.source, self.tree, ignore=left_out, dirs_exist_ok=True)
        if not os.path.exists(os.path.join(self.build, "build.ninja")):
            linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=gold", "-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=gold"] if shutil.which("ld.gold") else []
            subprocess.run(["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build, "-DCMAKE_BUILD_TYPE=Release", "-DRAXEL_HOST=OFF",
                            "-DRAXEL_WERROR=OFF", "-DCMAKE_CXX_FLAGS_RELEASE=-O1", *linker], check=True, stdout=subprocess.DEVNULL)
        assert self.compiles(3600), "the sources themselves do not build"
        assert self.notices("") is None, "the tests fail as it is"

    def compiles(self, patience=600):
        return self.ends(["cmake", "--build", self.build, "--target", *PROGRAMS], {}, patience) == 0

    def ends(self, command, settings, patience):
        """The exit code of a command; of one that takes too long, none."""
        process = subprocess.Popen(command, cwd=self.build, env={**os.environ, **settings}, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        try:
            return process.wait(patience)
        except subprocess.TimeoutExpired:
            return None
        finally:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()

    def nearest(self, path):
        """A filter for the tests in the folder that mirrors the one of this source."""
        folder = os.path.join(self.tree, "tests", os.path.relpath(os.path.dirname(path), "src"))
        suites = set()
        for name in sorted(os.listdir(folder)) if os.path.isdir(folder) else ():
            if name.endswith(".cpp"):
                with open(os.path.join(folder, name), encoding="utf-8") as file:
                    suites.update(SUITE.findall(file.read()))
        return ":".join(f"{suite}.*:*/{suite}.*" for suite in sorted(suites))

    def notices(self, near):
        """Which tests fail, of those nearby, of a few cases, of more: None when all pass."""
        library = os.path.join(self.build, "raxel.so")
        stages = [("raxel_tests", 1, near)] if near else []
        stages += [("raxel_library_tests", 1, "*"), ("raxel_hostile_tests", 1, "*"), ("raxel_tests", 1, "*"), ("raxel_tests", 20, "*")]
        with tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None) as memory:
            os.chmod(memory, 0o755)  # some tests become another user
            for program, cases, filtered in stages:
                settings = {"RAXEL_CASES": str(cases), "GTEST_FAIL_FAST": "1", "GTEST_FILTER": filtered, "RAXEL_LIBRARY": library,
                            "RAXEL_TEST_THREADS": "0", "TMPDIR": memory}
                if self.ends([os.path.join(self.build, program)], settings, PATIENCE) != 0:
                    return f"{program} with {cases} in 100 cases"
        return None

    def judge(self, path, at, was, new):
        """What becomes of a change: "does not compile", "survives" or who noticed it."""
        whole = os.path.join(self.tree, path)
        with open(whole, encoding="utf-8") as file:
            text = file.read()
        assert text.startswith(was, at)
        try:
            with open(whole, "w", encoding="utf-8") as file:
                file.write(text[:at] + new + text[at + len(was):])
            return (self.notices(self.nearest(path)) or "survives") if self.compiles() else "does not compile"
        finally:
            with open(whole, "w", encoding="utf-8") as file:
                file.write(text)

    def known(self):
        if not os.path.exists(self.results):
            return {}
        with open(self.results, encoding="utf-8") as lines:
            found = map(json.loads, lines)
            return {(each["file"], each["line"], each["column"], each["was"], each["new"]): each for each in found}

    def run(self, wanted):
        end = time.monotonic() + wanted.seconds
        self.prepare()
        every = []
        for path in names(self.source, wanted.files):
            with open(os.path.join(self.source, path), encoding="utf-8") as file:
                text = file.read()
            for at, was, new in changes(path, text):
                before = text[:at]
                every.append((path, before.count("\n") + 1, at - before.rfind("\n"), was, new, at))
        random.Random(1).shuffle(every)
        known = self.known()
        tried = 0
        for *key, at in every[:wanted.number]:
            seen = known.get(tuple(key))
            if seen and not (wanted.again and seen["end"] == "survives"):
                continue
            if time.monotonic() > end:
                break
            tried += 1
            outcome = {**dict(zip(("file", "line", "column", "was", "new"), key)), "end": self.judge(key[0], at, *key[3:5])}
            known[tuple(key)] = outcome
            with open(self.results, "a", encoding="utf-8") as lines:
                lines.write(json.dumps(outcome) + "\n")
        return every, tried


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--source", required=True)
    arguments.add_argument("--work", required=True)
    arguments.add_argument("--number", type=int, default=1000)
    arguments.add_argument("--seconds", type=float, default=1e9)
    arguments.add_argument("--files", default="*")
    arguments.add_argument("--again", action="store_true")
    wanted = arguments.parse_args()
    mutants = Mutants(wanted.source, wanted.work)
    every, tried = mutants.run(wanted)
    judged = [each for each in mutants.known().values() if each["end"] != "does not compile"]
    alive = [each for each in judged if each["end"] == "survives"]
    for each in sorted(alive, key=lambda each: (each["file"], each["line"])):
        print(f"{each['file']}:{each['line']}:{each['column']}: {each['was']!r} to {each['new']!r} survives")
    share = (len(judged) - len(alive)) / max(len(judged), 1)
    print(f"mutants: {tried} tried now; of {len(judged)} that compile, out of {len(every)}, {len(judged) - len(alive)} were noticed: {100 * share:.1f} %")
    return 0


if __name__ == "__main__":
    sys.exit(main())
