# SPDX-License-Identifier: MIT
"""Fewer colours, without a file."""

from __future__ import annotations

import ctypes
from ctypes import c_uint32
from typing import TYPE_CHECKING, Any

from ._error import failure
from ._library import HostPixels, lib
from ._pictures import Picture, source_of

if TYPE_CHECKING:
    import numpy as np
    from numpy.typing import NDArray

_QUANTIZERS = ("best", "fast", "filter")


def _pixels_of(picture: Picture) -> tuple[HostPixels, object]:
    """Pixels in memory, and what keeps them."""
    source = source_of(picture)
    if source.pixels is None:
        raise TypeError("give pixels, not a path")
    return source.pixels, source.keep


def _address(array: Any) -> int:
    address: int = array.ctypes.data
    return address


def quantize(
    picture: Picture, colors: int = 256, *, quantizer: str = "best", dither: bool = False
) -> tuple[NDArray[np.uint8], NDArray[np.uint8]]:
    """Chooses 2 to 256 colours for a picture. Needs numpy.

    :param picture: pixels as :func:`save` takes them.
    :param quantizer: "best", "fast" (Leptonica's), or "filter", which takes 16 or 256 colours.
    :param dither: spreads what is lost.
    :returns: an index for each pixel, of shape (height, width), and the table, of shape (n, 3) with n up to
        ``colors``. A picture that has no more colours than that keeps them.
    """
    import numpy

    if quantizer not in _QUANTIZERS:
        raise ValueError(f"quantizer {quantizer!r} is none of {', '.join(_QUANTIZERS)}")
    if not 2 <= colors <= 256:
        raise ValueError(f"{colors} colors: give 2 to 256")
    pixels, keep = _pixels_of(picture)
    indices = numpy.empty((pixels.height, pixels.width), numpy.uint8)
    table = numpy.zeros((colors, 3), numpy.uint8)
    count = c_uint32()
    code = lib.raxelHostQuantize(
        ctypes.byref(pixels),
        colors,
        _QUANTIZERS.index(quantizer),
        int(dither),
        _address(indices),
        _address(table),
        ctypes.byref(count),
    )
    del keep
    if code:
        raise failure(code)
    return indices, table[: count.value]


def dither(picture: Picture, table: Any = ((0, 0, 0), (255, 255, 255))) -> NDArray[np.uint8]:
    """Error diffusion to given colours: an index for each pixel, of shape (height, width). Needs numpy.

    :param picture: pixels as :func:`save` takes them.
    :param table: up to 256 colours as red, green, blue; black and white by default, so that
        ``raxel.dither(picture).astype(bool)`` is a bilevel picture.
    """
    import numpy

    entries = numpy.ascontiguousarray(table, numpy.uint8)
    if entries.ndim != 2 or entries.shape[1] != 3 or not 1 <= len(entries) <= 256:
        raise ValueError(f"a table of shape {entries.shape}: give 1 to 256 rows of red, green, blue")
    pixels, keep = _pixels_of(picture)
    indices = numpy.empty((pixels.height, pixels.width), numpy.uint8)
    code = lib.raxelHostDither(
        ctypes.byref(pixels), _address(entries), len(entries), _address(indices)
    )
    del keep
    if code:
        raise failure(code)
    return indices
