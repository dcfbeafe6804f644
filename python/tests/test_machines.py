# SPDX-License-Identifier: MIT
"""Many pictures on many processes: manifests, shares, and the recipes of docs/machines.md."""

from __future__ import annotations

import hashlib
import json
import os
import pickle
import re
import shlex
import signal
import stat
import subprocess
import sys
import time
from concurrent.futures import ProcessPoolExecutor
from functools import partial
from pathlib import Path
from typing import Any, Callable

import numpy as np
import pytest
from conftest import Array
from documents import DOCS, blocks
from PIL import Image, ImageCms

import raxel
import raxel.dask

RECIPES = blocks("machines.md")
EXPORT = str(Path(os.environ["RAXEL_BUILD"]) / "raxel-export")


@pytest.fixture
def folder(tmp_path: Path, photo: Array) -> Path:
    """Sixteen pictures that differ."""
    scans = tmp_path / "scans"
    scans.mkdir()
    for n in range(16):
        Image.fromarray(np.roll(photo, n, axis=1)).save(scans / f"scan-{n:02}.png")
    return scans


def alone(folder: Path, *options: str) -> dict[str, str]:
    """What one process makes of it."""
    target = folder.parent / "alone"
    subprocess.run([EXPORT, *options, "-d", target, *sorted(folder.iterdir())], check=True)
    return tiffs(target)


def tiffs(target: Path) -> dict[str, str]:
    """The digests of the files."""
    return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in target.glob("*.tif")}


def lines(manifest: Path) -> list[dict[str, Any]]:
    return [json.loads(line) for line in manifest.read_text().splitlines()]


def test_a_line_for_each_picture(tmp_path: Path, png: Path) -> None:
    manifest = tmp_path / "m.jsonl"
    subprocess.run([EXPORT, "-c", "lzw", "--dpi", "200", "--manifest", manifest, png, tmp_path / "a.tif"], check=True)
    raxel.export_file(png, tmp_path / "b.tif", manifest=manifest, compress="lzw", dpi=200)
    first, second = lines(manifest)
    assert first["source"] == str(png) and first["target"] == str(tmp_path / "a.tif")
    assert first["sha256"] == hashlib.sha256((tmp_path / "a.tif").read_bytes()).hexdigest()
    assert first["bytes"] == (tmp_path / "a.tif").stat().st_size
    assert first["options"] == {"compress": "lzw", "dpi": "200"}
    assert first["sourceSha256"] == hashlib.sha256(png.read_bytes()).hexdigest()
    assert first["sourceTime"] == png.stat().st_mtime_ns and first["sourceBytes"] == png.stat().st_size
    assert first["seconds"] >= 0
    assert {**second, "target": "", "seconds": 0} == {**first, "target": "", "seconds": 0}
    assert (tmp_path / "a.tif").read_bytes() == (tmp_path / "b.tif").read_bytes()


def test_done_is_what_agrees_in_everything(tmp_path: Path, png: Path) -> None:
    target = tmp_path / "a.tif"
    export = partial(raxel.export_file, png, target, skip_done=True)
    assert not export(compress="lzw").skipped
    assert export(compress="lzw").skipped
    assert not export(compress="packbits").skipped  # other options
    assert export(compress="packbits").skipped
    os.utime(png, ns=(1, 1))  # another time
    assert not export(compress="packbits").skipped
    assert export(compress="packbits").skipped
    data = bytearray(png.read_bytes())
    data[-1] ^= 1  # another source of the same size and time
    png.write_bytes(data)
    os.utime(png, ns=(1, 1))
    assert not export(compress="packbits").skipped
    changed = bytearray(target.read_bytes())
    changed[-1] ^= 1  # another target
    target.write_bytes(changed)
    assert not export(compress="packbits").skipped
    target.unlink()
    assert not export(compress="packbits").skipped
    assert export(compress="packbits").skipped
    (tmp_path / raxel.MANIFEST).unlink()
    assert not export(compress="packbits").skipped


