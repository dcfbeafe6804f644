# SPDX-License-Identifier: MIT
"""Importing this module lets Pillow save through raxel::

    import raxel.pillow
    image.save("x.tif", format="RAXEL", compress="t6")

Keywords are those of :func:`raxel.save`; ``save_all`` and ``append_images`` are Pillow's own for pages.
"""

from __future__ import annotations

from importlib import import_module
from typing import IO, Any

from . import _export

FORMAT = "RAXEL"

_image: Any = import_module("PIL.Image")  # which has no types everywhere


def _save(image: Any, file: IO[bytes], filename: object) -> None:
    del filename
    _export.save(image, file, **_keywords(image))


def _save_all(image: Any, file: IO[bytes], filename: object) -> None:
    del filename
    keywords = _keywords(image)
    frames: list[Any] = []
    for picture in (image, *keywords.pop("append_images", ())):
        for frame in range(getattr(picture, "n_frames", 1)):
            picture.seek(frame)
            frames.append(picture.copy())
    _export.save(frames, file, **keywords)


def _keywords(image: Any) -> dict[str, Any]:
    return {name: value for name, value in image.encoderinfo.items() if value is not None}


_image.register_save(FORMAT, _save)
_image.register_save_all(FORMAT, _save_all)
_image.register_mime(FORMAT, "image/tiff")
