# SPDX-License-Identifier: MIT
"""raxel as a format of Pillow."""

from __future__ import annotations

import io
from pathlib import Path

import numpy as np
import pytest
from conftest import Array
from PIL import Image

import raxel
import raxel.pillow


def test_saves(tmp_path: Path, photo: Array) -> None:
    image = Image.fromarray(photo)
    image.save(tmp_path / "x.tif", format="RAXEL", compress="packbits", dpi=300)
    assert (tmp_path / "x.tif").read_bytes() == raxel.tobytes(photo, compress="packbits", dpi=300)
    page = image.convert("1")
    page.save(tmp_path / "page.tif", format="RAXEL", compress="t6")
    with Image.open(tmp_path / "page.tif") as again:
        assert again.info["compression"] == "group4"
        assert np.array_equal(np.asarray(again), np.asarray(page))


def test_saves_all(photo: Array) -> None:
    image = Image.fromarray(photo)
    file = io.BytesIO()
    image.save(file, format="RAXEL", save_all=True, append_images=[image.convert("L")])
    with Image.open(file) as again:
        assert again.n_frames == 2
        again.seek(1)
        assert again.mode == "L"


def test_refuses_what_raxel_refuses(tmp_path: Path, photo: Array) -> None:
    with pytest.raises(raxel.Error):
        Image.fromarray(photo).save(tmp_path / "x.tif", format="RAXEL", compress="t6")