def test_what_goes_by_another_name_is_refused(tmp_path: Path, png: Path) -> None:
    for value in (True, False):
        with pytest.raises(TypeError, match="skip_done=True does that"):
            raxel.export_file(png, tmp_path / "a.tif", manifest=tmp_path / "m.jsonl", resume=value)
    with pytest.raises(TypeError, match="no option 'progress'"):
        raxel.export_file(png, tmp_path / "a.tif", progress=print)  # type: ignore[arg-type]
    assert sorted(os.listdir(tmp_path)) == ["photo.png"]


def test_a_cut_line_spoils_no_other(tmp_path: Path, png: Path) -> None:
    manifest = tmp_path / raxel.MANIFEST
    manifest.write_text('{"source":"a.png","tar')
    raxel.export_file(png, tmp_path / "a.tif", skip_done=True)
    assert raxel.export_file(png, tmp_path / "a.tif", skip_done=True).skipped
    assert len(manifest.read_text().splitlines()) == 2


def test_the_function_goes_to_other_processes(tmp_path: Path, folder: Path) -> None:
    assert pickle.loads(pickle.dumps(raxel.export_file)) is raxel.export_file
    sources = sorted(folder.iterdir())
    targets = raxel.dask.targets_of(sources, tmp_path)
    with ProcessPoolExecutor(2) as pool:
        reports = list(pool.map(partial(raxel.export_file, compress="lzw"), sources, targets))
    assert [report.target for report in reports] == targets
    assert tiffs(tmp_path) == alone(folder, "-c", "lzw")


def test_shares_are_all_there_is(folder: Path, tmp_path: Path) -> None:
    made = []
    for share in (1, 2, 3):
        target = tmp_path / str(share)
        subprocess.run([EXPORT, "--shard", f"{share}/3", "-d", target, *sorted(folder.iterdir())], check=True)
        made.append(set(tiffs(target)))
    assert all(made) and sum(len(names) for names in made) == 16
    assert set().union(*made) == set(alone(folder))
    for wrong in ("0/3", "4/3", "1", "1/0", "a/b", "1/2/3"):
        done = subprocess.run([EXPORT, "--shard", wrong, "-d", tmp_path, *folder.iterdir()], capture_output=True)
        assert done.returncode == 64
    done = subprocess.run([EXPORT, "--resume", "-d", tmp_path, *folder.iterdir()], capture_output=True)
    assert done.returncode == 64


def test_a_share_may_be_empty(folder: Path, tmp_path: Path) -> None:
    target = tmp_path / "made"
    one = min(folder.iterdir())
    for share in range(1, 5):
        subprocess.run([EXPORT, "--shard", f"{share}/4", "-d", target, one], check=True)
    assert [path.name for path in target.iterdir()] == [one.stem + ".tif"]


