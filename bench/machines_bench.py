#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Times a folder of pictures by the ways of docs/machines.md, which take turns.

    machines_bench.py --build FOLDER [--runs N] [--folder FOLDER] [--pictures N]

Each way writes a manifest. The Dask cluster, a scheduler and two workers, is there before; every other way starts
its own processes. Prints medians of the seconds by the clock as a table, and the ratio of one process to each.
"""

import argparse
import glob
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import numpy
from PIL import Image

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SIZE = (1600, 1200)

CLIENT = """
import sys, time
from distributed import Client
import raxel.dask
with Client(scheduler_file="scheduler.json") as client:
    client.wait_for_workers(2)
    for line in sys.stdin:
        start = time.perf_counter()
        raxel.dask.export_folder(client, "in", "out", compress="lzw")
        print(time.perf_counter() - start, flush=True)
"""
POOL = """
import glob
from concurrent.futures import ProcessPoolExecutor
from functools import partial
import raxel, raxel.dask
sources = sorted(glob.glob("in/*.png"))
with ProcessPoolExecutor(2) as pool:
    list(pool.map(partial(raxel.export_file, skip_done=True, compress="lzw"), sources, raxel.dask.targets_of(sources, "out")))
"""


def write_pictures(folder, count):
    """Parts of the sample photo, enlarged, with the noise of a camera."""
    noise = numpy.random.default_rng(1).integers(-6, 7, (SIZE[1], SIZE[0], 1), numpy.int16)
    os.mkdir(os.path.join(folder, "in"))
    with Image.open(os.path.join(SOURCE, "samples/photo.png")) as sample:
        photo = sample.convert("RGB")
    for n in range(count):
        box = (n, n, photo.width - count + n, photo.height - count + n)
        part = numpy.asarray(photo.resize(SIZE, Image.BICUBIC, box))
        noisy = (part + noise).clip(0, 255).astype(numpy.uint8)
        Image.fromarray(noisy).save(os.path.join(folder, "in", f"{n:03}.png"), compress_level=1)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--runs", type=int, default=5)
    arguments.add_argument("--folder", default="/dev/shm")
    arguments.add_argument("--pictures", type=int, default=24)
    wanted = arguments.parse_args()
    build = os.path.realpath(wanted.build)
    environment = {**os.environ, "PATH": build + ":" + os.environ["PATH"], "RAXEL_LIBRARY": build + "/raxel.so",
                   "RAXEL_HOST_LIBRARY": build + "/libraxelhost.so.0", "PYTHONPATH": os.path.join(SOURCE, "python")}
    export = "raxel-export -q -c lzw --resume --manifest out/m.jsonl -d out"
    shells = {
        "one process": f"{export} in/*.png",
        "`-j 2`": f"{export} -j 2 in/*.png",
        "GNU parallel, two shares": f"parallel -j 2 {export} --threads 1 --shard {{}}/2 in/*.png ::: 1 2",
        "`ProcessPoolExecutor(2)`": f"exec {sys.executable} pool.py",
    }
    with tempfile.TemporaryDirectory(prefix="raxel-bench-", dir=wanted.folder) as folder:
        write_pictures(folder, wanted.pictures)
        for name, program in (("pool.py", POOL), ("client.py", CLIENT)):
            with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                file.write(program)
        start = lambda *command, **more: subprocess.Popen(command, cwd=folder, env=environment, **more)
        quiet = {"stderr": subprocess.DEVNULL}
        cluster = ["--scheduler-file", "scheduler.json", "--host", "127.0.0.1", "--no-dashboard"]
        processes = [start("dask-scheduler", *cluster, "--port", "0", **quiet)]
        try:
            while not glob.glob(os.path.join(folder, "scheduler.json")):
                time.sleep(0.1)
            processes += [start("dask-worker", *cluster, "--nthreads", "1", "--no-nanny", **quiet) for _ in range(2)]
            client = start(sys.executable, "client.py", stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, **quiet)
            processes.append(client)

            def through_dask():
                client.stdin.write("go\n")
                client.stdin.flush()
                return float(client.stdout.readline())

            def through_shell(command):
                begin = time.perf_counter()
                subprocess.run(["sh", "-c", command], cwd=folder, env=environment, check=True, stdin=subprocess.DEVNULL)
                return time.perf_counter() - begin

            ways = {name: (lambda command=command: through_shell(command)) for name, command in shells.items()}
            ways["Dask, two workers"] = through_dask
            times = {name: [] for name in ways}
            for _ in range(wanted.runs + 1):
                for name, way in ways.items():
                    shutil.rmtree(os.path.join(folder, "out"), ignore_errors=True)
                    os.mkdir(os.path.join(folder, "out"))
                    times[name].append(way())
                    made = len(glob.glob(os.path.join(folder, "out", "*.tif")))
                    if made != wanted.pictures:
                        sys.exit(f"{name}: {made} pictures of {wanted.pictures}")
        finally:
            for process in processes:
                process.kill()
                process.wait()
    medians = {name: statistics.median(taken[1:]) for name, taken in times.items()}
    first = medians["one process"]
    print(f"| {wanted.pictures} pictures of {SIZE[0]} by {SIZE[1]}, LZW | s | pictures a second | of one process |")
    print("|---|---:|---:|---:|")
    for name, median in medians.items():
        print(f"| {name} | {median:.2f} | {wanted.pictures / median:.1f} | {first / median:.2f} |")


if __name__ == "__main__":
    main()
