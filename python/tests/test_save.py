# SPDX-License-Identifier: MIT
"""Where files go, what is told of them, and what goes wrong."""

from __future__ import annotations

import errno
import io
import json
import os
import pickle
import subprocess
from pathlib import Path

import numpy as np
import pytest
from conftest import Array, Shown

import raxel

BUILD = Path(os.environ["RAXEL_BUILD"])


def test_a_path_a_file_and_bytes_are_the_same(tmp_path: Path, photo: Array) -> None:
    data = raxel.tobytes(photo, compress="packbits")
    report = raxel.save(photo, tmp_path / "a.tif", compress="packbits")
    raxel.save(photo, str(tmp_path / "b.tif"), compress="packbits")
    file = io.BytesIO()
    raxel.save(photo, file, compress="packbits")
    with open(tmp_path / "c.tif", "wb", buffering=0) as raw:
        raxel.save(photo, raw, compress="packbits")
    assert (tmp_path / "a.tif").read_bytes() == data
    assert (tmp_path / "b.tif").read_bytes() == data
    assert (tmp_path / "c.tif").read_bytes() == data
    assert file.getvalue() == data
    assert report.bytes == len(data)
    assert report.target == str(tmp_path / "a.tif")


def test_the_report(tmp_path: Path, photo: Array) -> None:
    report = raxel.save(photo, tmp_path / "a.tif", dpi=(204, 98), verify=True)
    assert (report.width, report.height, report.bits) == (61, 40, 24)
    assert (report.mode, report.compression, report.layout) == ("rgb", "lzw", "strips")
    assert report.dpi == (204, 98)
    assert report.verified and report.notes == ()
    assert report.seconds["write"] > 0


def test_the_same_bytes_as_the_command(tmp_path: Path, png: Path) -> None:
    given = ["--mode", "color16", "--compress", "lzw", "--dpi", "204x98", "--size", "5x4cm", "--dither"]
    subprocess.run([BUILD / "raxel-export", *given, png, tmp_path / "command.tif"], check=True)
    raxel.save(png, tmp_path / "python.tif", mode="color16", dpi=(204, 98), size="5x4cm", dither=True)
    assert (tmp_path / "python.tif").read_bytes() == (tmp_path / "command.tif").read_bytes()


def of_the_command(folder: Path, picture: Path, *options: str) -> bytes:
    made = folder / "command.tif"
    subprocess.run([BUILD / "raxel-export", *options, picture, "-o", made], check=True)
    return made.read_bytes()


@pytest.mark.parametrize("preset", raxel.options()["preset"].choices)
def test_a_preset_makes_what_the_command_makes(tmp_path: Path, png: Path, preset: str) -> None:
    wanted = of_the_command(tmp_path, png, "--preset", preset)
    raxel.save(png, tmp_path / "python.tif", preset=preset)
    assert (tmp_path / "python.tif").read_bytes() == wanted
    assert raxel.tobytes(png, preset=preset) == wanted
    compression = {"archive": "lzw", "label": "t6"}.get(preset, "t4")
    assert raxel.plan(png, preset=preset).compression == compression


def test_what_is_given_goes_before_a_preset(tmp_path: Path, png: Path) -> None:
    wanted = of_the_command(tmp_path, png, "--preset", "label", "--compress", "lzw")
    assert raxel.tobytes(png, preset="label", compress="lzw") == wanted
    wanted = of_the_command(tmp_path, png, "--preset", "archive", "--mode", "auto", "--compress", "packbits")
    assert raxel.tobytes(png, preset="archive", mode="auto", compress="packbits") == wanted
    assert raxel.plan(png, preset="label", compress="lzw").mode == "bilevel"
    assert raxel.plan(png, preset=None).compression == "lzw"


def test_a_palette_by_name_or_from_a_file(tmp_path: Path, photo: Array) -> None:
    from PIL import Image

    panel = tmp_path / "panel.tif"
    assert raxel.save(photo, panel, palette="eink7").mode == "color16"
    with Image.open(panel) as image:
        table = image.getpalette()
        assert table is not None and max(image.getdata()) <= 6
        assert table[:9] == [0, 0, 0, 255, 255, 255, 0, 255, 0]
    two = tmp_path / "two.gpl"
    two.write_text("GIMP Palette\n0 0 0\n255 255 0\n")
    raxel.save(photo, panel, palette=two, dither=False)
    with Image.open(panel) as image:
        table = image.getpalette()
        assert table is not None and table[:6] == [0, 0, 0, 255, 255, 0]
        assert image.getextrema() == (0, 1)
    with pytest.raises(raxel.Error, match="palette is for the modes"):
        raxel.save(photo, panel, palette="eink7", mode="rgb")


