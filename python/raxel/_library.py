# SPDX-License-Identifier: MIT
"""libraxelhost through ctypes: where it is, its records and its functions."""

from __future__ import annotations

import ctypes
import os
from ctypes import (
    CFUNCTYPE,
    POINTER,
    Structure,
    c_char_p,
    c_double,
    c_int,
    c_int32,
    c_int64,
    c_uint32,
    c_uint64,
    c_void_p,
)
from pathlib import Path
from typing import Iterator

NAME = "libraxelhost.so.0"

# RaxelHostCode, as far as it is told apart here.
OK, BAD_ARGUMENT, BAD_PICTURE = range(3)

# RaxelPixelKind.
BITS, BOOL, GREY, GREY_ALPHA, RGB, RGBA, CMYK, INDEX = range(8)

# RaxelHostStage.
PREPARING, WRITING = range(2)


class HostPixels(Structure):
    """RaxelHostPixels."""

    _fields_ = [
        ("size", c_uint32),
        ("width", c_uint32),
        ("height", c_uint32),
        ("kind", c_int32),
        ("channelBytes", c_uint32),
        ("colors", c_uint32),
        ("first", c_void_p),
        ("rowStep", c_int64),
        ("pixelStep", c_int64),
        ("channelStep", c_int64),
        ("table", c_char_p),
        ("alpha", c_char_p),
        ("dpiX", c_double),
        ("dpiY", c_double),
        ("rows", c_void_p),
        ("icc", c_char_p),
        ("iccBytes", c_uint64),
    ]


HostProgress = CFUNCTYPE(c_int32, c_void_p, c_int32, c_double, c_uint64)


class HostCalls(Structure):
    """RaxelHostCalls."""

    _fields_ = [
        ("size", c_uint32),
        ("flags", c_uint32),
        ("write", c_void_p),
        ("progress", HostProgress),
        ("stop", c_void_p),
        ("temporary", c_void_p),
        ("context", c_void_p),
    ]


def _places() -> Iterator[str]:
    """Where the library may be: what the user names, beside the package, a checkout's build, the system."""
    named = os.environ.get("RAXEL_HOST_LIBRARY")
    if named:
        yield named
        return
    package = Path(__file__).resolve().parent
    for folder in (package, *package.parents[:3]):
        for place in (folder / NAME, folder / "build" / "release" / NAME):
            if place.exists():
                yield str(place)
    yield NAME


def _load() -> ctypes.CDLL:
    failures = []
    for place in _places():
        try:
            return ctypes.CDLL(place)
        except OSError as error:
            failures.append(str(error))
    raise ImportError(
        "raxel needs libraxelhost, which cannot be loaded: "
        + "; ".join(failures)
        + " (the environment variable RAXEL_HOST_LIBRARY may name it)"
    )


def _declare(library: ctypes.CDLL) -> None:
    order = c_void_p
    signatures: dict[str, tuple[object, list[object]]] = {
        "raxelHostVersion": (c_uint32, []),
        "raxelHostOpen": (c_int, [c_char_p]),
        "raxelHostOpenError": (c_char_p, []),
        "raxelHostFilter": (c_char_p, []),
        "raxelHostFree": (None, [c_void_p]),
        "raxelHostMessage": (c_char_p, [c_int]),
        "raxelHostOptions": (c_char_p, []),
        "raxelHostOrderNew": (order, []),
        "raxelHostOrderFree": (None, [order]),
        "raxelHostOrderSet": (c_int, [order, c_char_p, c_char_p]),
        "raxelHostOrderFile": (c_int, [order, c_char_p]),
        "raxelHostOrderPicture": (c_int, [order, POINTER(HostPixels)]),
        "raxelHostOrderRun": (c_int, [order, POINTER(HostCalls)]),
        "raxelHostOrderMessage": (c_char_p, [order]),
        "raxelHostOrderError": (c_int32, [order]),
        "raxelHostOrderReport": (c_char_p, [order]),
        "raxelHostOrderPages": (c_uint32, [order]),
        "raxelHostOrderBytes": (c_void_p, [order, POINTER(c_uint64)]),
        "raxelHostInspect": (c_void_p, [c_char_p]),
        "raxelHostQuantize": (
            c_int,
            [POINTER(HostPixels), c_uint32, c_int, c_int, c_void_p, c_void_p, POINTER(c_uint32)],
        ),
        "raxelHostDither": (c_int, [POINTER(HostPixels), c_void_p, c_uint32, c_void_p]),
    }
    for name, (result, arguments) in signatures.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments


lib = _load()
_declare(lib)


def text(value: bytes | None) -> str:
    """What the library says; names of files may be any bytes."""
    return (value or b"").decode("utf-8", "surrogateescape")


def version() -> str:
    """The version of libraxelhost: major, minor and patch, with points between them."""
    number: int = lib.raxelHostVersion()
    return f"{number >> 16}.{number >> 8 & 255}.{number & 255}"

