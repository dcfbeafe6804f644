# SPDX-License-Identifier: MIT
"""The programs of the documents run as they stand there, one after the other."""

from __future__ import annotations

from pathlib import Path
from typing import Any

import numpy as np
import pytest
from conftest import Array, Shown
from documents import blocks
from PIL import Image, ImageDraw


def test_the_way_in(tmp_path: Path, photo: Array, shown: Shown, monkeypatch: pytest.MonkeyPatch) -> None:
    """What README.md says that Python can do, with pixels as the reader has them."""
    (program,) = [block for part in blocks("../README.md").values() for block in part if "import raxel" in block]
    monkeypatch.chdir(tmp_path)
    exec(compile(program, program, "exec"), {"pixels": photo})
    (made,) = tmp_path.iterdir()
    assert np.array_equal(shown(made.read_bytes()), photo)
    with Image.open(made) as image:
        assert image.info["compression"] == "tiff_lzw"


def test_every_program(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    pytest.importorskip("tqdm")
    scan = Image.new("L", (400, 300), 255)
    ImageDraw.Draw(scan).text((50, 100), "a page of few words", fill=0)
    scan.save(tmp_path / "scan.png", dpi=(200, 200))
    monkeypatch.chdir(tmp_path)
    names: dict[str, Any] = {}
    programs = [block for part in blocks("python.md").values() for block in part if not block.startswith("apt ")]
    assert len(programs) >= 8
    for program in programs:
        exec(compile(program, program, "exec"), names)
    made = {path.name for path in tmp_path.glob("*.tif")}
    assert made == {"picture.tif", "label.tif", "pages.tif", "second.tif", "copy.tif", "page.tif"}
    assert len(names["report"].pages) == 2
    with Image.open("label.tif") as label:
        assert label.mode == "1" and label.info["compression"] == "group4"
    with Image.open("page.tif") as page:
        assert page.info["compression"] == "group4" and page.info["dpi"] == (200, 200)
