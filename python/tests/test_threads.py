# SPDX-License-Identifier: MIT
"""Progress, stops, signals and threads."""

from __future__ import annotations

import json
import os
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np
import pytest
from conftest import Array, Shown
from PIL import Image

import raxel
from raxel._export import Pictures
from raxel._options import Value


def test_progress_rises_from_0_to_1(tmp_path: Path, large: Array) -> None:
    heard: list[float] = []
    here = threading.get_ident()

    def progress(fraction: float) -> None:
        assert threading.get_ident() == here
        heard.append(fraction)

    raxel.save(large, tmp_path / "a.tif", compress="packbits", progress=progress)
    assert heard == sorted(heard)
    assert heard[0] == 0.0 and heard[-1] == 1.0 and len(heard) > 2


def test_progress_of_pages(photo: Array) -> None:
    heard: list[float] = []
    raxel.tobytes([photo, photo], progress=heard.append)
    assert heard == sorted(heard) and heard[0] == 0.0 and 0.5 in heard and heard[-1] == 1.0


@pytest.mark.parametrize("thread", [False, True])
def test_progress_of_files_of_pages(tmp_path: Path, photo: Array, thread: bool) -> None:
    """Each page is its part, also where one file has them all, and the whole is told once, at the end."""
    five = tmp_path / "five.tif"
    raxel.save([photo] * 5, five)

    def heard_of(picture: Pictures, **options: Value) -> list[float]:
        heard: list[float] = []

        def run() -> None:
            raxel.save(picture, tmp_path / "a.tif", pages=True, progress=heard.append, **options)

        if thread:
            with ThreadPoolExecutor() as pool:
                pool.submit(run).result()
        else:
            run()
        assert heard == sorted(heard) and heard[0] == 0.0
        assert heard[-1] == 1.0 and heard.count(1.0) == 1
        return heard

    assert {0.2, 0.4, 0.6, 0.8} <= set(heard_of(five))
    assert {0.25, 0.5, 0.75} <= set(heard_of(five, page="5,1,1,2"))
    # What is in the second file is known when it is opened: of six pages one is done, then two.
    assert {0.5, 4 / 6, 5 / 6} <= set(heard_of([photo, five]))
    assert max(heard_of([five, photo])[:-1]) == 0.99


@pytest.mark.parametrize("thread", [False, True])
def test_false_stops_and_the_old_file_stays(tmp_path: Path, photo: Array, thread: bool) -> None:
    path = tmp_path / "a.tif"
    path.write_bytes(b"")

    def run() -> None:
        with pytest.raises(raxel.Stopped):
            raxel.save(photo, path, progress=lambda fraction: False)

    if thread:
        with ThreadPoolExecutor() as pool:
            pool.submit(run).result()
    else:
        run()
    assert path.read_bytes() == b"" and os.listdir(tmp_path) == ["a.tif"]


@pytest.mark.parametrize("thread", [False, True])
def test_what_progress_raises_comes_out(tmp_path: Path, photo: Array, thread: bool) -> None:
    def progress(fraction: float) -> None:
        raise ZeroDivisionError(fraction)

    def run() -> None:
        with pytest.raises(ZeroDivisionError):
            raxel.save(photo, tmp_path / "a.tif", progress=progress)

    if thread:
        with ThreadPoolExecutor() as pool:
            pool.submit(run).result()
    else:
        run()
    assert os.listdir(tmp_path) == []


OLD = b"II*\0 the old file"
INTERRUPTED = """
import json, os, signal, sys, threading, time
import numpy as np
import raxel
target, source, options = sys.argv[1], sys.argv[2], eval(sys.argv[3])
picture = source or np.random.default_rng(1).integers(0, 256, (3000, 4000, 3), np.uint8)
raxel.tobytes(np.zeros((8, 8, 3), np.uint8))
def seconds(**options):
    start = time.monotonic()
    raxel.tobytes(picture, **options)
    return time.monotonic() - start
whole = raxel.tobytes(picture, **options)
delay = min(0.08, seconds(**options) / 2)
if options.get("verify"):
    delay = (seconds(**{**options, "verify": False}) + seconds(**options)) / 2
def interrupt():
    time.sleep(delay)
    sent.append(time.monotonic())
    os.kill(os.getpid(), signal.SIGINT)
stopped = []
for _ in range(12):
    with open(target, "wb") as old:
        old.write(b"II*\\0 the old file")
    sent, finished = [], False
    sender = threading.Thread(target=interrupt)
    try:
        sender.start()
        raxel.save(picture, target, **options)
        finished = True
        sender.join()
        time.sleep(0.1)
    except KeyboardInterrupt:
        took = (time.monotonic() - sent[0]) * 1000
    for thread in threading.enumerate():
        if thread.name == "raxel":
            thread.join()
    with open(target, "rb") as file:
        now = file.read()
    # How fast the machine is changes: an interrupt may also come when the new file has taken the old one's
    # place, and comes earlier the next time.
    if finished or now == whole:
        delay *= 0.7
        continue
    stopped.append([took, now[:200].decode("latin-1")])
    if len(stopped) == 3:
        break
print(json.dumps(stopped))
"""