def test_plan_writes_nothing(tmp_path: Path, photo: Array) -> None:
    before = sorted(tmp_path.iterdir())
    plan = raxel.plan(photo, mode="bilevel", compress="t6", dither=False)
    assert (plan.mode, plan.compression, plan.bits, plan.bytes) == ("bilevel", "t6", 1, 0)
    with pytest.raises(raxel.Error, match="bilevel"):
        raxel.plan(photo, compress="t6")
    assert sorted(tmp_path.iterdir()) == before


def test_pages_of_a_file(tmp_path: Path, photo: Array) -> None:
    raxel.save([photo, photo[:20]], tmp_path / "two.tif")
    again = raxel.save(tmp_path / "two.tif", tmp_path / "all.tif", pages=True)
    assert [page.height for page in again.pages] == [40, 20]
    assert raxel.save(tmp_path / "two.tif", tmp_path / "one.tif", page=2).height == 20
    some = raxel.save(tmp_path / "two.tif", tmp_path / "some.tif", pages=True, page=[2, 1])
    assert [page.height for page in some.pages] == [20, 40]


def test_an_error_has_its_errno_and_leaves_the_old_file(tmp_path: Path, photo: Array) -> None:
    with pytest.raises(raxel.Error) as failed:
        raxel.save(tmp_path / "missing.png", tmp_path / "a.tif")
    assert failed.value.errno == errno.ENOENT
    assert "missing.png: cannot be opened" in str(failed.value)
    with pytest.raises(raxel.Error) as failed:
        raxel.save(photo, tmp_path / "no" / "a.tif")
    assert failed.value.errno == errno.ENOENT
    old = tmp_path / "old.txt"
    old.write_text("no TIFF")
    with pytest.raises(raxel.Error) as failed:
        raxel.save(photo, old)
    assert failed.value.errno == errno.EEXIST
    assert isinstance(failed.value, OSError)
    assert old.read_text() == "no TIFF"
    raxel.save(photo, old, force=True)
    with pytest.raises(raxel.Error):
        raxel.save(photo, old, no_clobber=True)
    again = pickle.loads(pickle.dumps(failed.value))
    assert (str(again), again.errno, again.code) == (str(failed.value), errno.EEXIST, failed.value.code)


def test_names_of_files_may_be_any_bytes(tmp_path: Path, photo: Array) -> None:
    name = os.fsdecode(os.fsencode(tmp_path) + b"/\xff.tif")
    report = raxel.save(photo, name)
    assert os.path.getsize(name) == report.bytes
    assert np.array_equal(raxel.inspect(name)["ImageWidth"], 61)


def test_inspect(tmp_path: Path, photo: Array) -> None:
    raxel.save(photo, tmp_path / "a.tif", dpi=300)
    seen = raxel.inspect(tmp_path / "a.tif")
    assert seen["ImageWidth"] == 61 and seen[257] == 40
    assert seen["XResolution"] == 300
    assert seen.decodes and seen.faults == () and seen.little_endian
    with pytest.raises(KeyError):
        seen["Nothing"]
    with pytest.raises(raxel.Error) as failed:
        raxel.inspect(tmp_path / "missing.tif")
    assert failed.value.errno == errno.ENOENT
    (tmp_path / "text").write_text("text")
    with pytest.raises(raxel.Error):
        raxel.inspect(tmp_path / "text")


def test_every_option_of_the_command_is_known() -> None:
    """By name, kind and choices; what is left out has a reason, and nothing has one that is there."""
    shown = subprocess.run(
        [BUILD / "raxel-export", "--help", "--json"], check=True, capture_output=True, text=True
    )
    rows = {row["name"]: row for row in json.loads(shown.stdout)["options"]}
    options = raxel.options()
    assert {name.replace("-", "_") for name in rows if name not in raxel.NOT_IN_PYTHON} == set(options)
    for name, row in rows.items():
        if name in raxel.NOT_IN_PYTHON:
            assert len(raxel.NOT_IN_PYTHON[name]) > 5
            continue
        option = options[name.replace("-", "_")]
        assert (option.argument, option.choices) == (row.get("argument"), tuple(row.get("choices", ())))
        assert option.help == row["help"]


