#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A campaign of parts that do nothing: it stops when its time is up, goes on where it was, and its figures add up.

    frame_test.py
"""

import json
import os
import signal
import sys
import tempfile

sys.path[:0] = [os.path.dirname(os.path.realpath(__file__)), os.path.join(os.path.dirname(os.path.realpath(__file__)), "../cli")]

import campaign  # noqa: E402
import processes  # noqa: E402
import shared  # noqa: E402

# Notes that it ran, tells its figures, and ends with the code that is its second argument.
UNIT = """sh -c 'echo $1 >>log; echo "{{\\"kills\\": 5}}"; echo x: 2 passed, $2 failed; exit $2' unit"""

SECONDS = "sh -c 'echo {seconds} >>log'"


def lines(path):
    with open(path) as file:
        return file.read().splitlines()


def main():
    checks = shared.Checks(None)
    with tempfile.TemporaryDirectory(prefix="raxel-frame-") as folder:
        os.mkdir(os.path.join(folder, "docs"))
        record, document = os.path.join(folder, campaign.RECORD), os.path.join(folder, campaign.DOCUMENT)
        open(record, "w").close()
        with open(document, "w") as out:
            out.write("before\n" + campaign.BEGIN + "old\n" + campaign.END + "behind\n")
        log = os.path.join(folder, "log")

        campaign.parts = lambda source: [campaign.Part("steps", UNIT, ["a 0", "b 0", "c 0"]), campaign.Part("crowd", UNIT, ["d 1"])]
        first = campaign.Campaign(folder, folder, 1)
        first.left = lambda: 0 if os.path.exists(log) and len(lines(log)) == 2 else 100
        checks.same("stopped", first.run(), 0)
        checks.same("until then", lines(log), ["a", "b"])
        checks.same("nothing is noted of what is not through", lines(record), [])

        checks.same("one part finds something", campaign.Campaign(folder, folder, None).run(), 1)
        checks.same("it went on", lines(log), ["a", "b", "c", "d"])
        noted = [json.loads(line) for line in lines(record)]
        checks.same("what is noted", [(line["part"], line["figure"]) for line in noted],
                    [("steps", {"kills": 15, "checks": 6, "failed": 0}), ("crowd", {"kills": 5, "checks": 2, "failed": 1})])
        with open(document) as file:
            written = file.read()
        checks.true("the document around the table", written.startswith("before\n") and written.endswith("behind\n") and "old\n" not in written)
        checks.true("its figures", "| 15 kills, 6 checks, 0 failed |" in written and "1 failed |" in written)
        checks.true("and what there is none of", "not yet measured" in written)
        checks.true("it is as written", campaign.write_document(folder, check=True))
        campaign.note(folder, "fuzzing", "./dev fuzz", "some thousand executions")
        campaign.note(folder, "fuzzing", "./dev fuzz", {"executions": 1000})
        checks.true("it is not, with a figure more", not campaign.write_document(folder, check=True))
        campaign.note(folder, "fuzzing", "./dev fuzz", {"executions": 500})
        campaign.write_document(folder)
        with open(document) as file:
            checks.true("fuzzing adds up", "1,500 executions" in file.read())

        campaign.Campaign(folder, folder, None).run()
        checks.same("a new one begins anew", lines(log), ["a", "b", "c", "d"] * 2)

        # Killed when a figure was noted, and the state still said that it was not.
        os.truncate(record, 0)
        campaign.parts = lambda source: [campaign.Part("fuzzing", UNIT, ["a 0", "b 0"])]
        state = os.path.join(folder, "build/campaign/state.json")
        killed = campaign.Campaign(folder, folder, None)
        whole = killed.save
        killed.save = lambda: whole() if "fuzzing" in killed.state else None
        killed.run()
        campaign.Campaign(folder, folder, None).run()
        checks.same("a figure is noted once", len(lines(record)), 1)
        campaign.Campaign(folder, folder, None).run()
        checks.same("another campaign's as well", len(lines(record)), 2)
        with open(state, "w"):
            pass
        checks.same("a state that a power cut has emptied", campaign.Campaign(folder, folder, None).state, {})

        # What takes as long as it may leaves something for the others.
        os.unlink(log)
        campaign.parts = lambda source: [campaign.Part("mutation", SECONDS, share=0.5), campaign.Part("fuzzing", SECONDS)]
        campaign.Campaign(folder, folder, 1).run()
        seconds = [int(line) for line in lines(log)]
        checks.true(f"half of the time, and the other half: {seconds}", 1700 < seconds[0] <= 1800 < seconds[1] <= 3600)

        # A unit ends with its campaign.
        campaign.parts = lambda source: [campaign.Part("steps", "sh -c 'echo $$ >>log; exec sleep 60'")]
        os.unlink(log)
        child = os.fork()
        if child == 0:
            campaign.Campaign(folder, folder, None).run()
            os._exit(0)
        processes.until(lambda: os.path.exists(log) and lines(log))
        unit = int(lines(log)[0])
        checks.true("a unit at work", processes.is_running(unit))
        os.kill(child, signal.SIGKILL)
        os.waitpid(child, 0)
        checks.true("a unit goes on without its campaign", processes.until(lambda: not processes.is_running(unit), 10))

        # What has not got as far as it is to keeps its place, and the others run.
        os.truncate(record, 0)
        campaign.parts = lambda source: [campaign.Part("mutation", UNIT, ["a 75"]), campaign.Part("crowd", UNIT, ["d 0"])]
        campaign.Campaign(folder, folder, None).run()
        checks.same("what is not through", [json.loads(line)["part"] for line in lines(record)], ["crowd"])
        checks.same("no test is no success", campaign.figure_of("[  PASSED  ] 0 tests.\n"), {"tests": 0, "failed": 1})

        # What cannot run here is told of, and takes no figure's place.
        os.truncate(record, 0)
        campaign.parts = lambda source: [campaign.Part("golden", UNIT, ["a 0", "b 77"]), campaign.Part("crowd", UNIT, ["d 77"])]
        campaign.Campaign(folder, folder, None).run()
        checks.same("what was left out", [(noted["part"], noted["figure"].get("left out")) for noted in map(json.loads, lines(record))], [("golden", 1)])
    return checks.told()


if __name__ == "__main__":
    sys.exit(main())
