#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Changes of a library of three lines: which of them are noticed, which are equivalent, and which survive.

    mutants_test.py
"""

import json
import os
import signal
import sys
import tempfile

sys.path[:0] = [os.path.dirname(os.path.realpath(__file__)), os.path.join(os.path.dirname(os.path.realpath(__file__)), "../cli")]

import mutants  # noqa: E402
import shared  # noqa: E402

FILES = {
    "CMakeLists.txt": """cmake_minimum_required(VERSION 3.20)
project(small CXX)
foreach(name raxel_tests raxel_library_tests raxel_hostile_tests)
  add_executable(${name} src/small.cpp tests.cpp)
endforeach()
""",
    "src/small.cpp": """const int *none = nullptr;  // no product
int larger(int a, int b) {
  if (a > b) return a;
  return b;
}
int twice(int n) {
  return n * 2;
}
""",
    # Equal numbers tell nothing of > and >=, and 2 + 2 is 2 * 2.
    "tests.cpp": """int larger(int, int);
int twice(int);
#include <cstdlib>
int main() { return std::getenv("SMALL_DISK_IS_FULL") ? 1 : larger(1, 2) == 2 && larger(2, 1) == 2 && twice(2) == 4 ? 0 : 1; }
""",
    mutants.EQUIVALENT: """# a comment
src/small.cpp: if (a > b) return a;
    '>' to '>=': of equal numbers either is the larger one
""",
}


def write(folder, name, text):
    path = os.path.join(folder, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as file:
        file.write(text)


def main():
    checks = shared.Checks(None)
    with tempfile.TemporaryDirectory(prefix="raxel-mutants-") as folder:
        source, work = os.path.join(folder, "source"), os.path.join(folder, "work")
        for name, text in FILES.items():
            write(source, name, text)

        def run(**settings):
            wanted = {"seconds": 1e9, "number": 1000, "files": "*", "again": False, **settings}
            return mutants.Mutants(source, work).run(type("Wanted", (), wanted))

        def told(places):
            return [place.told() for place in places]

        first = run(number=2)
        checks.same("two are tried", (first.tried, first.of, first.judged), (2, 5, 2))
        checks.true("as many as are wanted need no time", run(number=2, seconds=-1).through)
        checks.true("more of them do", not run(number=3, seconds=-1).through)
        result = run()
        checks.same("the others are, when it goes on", (result.tried, result.judged, result.noticed), (3, 5, 3))
        checks.same("what nothing can notice", {place.told(): why for place, why in result.equivalent.items()},
                    {"src/small.cpp:3:9: '>' to '>='": "of equal numbers either is the larger one"})
        checks.same("what no test notices", told(result.survivors), ["src/small.cpp:7:12: '*' to '+'"])
        checks.same("the list is about what there is", mutants.check(source), 0)

        write(source, "src/small.cpp", "\n" + FILES["src/small.cpp"])
        checks.same("a line that has moved is tried again", run().tried, 5)
        write(source, "tests.cpp", FILES["tests.cpp"].replace("twice(2) == 4", "twice(3) == 6"))
        again = run(again=True)
        checks.same("survivors are, when asked", (again.tried, again.noticed, again.survivors), (1, 4, []))
        checks.same("all is through, or the time was up", (again.through, run(again=True, seconds=-1).through), (True, True))
        # One that was killed leaves a change in the copy, and what was built of it.
        write(work, "tree/src/small.cpp", "\n" + FILES["src/small.cpp"].replace("return b;", "return a;"))
        killed = mutants.Mutants(source, work)
        checks.true("the change is built", killed.compiles())
        child = os.fork()
        if child == 0:
            signal.alarm(1)
            mutants.Mutants(source, work)
            os._exit(0)
        checks.same("another run waits for the end of this one", os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), -signal.SIGALRM)
        killed.lock.close()
        checks.same("a run that was killed leaves nothing behind", run().tried, 0)
        write(source, mutants.EQUIVALENT, FILES[mutants.EQUIVALENT].replace("(a > b)", "(b > a)"))
        checks.same("the list is about a line that is no more", mutants.check(source), 1)
        full = mutants.Mutants(source, work)
        full.prepare()
        os.environ["SMALL_DISK_IS_FULL"] = "1"
        try:
            full.keep([{"text": "noticed by a full disk"}])
            checks.true("tests that fail as it is judge nothing", False)
        except AssertionError as why:
            checks.true("tests that fail as it is judge nothing", "judged by nothing" in str(why))
        del os.environ["SMALL_DISK_IS_FULL"]
        full.lock.close()
        with open(os.path.join(work, "results.jsonl")) as lines:
            checks.true("each line tells the text of its own", all(json.loads(line)["text"] in FILES["src/small.cpp"] for line in lines))
    return checks.told()


if __name__ == "__main__":
    sys.exit(main())
