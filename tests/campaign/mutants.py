#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Changes one operator, constant or condition of the library at a time, and sees whether a test notices.

    mutants.py --source FOLDER --work FOLDER [--number N] [--seconds S] [--files PATTERN] [--again]
    mutants.py --source FOLDER --check

The sources are copied to the work folder and built there. What has become of each change is a line of
results.jsonl in it, so that a run which is stopped goes on with the changes that are left; --again tries those
that no test had noticed once more, but for those of the list below. Ends when N changes that compile were judged, with
the share of those that were noticed, and names the others; with 75 when the time was up before.

Some changes cannot be noticed: a table that begins with other room, a check that another one makes as well. They
stand in equivalent.txt with the reason, by the text of their line, and count as no survivors. --check tells
which of its rows are about a line or a change that is no more.
"""

import argparse
import collections
import fcntl
import filecmp
import fnmatch
import json
import os
import random
import re
import resource
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
UNARY = ("++", "--")
# Comments, texts and characters are passed over; then names, numbers and operators, the longest first.
TOKEN = re.compile(r"""
    (?P<skip> //[^\n]* | /\*.*?\*/ | R"\(.*?\)" | "(?:\\.|[^"\\\n])*" | '(?:\\.|[^'\\\n])+' | ^[ \t]*\#(?:\\\n|[^\n])* )
  | (?P<number> \b(?:0[xX][0-9a-fA-F']+|[0-9][0-9']*)(?:\.[0-9]+)?[uUlLfF]*\b )
  | (?P<name> [A-Za-z_]\w* )
  | (?P<operator> <=> | -> | :: | <<= | >>= | \+\+ | -- | && | \|\| | [<>=!+\-*/%&|^]= | << | >> | [<>+\-*/%&|^!] )
""", re.X | re.S | re.M)
# With no name for what is passed over: tables and checks that the compiler makes.
LEFT_OUT = re.compile(r"\bstatic_assert\b|\btemplate\b|\busing\b|\boperator\b|\bnoexcept\b")
# Operators with two sides have a space on both, which angle brackets, pointers and references have not.
TWO_SIDED = frozenset(SWAPS).difference(("++", "--", "true", "false", "break", "continue"))
# Seconds of work. A change that is still alive then goes round in circles, which is to be noticed; but one that
# waits for other programs of a busy machine is not.
PATIENCE = 120
WHOLE_BUILD = 3600
# So many changes are judged before the tests have to pass once more as it is: a full disk would notice all of them.
AT_ONCE = 20
PROGRAMS = ("raxel_tests", "raxel_library_tests", "raxel_hostile_tests")
SUITE = re.compile(r"^(?:TYPED_)?TEST(?:_[FP])?\((\w+),", re.M)
ENOUGH = 95  # of a hundred that can be noticed
NOT_YET = 75  # the time was up before so many were judged
EQUIVALENT = "tests/campaign/equivalent.txt"


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
        elif was == "if" and (condition := condition_at(text, found.end())):
            yield found.start(), f"if ({condition})", f"if (not ({condition}))"
        elif was not in TWO_SIDED or stands_between(text, found):
            for other in SWAPS.get(was, ()):
                yield found.start(), was, other


def condition_at(text, at):
    """What stands in the brackets of an `if`, if they begin and end in its line and hold nothing but a condition."""
    depth = 0
    for end in range(at, text.find("\n", at)):
        depth += (text[end] == "(") - (text[end] == ")")
        if depth == 0 and end > at:
            return text[at + 2:end] if text.startswith(" (", at) and ";" not in text[at:end] else None
    return None


def stands_between(text, found):
    """Whether an operator has two sides."""
    return text[found.start() - 1] in " \n" and text[found.end()] in " \n" and not text.startswith(" /*", found.end())


class Place(collections.namedtuple("Place", "file line column was new")):
    """A change, as it stands in results.jsonl."""

    @staticmethod
    def of(path, text, at, was, new):
        return Place(path, text.count("\n", 0, at) + 1, at - text.rfind("\n", 0, at), was, new)

    def offset(self, text):
        """Where in the file it is; its end when the file has no such line."""
        lines = text.splitlines(keepends=True)
        return sum(map(len, lines[:self.line - 1])) + self.column - 1 if self.line <= len(lines) else len(text)

    def told(self):
        return f"{self.file}:{self.line}:{self.column}: {self.was!r} to {self.new!r}"


def line_of(text, at):
    """The line of a place, without what stands at its ends."""
    return text[text.rfind("\n", 0, at) + 1:text.find("\n", at)].strip()


def which(text, at, was):
    """Of several of a kind in a line, which one it is, counted from 1."""
    start = text.rfind("\n", 0, at) + 1
    token = was.split(" ")[0].rstrip("(")
    line = text[start:text.find("\n", at)]
    places = [found.start() for found in TOKEN.finditer(line) if found.group() == token]
    return places.index(at - start) + 1


class Equivalent:
    """The changes that nothing can notice.

    Lines of the list: `FILE: the text of a line`, and below, for each change of it, `    'was' to 'new': the reason`. Of
    several of a kind in that line, `'was' 2` is the second.
    """

    def __init__(self, path):
        self.rows = {}
        place = None
        with open(path, encoding="utf-8") as lines:
            for number, line in enumerate(lines, 1):
                if not line.strip() or line.startswith("#"):
                    continue
                if row := re.fullmatch(r"    '(.*?)'( \d+)? to '(.*?)': (.+)\n", line):
                    assert place, f"{path}:{number}: a change of no line"
                    self.rows[(*place, row[1], int(row[2] or 1), row[3])] = row[4]
                else:
                    head = re.fullmatch(r"(src/\S+): (.+)\n", line)
                    assert head, f"{path}:{number}: neither a line of a source nor a change"
                    place = head[1], head[2].strip()

    def reason(self, text, place):
        at = place.offset(text)
        return self.rows.get((place.file, line_of(text, at), place.was, which(text, at, place.was), place.new))

    def stale(self, root):
        """The rows that are about nothing that there is."""
        left = dict(self.rows)
        for path in sorted({row[0] for row in self.rows}):
            if not os.path.exists(os.path.join(root, path)):
                continue
            with open(os.path.join(root, path), encoding="utf-8") as file:
                text = file.read()
            for at, was, new in changes(path, text):
                left.pop((path, line_of(text, at), was, which(text, at, was), new), None)
        return list(left)


def names(root, pattern):
    for folder, _, files in sorted(os.walk(os.path.join(root, "src"))):
        for name in sorted(files):
            path = os.path.relpath(os.path.join(folder, name), root)
            if path.endswith((".cpp", ".h")) and fnmatch.fnmatch(path, pattern):
                yield path


def copied(source, target):
    """Copies a file that is another one there. It is then younger than what was built of that, as a run that was killed
    in the middle of a change has left it."""
    if not os.path.exists(target) or not filecmp.cmp(source, target, shallow=False):
        shutil.copy(source, target)
    return target


class Mutants:
    def __init__(self, source, work):
        self.source = os.path.realpath(source)
        self.tree = os.path.join(os.path.realpath(work), "tree")
        self.build = os.path.join(self.tree, "build/mutants")
        self.results = os.path.join(os.path.realpath(work), "results.jsonl")
        os.makedirs(work, exist_ok=True)
        self.lock = open(os.path.join(work, "lock"), "w")
        fcntl.flock(self.lock, fcntl.LOCK_EX)  # two changes at a time would tell of neither

    def prepare(self):
        """Copies what has changed, so that little is built again."""
        def left_out(folder, names):
            return {"build", ".git"}.intersection(names) if folder == self.source else ()

        shutil.copytree(self.source, self.tree, ignore=left_out, copy_function=copied, dirs_exist_ok=True)
        if not os.path.exists(os.path.join(self.build, "build.ninja")):
            linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=gold", "-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=gold"] if shutil.which("ld.gold") else []
            subprocess.run(["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build, "-DCMAKE_BUILD_TYPE=Release", "-DRAXEL_HOST=OFF",
                            "-DRAXEL_WERROR=OFF", "-DCMAKE_CXX_FLAGS_RELEASE=-O1", *linker], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        assert self.compiles(WHOLE_BUILD), "the sources themselves do not build"
        assert self.notices("") is None, "the tests fail as it is"

    def compiles(self, patience=600):
        return self.ends(["cmake", "--build", self.build, "--target", *PROGRAMS], {}, patience) == 0

    def ends(self, command, settings, patience):
        """The exit code of a command; of one that takes too long, another one than 0."""
        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (patience, patience))

        process = subprocess.Popen(command, cwd=self.build, env={**os.environ, **settings}, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=limit,
                                   pass_fds=[self.lock.fileno()])  # whoever goes on when this is killed holds up the next run
        try:
            return process.wait(20 * patience)
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

    def keep(self, fresh):
        """Adds what has become of some changes to the results, if the tests pass without them still."""
        if fresh:
            assert self.compiles() and self.notices("") is None, "the tests fail as it is, and the last changes were judged by nothing"
            with open(self.results, "a", encoding="utf-8") as lines:
                lines.writelines(json.dumps(each) + "\n" for each in fresh)
            fresh.clear()

    def known(self, sources):
        """What has become of the changes of lines that are still as they were."""
        found = {}
        if os.path.exists(self.results):
            with open(self.results, encoding="utf-8") as lines:
                for each in map(json.loads, lines):
                    place = Place(*(each[name] for name in Place._fields))
                    text = sources.get(place.file, "")
                    at = place.offset(text)
                    if text.startswith(place.was, at) and each.get("text") in (None, line_of(text, at)):
                        found[place] = each
        return found

    def run(self, wanted):
        end = time.monotonic() + wanted.seconds
        self.prepare()
        sources = {}
        for path in names(self.source, "*"):
            with open(os.path.join(self.source, path), encoding="utf-8") as file:
                sources[path] = file.read()
        every = [Place.of(path, text, *change) for path, text in sources.items() if fnmatch.fnmatch(path, wanted.files)
                 for change in changes(path, text)]
        random.Random(1).shuffle(every)
        known = self.known(sources)
        reasons = Equivalent(os.path.join(self.source, EQUIVALENT))
        tried, fresh = 0, []
        judged, in_time = 0, True
        for place in every:
            if judged == wanted.number:
                break
            seen = known.get(place)
            again = wanted.again and seen and seen["end"] == "survives" and not reasons.reason(sources[place.file], place)
            in_time = not (again or not seen) or time.monotonic() <= end
            if not in_time:
                break
            if seen and not again:
                judged += compiled(seen)
                continue
            tried += 1
            at = place.offset(sources[place.file])
            known[place] = {**place._asdict(), "text": line_of(sources[place.file], at), "end": self.judge(place.file, at, place.was, place.new)}
            judged += compiled(known[place])
            fresh.append(known[place])
            if len(fresh) == AT_ONCE:
                self.keep(fresh)
        self.keep(fresh)
        return Result(in_time, tried, len(every), known, {place: reasons.reason(sources[place.file], place) for place in known})


def compiled(each):
    return each["end"] != "does not compile"


class Result:
    """What became of the changes that compile: noticed by a test, equivalent with a reason, or neither."""

    def __init__(self, through, tried, of, known, reasons):
        self.through, self.tried, self.of = through, tried, of
        ends = {place: each["end"] for place, each in known.items() if compiled(each)}
        self.judged = len(ends)
        alive = sorted(place for place, end in ends.items() if end == "survives")
        self.noticed = self.judged - len(alive)
        self.equivalent = {place: reasons[place] for place in alive if reasons[place]}
        self.survivors = [place for place in alive if not reasons[place]]

    def tell(self):
        for place, reason in self.equivalent.items():
            print(f"{place.told()} changes nothing: {reason}")
        for place in self.survivors:
            print(f"{place.told()} survives")
        able = self.judged - len(self.equivalent)
        shares = [100 * self.noticed / max(1, count) for count in (able, self.judged)]
        self.share = shares[0]
        print(f"mutants: {self.tried} tried now, of {self.of} that there are")
        print(json.dumps({"mutants": self.judged, "noticed": self.noticed, "equivalent, each with its reason": len(self.equivalent),
                          "survivors": len(self.survivors),
                          "noticed of those that can be": f"{shares[0]:.1f} %", "noticed of all": f"{shares[1]:.1f} %"}))


def check(source):
    stale = Equivalent(os.path.join(source, EQUIVALENT)).stale(source)
    for path, line, was, number, new in stale:
        print(f"{EQUIVALENT}: {path} has no {was!r} {number} to {new!r} in: {line}")
    return 1 if stale else 0


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--source", required=True)
    arguments.add_argument("--work")
    arguments.add_argument("--number", type=int, default=1000)
    arguments.add_argument("--seconds", type=float, default=1e9)
    arguments.add_argument("--files", default="*")
    arguments.add_argument("--again", action="store_true")
    arguments.add_argument("--check", action="store_true")
    wanted = arguments.parse_args()
    if wanted.check:
        return check(wanted.source)
    result = Mutants(wanted.source, wanted.work).run(wanted)
    result.tell()
    if not result.through:
        return NOT_YET
    return 0 if result.share >= ENOUGH else 1


if __name__ == "__main__":
    sys.exit(main())
