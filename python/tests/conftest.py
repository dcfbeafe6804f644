# SPDX-License-Identifier: MIT
"""What the tests share: pictures to write, and an independent reader."""

from __future__ import annotations

import io
from pathlib import Path
from typing import Callable

import numpy as np
import pytest
from numpy.typing import NDArray
from PIL import Image

Array = NDArray[np.uint8]
Shown = Callable[[bytes], Array]


@pytest.fixture
def photo() -> Array:
    """Red, green and blue that all differ, so that a row or channel out of place is seen; an even height."""
    y, x = np.mgrid[0:40, 0:61]
    return np.stack([x * 4, y * 6, (x + y) * 2], axis=-1).astype(np.uint8)


@pytest.fixture
def large() -> Array:
    """Noise of 12 megapixels, which takes LZW a while."""
    return np.random.default_rng(1).integers(0, 256, (3000, 4000, 3), np.uint8)


@pytest.fixture
def shown() -> Shown:
    """Pillow's view of a file's pixels."""

    def read(data: bytes) -> Array:
        with Image.open(io.BytesIO(data)) as image:
            return np.asarray(image.convert("RGB") if image.mode == "P" else image)

    return read


@pytest.fixture
def png(tmp_path: Path, photo: Array) -> Path:
    """The photo as a file, with a resolution."""
    path = tmp_path / "photo.png"
    Image.fromarray(photo).save(path, dpi=(150, 150))
    return path
