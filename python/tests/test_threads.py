# SPDX-License-Identifier: MIT
"""Progress, stops, signals and threads."""

from __future__ import annotations

import os
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import numpy as np
import pytest
from conftest import Array, Shown

import raxel


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


SCRIPT = """
import sys, time, threading, os, signal
import numpy as np
import raxel
picture = np.random.default_rng(1).integers(0, 256, (3000, 4000, 3), np.uint8)
raxel.tobytes(picture[:8])
options = eval(sys.argv[2])
sent = []
def interrupt():
    time.sleep(float(sys.argv[3]))
    sent.append(time.monotonic())
    os.kill(os.getpid(), signal.SIGINT)
threading.Thread(target=interrupt).start()
try:
    raxel.save(picture, sys.argv[1], **options)
except KeyboardInterrupt:
    print((time.monotonic() - sent[0]) * 1000)
else:
    print("not stopped")
"""


@pytest.mark.parametrize(
    "options", ["{'compress': 'lzw'}", "{'mode': 'color256', 'compress': 'lzw'}"], ids=["lzw", "color256"]
)
def test_an_interrupt_stops_at_once_and_the_old_file_stays(tmp_path: Path, options: str) -> None:
    path = tmp_path / "a.tif"
    path.write_bytes(b"II*\0 the old file")
    done = subprocess.run(
        [sys.executable, "-c", SCRIPT, str(path), options, "0.08"], capture_output=True, text=True, check=True
    )
    # The library looks every 20 ms, and Python answers within 100; a machine full of work may add to it.
    assert float(done.stdout) < 250, done.stdout
    assert path.read_bytes() == b"II*\0 the old file"
    assert os.listdir(tmp_path) == ["a.tif"]


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