@pytest.mark.parametrize(
    "what, options",
    [
        ("array", "{'compress': 'lzw'}"),
        ("array", "{'mode': 'color256', 'compress': 'lzw'}"),
        ("array", "{'mode': 'rgb', 'compress': 'lzw', 'verify': True}"),
        ("path", "{'mode': 'color256'}"),
    ],
    ids=["lzw", "color256", "verify", "path"],
)
def test_an_interrupt_stops_at_once_and_the_old_file_stays(tmp_path: Path, what: str, options: str) -> None:
    """At the beginning, or in the middle of the comparison where there is one. A machine full of work may delay some."""
    path, source = tmp_path / "a.tif", tmp_path / "source.png"
    if what == "path":
        y, x = np.mgrid[0:3000, 0:4000]
        Image.fromarray((x * y).astype(np.uint8)).save(source, compress_level=1)
    arguments = [str(path), str(source) if what == "path" else "", options]
    done = subprocess.run([sys.executable, "-c", INTERRUPTED, *arguments], capture_output=True, text=True, check=True)
    stopped = json.loads(done.stdout)
    assert len(stopped) == 3 and min(took for took, _ in stopped) < 100, done.stdout
    assert {content.encode("latin-1") for _, content in stopped} == {OLD}
    assert set(os.listdir(tmp_path)) <= {"a.tif", "source.png"}


SLOW_DISK = """
import os, signal, sys, threading, time
import numpy as np
import raxel
gates = os.environ["RAXEL_SLOW_DISK"]
def interrupt():
    while not os.listdir(gates):
        time.sleep(0.002)
    os.kill(os.getpid(), signal.SIGINT)
threading.Thread(target=interrupt).start()
if sys.argv[3] == "soon":
    begin = threading.Thread.start
    def start(thread):
        begin(thread)
        time.sleep(60)
    threading.Thread.start = start
try:
    raxel.save(np.zeros((8, 8, 3), np.uint8), sys.argv[1], **eval(sys.argv[2]))
except KeyboardInterrupt:
    print("stopped")
for gate in os.listdir(gates):
    os.unlink(os.path.join(gates, gate))
"""


@pytest.mark.parametrize(
    "options, when",
    [("{}", "later"), ("{'as_is': True}", "later"), ("{'pages': True}", "later"), ("{}", "soon")],
    ids=["picture", "as-is", "pages", "starting"],
)
def test_an_interrupt_while_the_disk_takes_its_time_leaves_the_old_file(
    tmp_path: Path, options: str, when: str
) -> None:
    """Wherever Python is: soon means that it has not come back from starting the thread that works."""
    path, gates = tmp_path / "a.tif", tmp_path / "gates"
    path.write_bytes(OLD)
    gates.mkdir()
    slow = str(Path(os.environ["RAXEL_BUILD"]) / "tests" / "cli" / "libslow_disk.so")
    done = subprocess.run(
        [sys.executable, "-c", SLOW_DISK, str(path), options, when], capture_output=True, text=True, timeout=60,
        env={**os.environ, "LD_PRELOAD": slow, "RAXEL_SLOW_DISK": str(gates)},
    )
    assert (done.returncode, done.stdout) == (0, "stopped\n"), done.stderr
    assert path.read_bytes() == OLD
    assert sorted(os.listdir(tmp_path)) == ["a.tif", "gates"]


def test_python_goes_on_meanwhile(large: Array) -> None:
    """The library's time is not Python's: another thread gets on while it works."""
    ticks: list[float] = []
    ended = threading.Event()

    def tick() -> None:
        while not ended.is_set():
            ticks.append(time.monotonic())
            time.sleep(0.005)

    other = threading.Thread(target=tick)
    other.start()
    start = time.monotonic()
    raxel.tobytes(large[:1500])
    end = time.monotonic()
    ended.set()
    other.join()
    during = [t for t in ticks if start < t < end]
    assert len(during) > 3
    assert max(np.diff(during)) < (end - start) / 2


def test_threads_queue_and_are_right(photo: Array, shown: Shown) -> None:
    pictures = [np.roll(photo, n, axis=1) for n in range(24)]
    modes = ["rgb", "color256", "grey256", "bilevel"]
    expected = [raxel.tobytes(p, mode=modes[n % 4]) for n, p in enumerate(pictures)]
    with ThreadPoolExecutor(6) as pool:
        got = list(pool.map(lambda job: raxel.tobytes(job[1], mode=modes[job[0] % 4]), enumerate(pictures)))
    assert got == expected
    assert np.array_equal(shown(got[0]), pictures[0])
