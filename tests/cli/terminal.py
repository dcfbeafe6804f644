#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The progress line: on a terminal it comes and goes, and elsewhere it never shows.

    terminal.py --build FOLDER --source FOLDER
"""

import array
import fcntl
import json
import os
import pty
import signal
import subprocess
import sys
import tempfile
import termios
import time

import shared

WIDTH, HEIGHT = 2000, 1000
NONE_TO_TRY = 77  # what CTest takes for a test left out
NO_CREATE = 73


class Terminal:
    """A process whose standard error, or another stream, is a terminal."""

    def __init__(self, command, stream="stderr", **how):
        self.mine, theirs = pty.openpty()
        self.process = subprocess.Popen(command, **{stream: theirs}, **how)
        os.close(theirs)

    def rest(self):
        """All that it writes until it ends."""
        seen = b""
        while True:
            try:
                piece = os.read(self.mine, 4096)
            except OSError:  # how a terminal says that nobody writes any more
                piece = b""
            if not piece:
                return seen, self.process.wait()
            seen += piece


def until_read(pipe):
    """Waits until nothing is left in a pipe."""
    left = array.array("i", [1])
    patience = time.monotonic() + 120
    while left[0]:
        if time.monotonic() > patience:
            raise TimeoutError("nobody reads what is sent")
        time.sleep(0.001)
        fcntl.ioctl(pipe, termios.FIONREAD, left)


def slowly(process):
    """A picture that takes its time to come: the line shows only for what takes long. Returns when it was all there."""
    process.stdin.write(b"P6\n%d %d\n255\n" % (WIDTH, HEIGHT))
    process.stdin.write(os.urandom(3 * WIDTH * HEIGHT // 2))
    process.stdin.flush()
    until_read(process.stdin)
    time.sleep(0.5)
    process.stdin.write(os.urandom(3 * WIDTH * HEIGHT // 2))
    process.stdin.close()
    return time.monotonic()


def main():
    _, source, program = shared.places()
    shared.take_signals()
    try:
        for end in pty.openpty():
            os.close(end)
    except OSError as fault:
        print(f"terminal: this system has none to try: {fault}")
        return NONE_TO_TRY
    faults = []
    checks = 0

    def check(what, fine, seen):
        nonlocal checks
        checks += 1
        if not fine:
            faults.append(f"{what}: {seen!r}")

    with tempfile.TemporaryDirectory(prefix="raxel-terminal-") as folder:
        out = os.path.join(folder, "out.tif")

        shown = Terminal([program, "-c", "packbits", "-", out], stdin=subprocess.PIPE)
        there = slowly(shown.process)
        seen, code = shown.rest()
        check("a line", code == 0 and b"] " in seen and b"%" in seen, seen)
        # Reading took half a second, which tells nothing about the writing, unless that took as long.
        check("no time left is made up", b"left" not in seen or time.monotonic() - there > 0.5, seen)
        check("the line is wiped", seen.endswith(b"\r\x1b[K"), seen)

        for option in ("-q", "--json"):
            silent = Terminal([program, option, "-c", "packbits", "-", out], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
            slowly(silent.process)
            seen, code = silent.rest()
            check(f"nothing with {option}", code == 0 and seen == b"", seen)

        refused = Terminal([program, os.path.join(source, "samples/chart4.png"), "-"], "stdout",
                           stderr=subprocess.PIPE)
        seen, code = refused.rest()
        check("no picture on a terminal", code == NO_CREATE and seen == b"" and b"is a terminal" in refused.process.stderr.read(),
              (code, seen))

        # The same one by its name: a picture that would fit into it without anybody who reads.
        dot = os.path.join(folder, "dot.pgm")
        with open(dot, "wb") as file:
            file.write(b"P5\n1 1\n255\n0")
        mine, theirs = pty.openpty()
        os.set_blocking(mine, False)
        named = subprocess.run([program, dot, os.ttyname(theirs)], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE, start_new_session=True, check=False)
        try:
            seen = os.read(mine, 4096)
        except BlockingIOError:
            seen = b""
        check("no picture on a terminal's name", named.returncode == NO_CREATE and seen == b"" and b"is a terminal" in named.stderr,
              (named.returncode, named.stderr, seen))
        os.close(mine)
        os.close(theirs)

        piped = subprocess.Popen([program, "-c", "packbits", "-", out], stdin=subprocess.PIPE, stderr=subprocess.PIPE)
        slowly(piped)
        seen = piped.stderr.read()
        check("nothing in a pipe", piped.wait() == 0 and seen == b"", seen)

        # Several processes share one line, which counts.
        pipes = [os.path.join(folder, name) for name in ("a.fifo", "b.fifo")]
        for path in pipes:
            os.mkfifo(path)
        counted = Terminal([program, "-j", "2", "-d", folder, *pipes])
        writers = [os.open(path, os.O_WRONLY) for path in pipes]
        time.sleep(0.4)
        for writer in writers:
            os.write(writer, b"P5\n1 1\n255\n0")
            os.close(writer)
        seen, code = counted.rest()
        check("pictures are counted", code == 0 and b"2 pictures  1 done" in seen and b"2 done" in seen, (code, seen))
        check("the count is wiped", seen.endswith(b"\r\x1b[K"), seen)

        # A process that somebody ends has its place in the document.
        parent = subprocess.Popen([program, "--json", "-j", "2", "-d", folder, *pipes],
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        writers = [os.open(path, os.O_WRONLY) for path in pipes]
        with open(f"/proc/{parent.pid}/task/{parent.pid}/children") as children:
            os.kill(int(children.read().split()[0]), signal.SIGTERM)
        for writer in writers:
            try:
                os.write(writer, b"P5\n1 1\n255\n0")
            except BrokenPipeError:
                pass
            os.close(writer)
        printed, told = parent.communicate()
        results = json.loads(printed)["results"]
        check("an ended process", [r["exit"] for r in results] == [143, 0] and parent.returncode == 143
              and b"a.fifo: the export was stopped" in told, (printed, told))

        # Ctrl-C while the picture is still coming.
        stopped = Terminal([program, "-", out], stdin=subprocess.PIPE)
        stopped.process.stdin.write(b"P6\n2 2\n255\n")
        stopped.process.stdin.flush()
        until_read(stopped.process.stdin)
        stopped.process.send_signal(signal.SIGINT)
        seen, code = stopped.rest()
        check("stopped", code == 130 and b"raxel-export: stopped" in seen, (code, seen))

        # Children end with their parent, and leave nothing behind.
        inputs = []
        for i in range(4):
            path = os.path.join(folder, f"{i}.fifo")
            os.mkfifo(path)
            inputs.append(path)
        parent = subprocess.Popen([program, "-q", "-j", "4", "-d", folder, *inputs], stderr=subprocess.PIPE)
        writers = [os.open(path, os.O_WRONLY) for path in inputs]  # opens when a child reads
        for writer in writers:
            os.write(writer, b"P5\n9 9\n255\n")
            until_read(writer)
        parent.send_signal(signal.SIGTERM)
        code = parent.wait()
        parent.stderr.read()  # ends when the last child has gone
        check("a terminated parent", code == 128 + signal.SIGTERM, code)
        for writer in writers:
            os.close(writer)
        left = [name for name in os.listdir(folder) if ".raxel-" in name]
        check("nothing is left", not left, left)
    return shared.tell(faults, f"terminal: {checks - len(faults)} passed, {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
