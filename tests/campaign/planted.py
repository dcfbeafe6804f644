#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Exports and profiles rewritten in a folder that another user can write, who plants the names of their temporaries.

    planted.py --build FOLDER --source FOLDER [--exports N]

The other user makes links, files and folders of those names, locks them, takes them away again and tries to read what is
there, all the time. No link is followed, nothing half written can be read, and what is written is whole. In a second
folder the other user may take away what is not his, too, and put his own in its place: there an export may fail, and what
comes to lie at the output's name may be his, but still no link is followed and nothing half written can be read. To be run
as root, who can be somebody else.
"""

import argparse
import collections
import fcntl
import json
import os
import random
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.realpath(__file__)), "../cli"))

import shared  # noqa: E402
from processes import Replaced, Run  # noqa: E402

NOBODY = 65534
SLOTS = 12  # of the names that are counted; after ten of them a name is random
ROUNDS_TOLD = 100


class Planter:
    """The other user, in a process of its own, until told to end."""

    def __init__(self, folder, names, wholes, seed):
        self.folder, self.names, self.wholes, self.rng = folder, names, wholes, random.Random(seed)
        self.counts = collections.Counter()
        theirs, self.line = os.pipe()
        told, self.tells = os.pipe()
        self.pid = os.fork()
        if self.pid == 0:
            os.close(self.line)
            os.setgroups([])
            os.setgid(NOBODY)
            os.setuid(NOBODY)
            os.set_blocking(theirs, False)
            self.work(theirs)
            os.write(self.tells, json.dumps(self.counts).encode())
            os._exit(0)
        os.close(theirs)
        os.close(self.tells)
        self.told = told

    def end(self):
        os.write(self.line, b".")
        os.close(self.line)
        said = b"".join(iter(lambda: os.read(self.told, 4096), b""))
        os.waitpid(self.pid, 0)
        os.close(self.told)
        return json.loads(said)

    def work(self, line):
        held = []
        while True:
            try:
                os.read(line, 1)
                return
            except BlockingIOError:
                pass
            for _ in range(ROUNDS_TOLD):
                path = os.path.join(self.folder, self.rng.choice(self.names))
                try:
                    self.step(path, held)
                except OSError:
                    self.counts["in vain"] += 1
                while len(held) > 4:
                    os.close(held.pop(0))

    def step(self, path, held):
        way = self.rng.randrange(7)
        if way == 0:
            os.symlink("victim", path)
            self.counts["links to a file"] += 1
        elif way == 1:
            os.symlink("nothing", path)
            self.counts["links to nothing"] += 1
        elif way == 2:
            held.append(os.open(path, os.O_RDWR | os.O_CREAT | os.O_EXCL | os.O_NOFOLLOW, 0o666))
            os.write(held[-1], b"planted")
            fcntl.flock(held[-1], fcntl.LOCK_EX | fcntl.LOCK_NB)
            self.counts["files"] += 1
        elif way == 3:
            os.mkdir(path)
            self.counts["folders"] += 1
        elif way == 4:
            os.rmdir(path)
        elif way == 5:
            os.unlink(path)
        else:
            fd = os.open(path, os.O_RDONLY | os.O_NOFOLLOW)
            if os.fstat(fd).st_uid != NOBODY:
                with open(fd, "rb", closefd=False) as file:
                    content = file.read()
                self.counts["whole temporaries read" if content in self.wholes else "half temporaries read"] += 1
            os.close(fd)


class Planted(Replaced):
    def run(self, exports, rights):
        os.chmod(self.folder, rights)
        own = rights & 0o1000 != 0  # what is root's stays
        victim, nothing = os.path.join(self.folder, "victim"), os.path.join(self.folder, "nothing")
        with open(victim, "wb") as out:
            out.write(b"mine")
        profile = os.path.join(self.folder, "own.ini")
        settings = b"[S]\r\nDriver=RAXEL.1\r\nCompression Mode=1\r\n"
        pages = self.pages()
        arguments = [pages[0], self.target, "-c", "lzw", "--profile", profile, "--section", "S", "--save"]
        self.prepare(profile, settings)
        first = Run([self.program, "-q", *arguments])
        self.check("undisturbed", first.end() == 0, first)
        new, saved = self.content(), self.bytes_of(profile)

        names = [f".{name}.raxel-{slot}" for name in ("out.tif", "own.ini") for slot in range(SLOTS)]
        planters = [Planter(self.folder, names, (new, saved), seed) for seed in range(2)]
        for _ in range(exports):
            self.prepare(profile, settings)
            process = Run([self.program, "-q", *arguments])
            if not own:
                self.check("an export or none", process.end() in (0, 70, 73, 74), process)
                continue
            self.check("an export", process.end() == 0, process)
            self.check("its file", self.content() == new, process)
            self.check("its profile", self.bytes_of(profile) == saved, process)
            self.check("no link at their names", not os.path.islink(self.target) and not os.path.islink(profile))
        counts = collections.Counter()
        for planter in planters:
            counts.update(planter.end())
        self.check("a file that a link was to", self.bytes_of(victim) == b"mine" and os.stat(victim).st_uid == 0)
        self.check("a file that a link was to, and was not there", not os.path.lexists(nothing))
        self.check("what is not whole could be read", counts["half temporaries read"] == 0, counts)
        for kind in ("links to a file", "links to nothing", "files", "folders"):
            self.check(f"{kind} were planted", counts[kind] > exports, counts)
        counts["exports with a profile"] = exports
        return counts

    def prepare(self, profile, settings):
        for path in (self.target, profile):  # no link that has come to be there is ours to follow
            if os.path.islink(path):
                os.unlink(path)
        self.put_old()
        with open(profile, "wb") as out:
            out.write(settings)

    @staticmethod
    def bytes_of(path):
        with open(path, "rb") as file:
            return file.read()


def main():
    arguments = argparse.ArgumentParser(add_help=False)
    arguments.add_argument("--exports", type=int, default=1000)
    wanted, sys.argv[1:] = arguments.parse_known_args()
    _, _, program = shared.places()
    shared.take_signals()
    if os.geteuid() != 0:
        print("planted: only root can be somebody else")
        return 77
    counts, faults, checks = collections.Counter(), [], 0
    for rights in (0o1777, 0o777):
        with tempfile.TemporaryDirectory(prefix="raxel-planted-") as folder:
            tried = Planted(program, folder)
            counts.update(tried.run(wanted.exports, rights))
            faults += tried.faults
            checks += tried.checks
    planted = {f"{name} planted": counts[name] for name in ("links to a file", "links to nothing", "files", "folders")}
    print(json.dumps({"exports with a profile": counts["exports with a profile"], **planted, "half temporaries read": counts["half temporaries read"]}))
    return shared.tell(faults, f"planted: {checks - len(faults)} passed, {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