def test_options_that_make_no_sense(photo: Array) -> None:
    with pytest.raises(TypeError, match="no option 'colour'"):
        raxel.tobytes(photo, colour="red")
    with pytest.raises(TypeError, match="no option 'jobs'"):
        raxel.tobytes(photo, jobs=2)
    with pytest.raises(TypeError, match="verify is True or False"):
        raxel.tobytes(photo, verify="yes")
    with pytest.raises(TypeError, match="size takes"):
        raxel.tobytes(photo, size=True)
    with pytest.raises(raxel.Error, match="is none of"):
        raxel.tobytes(photo, compress="zip?")


def test_how_values_are_written(photo: Array) -> None:
    assert raxel.plan(photo, dpi=203.2).dpi == (203.2, 203.2)
    assert raxel.plan(photo, dpi="204x98").dpi == (204, 98)
    assert raxel.plan(photo, size=(30.5, 20), dpi=10).width == 305
    assert raxel.plan(photo, compress=None, set={10: 153}).compression == "lzw"
    assert raxel.plan(photo, compress=None, set=["10=153"]).compression == "lzw"
    assert raxel.plan(photo, compress=None).compression == "none"
    assert raxel.plan(photo, dither=None, verify=False).mode == "rgb"


def test_a_profile(tmp_path: Path, photo: Array) -> None:
    profile = tmp_path / "raxel.ini"
    profile.write_text("")
    raxel.save(photo, tmp_path / "a.tif", profile=profile, section="Scans", compress="packbits", save=True)
    assert raxel.plan(photo, profile=profile, section="Scans", compress=None).compression == "packbits"


def test_a_profile_makes_what_the_command_makes(tmp_path: Path, png: Path) -> None:
    profile = tmp_path / "raxel.ini"
    profile.write_text("")
    of = ["--profile", str(profile), "--section", "Panel"]
    of_the_command(tmp_path, png, *of, "--save", "--mode", "color16", "--compress", "packbits")
    wanted = of_the_command(tmp_path, png, *of)
    raxel.save(png, tmp_path / "python.tif", profile=profile, section="Panel")
    assert (tmp_path / "python.tif").read_bytes() == wanted
    plan = raxel.plan(png, profile=profile, section="Panel")
    assert (plan.mode, plan.compression) == ("color16", "packbits")
    plan = raxel.plan(png, profile=profile, section="Panel", mode="auto", compress="lzw")
    assert (plan.mode, plan.compression) == ("rgb", "lzw")


def test_quantize(photo: Array, shown: Shown) -> None:
    indices, table = raxel.quantize(photo, 256)
    assert indices.shape == photo.shape[:2] and table.shape[1] == 3 and len(table) <= 256
    error = np.abs(table[indices].astype(int) - photo).mean()
    assert error < 6
    few = np.array([[[1, 2, 3], [4, 5, 6]], [[4, 5, 6], [7, 8, 9]]], np.uint8)
    indices, table = raxel.quantize(few, 3)
    assert np.array_equal(table[indices], few) and len(table) == 3
    for quantizer in ("fast", "filter"):
        indices, table = raxel.quantize(photo, 16, quantizer=quantizer, dither=True)
        assert indices.max() < 16
    with pytest.raises(ValueError):
        raxel.quantize(photo, 257)
    with pytest.raises(ValueError):
        raxel.quantize(photo, 16, quantizer="nearest")
    with pytest.raises(raxel.Error):
        raxel.quantize(photo, 17, quantizer="filter")


def test_dither() -> None:
    grey = np.full((64, 64), 64, np.uint8)
    assert 0.2 < raxel.dither(grey).mean() < 0.28
    table = np.array([[0, 0, 0], [128, 128, 128]], np.uint8)
    assert 0.4 < raxel.dither(grey, table).mean() < 0.55
    with pytest.raises(ValueError):
        raxel.dither(grey, [[0, 0]])


def test_open_and_version(photo: Array) -> None:
    raxel.tobytes(photo)
    assert os.path.samefile(raxel.open(), BUILD / "raxel.so")
    assert os.path.samefile(raxel.open(BUILD / "raxel.so"), BUILD / "raxel.so")
    with pytest.raises(raxel.Error):
        raxel.open("/nowhere/raxel.so")
    assert len(raxel.__version__.split(".")) == 3