def test_a_picture_is_no_manifest(tmp_path: Path, png: Path) -> None:
    before = png.read_bytes()
    done = subprocess.run([EXPORT, "--manifest", png, png, tmp_path / "a.tif"], capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (73, f"raxel-export: {png}: is there already, and no manifest\n")
    with pytest.raises(raxel.Error):
        raxel.export_file(png, tmp_path / "a.tif", manifest=png)
    assert png.read_bytes() == before and not (tmp_path / "a.tif").exists()


def test_a_manifest_is_of_files(tmp_path: Path, png: Path, photo: Array) -> None:
    manifest = tmp_path / "m.jsonl"
    with pytest.raises(raxel.Error, match="--manifest is for files, and not for picture 1"):
        raxel.save(photo, tmp_path / "a.tif", manifest=manifest)
    with pytest.raises(raxel.Error, match="--manifest needs an output that is a file"):
        raxel.tobytes(png, manifest=manifest)
    raxel.save(png, tmp_path / "b.tif", manifest=manifest)
    assert [line["target"] for line in lines(manifest)] == [str(tmp_path / "b.tif")]
    assert not (tmp_path / "a.tif").exists()


def test_options_that_name_files_are_their_bytes(tmp_path: Path, png: Path) -> None:
    profile = tmp_path / "srgb.icc"
    data = bytearray(ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes())
    profile.write_bytes(data)
    export = partial(raxel.export_file, png, tmp_path / "a.tif", skip_done=True, icc=str(profile))
    assert not export().skipped
    assert export().skipped
    data[25] ^= 1  # the year in which it was made
    profile.write_bytes(data)
    assert not export().skipped
    assert export().skipped


def test_digests_cost_nothing_without_a_manifest(tmp_path: Path, png: Path) -> None:
    def loaded(*options: str) -> str:
        command = [EXPORT, *options, png, tmp_path / "a.tif"]
        environment = {**os.environ, "LD_DEBUG": "files"}
        return subprocess.run(command, check=True, env=environment, capture_output=True, text=True).stderr

    assert "raxel.so" in loaded() and "libcrypto" not in loaded()
    assert "libcrypto.so.3" in loaded("--manifest", str(tmp_path / "m.jsonl"))


def test_resume_goes_on_after_a_kill(folder: Path, tmp_path: Path) -> None:
    target = tmp_path / "made"
    command = [EXPORT, "-j", "2", "--manifest", str(tmp_path / "m.jsonl"), "--resume", "--json", "-d", str(target)]
    command += [str(path) for path in sorted(folder.iterdir())]
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    while not (tmp_path / "m.jsonl").exists() and process.poll() is None:
        time.sleep(0.001)
    process.kill()
    process.wait()
    time.sleep(0.1)  # its children end with it
    before = len(lines(tmp_path / "m.jsonl"))
    done = subprocess.run(command, check=True, capture_output=True, text=True)
    skipped = [result.get("skipped", False) for result in json.loads(done.stdout)["results"]]
    assert sum(skipped) == before
    assert tiffs(target) == alone(folder)
    assert len(lines(tmp_path / "m.jsonl")) == 16


@pytest.fixture
def desk(folder: Path, tmp_path: Path) -> dict[str, str]:
    """The environment of who types the recipes: the command, and an ssh to two hosts which are this machine."""
    ssh = tmp_path / "ssh"
    ssh.write_text('#!/bin/sh\necho "$1" >>"$0.hosts"\nshift\n[ "$1" = -- ] && shift\nexec sh -c "$*"\n')
    ssh.chmod(ssh.stat().st_mode | stat.S_IXUSR)
    (tmp_path / "tiffs").mkdir()
    path = str(Path(EXPORT).parent) + ":" + os.environ["PATH"]
    login = {"HOME": str(tmp_path), "SHELL": "/bin/sh", "LC_ALL": "C.UTF-8"}  # without a shell GNU parallel does nothing
    return {**os.environ, "PATH": path, "PARALLEL_SSH": str(ssh), **login}


def run(command: str, folder: Path, environment: dict[str, str]) -> None:
    done = subprocess.run(
        ["bash", "-c", command], cwd=folder, env=environment, stdin=subprocess.DEVNULL, capture_output=True, text=True
    )
    assert done.returncode == 0, done.stderr


def lines_of_all(target: Path) -> list[str]:
    """The targets that any manifest names."""
    return sorted(line["target"] for manifest in target.glob("*.jsonl") for line in lines(manifest))


def test_the_first_recipe(folder: Path, tmp_path: Path, desk: dict[str, str]) -> None:
    (command,) = RECIPES["What is done"]
    for _ in range(2):  # the second time nothing is left to do
        run(command, tmp_path, desk)
        assert tiffs(tmp_path / "tiffs") == alone(folder, "-c", "lzw")
        assert lines_of_all(tmp_path / "tiffs") == [f"tiffs/scan-{n:02}.tif" for n in range(16)]
    table = (DOCS / "machines.md").read_text()
    keys = set(lines(tmp_path / "tiffs" / "manifest.jsonl")[0]) | {"optionsSha256"}
    assert keys == {key for row in re.findall(r"^\| (`.*`) \|", table, re.M) for key in re.findall("`(.*?)`", row)}


@pytest.mark.parametrize("number", [0, 1])
def test_gnu_parallel_over_two_hosts(number: int, folder: Path, tmp_path: Path, desk: dict[str, str]) -> None:
    command = RECIPES["GNU parallel"][number]
    for _ in range(2):
        run(command, tmp_path, desk)
        assert tiffs(tmp_path / "tiffs") == alone(folder, "-c", "lzw")
        assert lines_of_all(tmp_path / "tiffs") == [f"tiffs/scan-{n:02}.tif" for n in range(16)]
    assert set((tmp_path / "ssh.hosts").read_text().split()) == {"one", "two"}


def test_slurm(folder: Path, tmp_path: Path, desk: dict[str, str]) -> None:
    """Without Slurm: the job as it runs it, once for each number of the array."""
    (script,) = RECIPES["Slurm"]
    made = []
    for number in ("1", "2"):
        run(script, tmp_path, {**desk, "SLURM_ARRAY_TASK_ID": number, "SLURM_ARRAY_TASK_COUNT": "2"})
        made.append(len(tiffs(tmp_path / "tiffs")))
    assert 0 < made[0] < 16
    assert tiffs(tmp_path / "tiffs") == alone(folder, "-c", "lzw")
    assert len(list((tmp_path / "tiffs").glob("manifest-*.jsonl"))) == 2


def test_any_other_engine(folder: Path, tmp_path: Path, desk: dict[str, str]) -> None:
    (program,) = RECIPES["Any other engine"]
    for skipped in (False, True):
        report = 'print(sum(report.skipped for report in reports), file=open("skipped", "w"))'
        done = subprocess.run([sys.executable, "-c", f"{program}\n{report}"], cwd=tmp_path, env=desk)
        assert done.returncode == 0
        assert (tmp_path / "skipped").read_text() == ("16\n" if skipped else "0\n")
    assert tiffs(tmp_path / "tiffs") == alone(folder, "-c", "lzw")


def wait_until(true: Callable[[], object], *alive: subprocess.Popen[bytes]) -> None:
    end = time.monotonic() + 60
    while not true():
        assert time.monotonic() < end and all(process.poll() is None for process in alive)
        time.sleep(0.005)


def test_dask_with_a_worker_that_is_killed(folder: Path, tmp_path: Path, desk: dict[str, str]) -> None:
    """The recipe, on a port of its own, and with one worker that does not come back."""
    for source in folder.iterdir():  # long enough to be in the middle
        with Image.open(source) as image:
            image.resize((1200, 800)).save(source)
    commands, program = RECIPES["Dask"]
    scheduler, worker = (shlex.split(line) for line in commands.splitlines())
    local = ["--host", "127.0.0.1", "--no-dashboard"]
    address, manifest = tmp_path / "scheduler.json", tmp_path / "tiffs" / raxel.MANIFEST
    start = partial(subprocess.Popen, cwd=tmp_path, env=desk, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    processes = [start([*scheduler, *local, "--port", "0"])]
    count = "import sys; print(sum(report.skipped for report in reports)); sys.stdout.flush()"
    try:
        wait_until(lambda: address.exists() and address.read_text(), *processes)
        processes += [start([*worker, *local, "--no-nanny"]) for _ in range(2)]
        client = start([sys.executable, "-c", program.replace("as client:", "as client:\n    client.wait_for_workers(2)")])
        processes.append(client)
        wait_until(lambda: manifest.exists() and len(lines_so_far(manifest)) >= 4)
        processes[1].send_signal(signal.SIGKILL)
        before = len(lines_so_far(manifest))
        assert before < 16 and client.wait(60) == 0
        wanted = alone(folder, "-c", "lzw")
        assert tiffs(tmp_path / "tiffs") == wanted
        # What the killed one had in hand may have been done and not told.
        made = [line["target"] for line in lines(manifest)]
        assert set(made) == {f"tiffs/{name}" for name in wanted} and len(made) <= 17
        again = subprocess.run([sys.executable, "-c", f"{program}\n{count}"], cwd=tmp_path, env=desk, capture_output=True)
        assert (again.returncode, again.stdout) == (0, b"16\n")
    finally:
        for process in processes:
            process.kill()
            process.wait()


def lines_so_far(manifest: Path) -> list[str]:
    return manifest.read_text().splitlines()
