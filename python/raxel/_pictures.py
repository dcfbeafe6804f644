# SPDX-License-Identifier: MIT
"""Pictures in memory, shown to the library where they lie."""

from __future__ import annotations

import ctypes
import os
import sys
import warnings
from ctypes import POINTER, Structure, c_char_p, c_int, c_ssize_t, c_void_p, py_object
from typing import Any, Callable, NamedTuple, Optional, Sequence, Union

from . import _library
from ._library import HostPixels

#: What can be exported: the path of a picture file, a numpy array, a Pillow image, or anything else with
#: ``__array_interface__`` or the buffer protocol.
Picture = Union[str, "os.PathLike[str]", Any]


class Layout(NamedTuple):
    """Numbers in memory: their kind ("?", "B" or "H"), and how to get from one to the next."""

    format: str
    address: int
    shape: tuple[int, ...]
    strides: tuple[int, ...]


class Source(NamedTuple):
    """A file by its path, or pixels; and what must live as long as they are looked at."""

    path: Optional[bytes]
    pixels: Optional[HostPixels]
    keep: object


class _Buffer(Structure):
    """Py_buffer."""

    _fields_ = [
        ("buf", c_void_p),
        ("obj", c_void_p),
        ("len", c_ssize_t),
        ("itemsize", c_ssize_t),
        ("readonly", c_int),
        ("ndim", c_int),
        ("format", c_char_p),
        ("shape", POINTER(c_ssize_t)),
        ("strides", POINTER(c_ssize_t)),
        ("suboffsets", POINTER(c_ssize_t)),
        ("internal", c_void_p),
    ]


_get_buffer = ctypes.PYFUNCTYPE(c_int, py_object, POINTER(_Buffer), c_int)(
    ("PyObject_GetBuffer", ctypes.pythonapi)
)
_release_buffer = ctypes.PYFUNCTYPE(None, POINTER(_Buffer))(("PyBuffer_Release", ctypes.pythonapi))
_READ_ONLY_STRIDED = 0x0018 | 0x0004  # PyBUF_STRIDES | PyBUF_FORMAT


class _Held:
    """A buffer that is let go when nobody looks at it any more."""

    def __init__(self, owner: object) -> None:
        self.view = _Buffer()
        _get_buffer(owner, ctypes.byref(self.view), _READ_ONLY_STRIDED)
        self.release: Callable[..., None] = _release_buffer

    def __del__(self) -> None:
        if self.view.obj:
            self.release(ctypes.byref(self.view))


def _refuse(what: str) -> TypeError:
    return TypeError(
        f"raxel takes bool, uint8 and uint16 pixels of shape (height, width) or (height, width, channels), "
        f"not {what}"
    )


def _buffer_layout(picture: object) -> tuple[Layout, object]:
    held = _Held(picture)
    view = held.view
    count = view.ndim
    shape = tuple(view.shape[:count])
    kind = (view.format or b"B").decode("ascii")
    native = "<" if sys.byteorder == "little" else ">"
    if kind[:1] in ("@", "=", native):
        kind = kind[1:]
    return Layout(kind, view.buf or 0, shape, tuple(view.strides[:count])), held


def _interface_layout(picture: Any) -> tuple[Layout, object]:
    interface = picture.__array_interface__
    kinds = {"|b1": "?", "|u1": "B", ("<" if sys.byteorder == "little" else ">") + "u2": "H"}
    typestr = interface["typestr"]
    kind = kinds.get(typestr, typestr)
    shape = tuple(interface["shape"])
    size = int(typestr[2:])
    strides = interface.get("strides")
    if strides is None:
        steps = [size]
        for length in reversed(shape[1:]):
            steps.append(steps[-1] * length)
        strides = reversed(steps)
    data = interface.get("data")
    if isinstance(data, tuple):
        return Layout(kind, data[0], shape, tuple(strides)), (picture, interface)
    held = _Held(picture if data is None else data)
    address = (held.view.buf or 0) + interface.get("offset", 0)
    return Layout(kind, address, shape, tuple(strides)), (picture, interface, held)


def _has_buffer(picture: object) -> bool:
    try:
        memoryview(picture)  # type: ignore[arg-type]
    except (TypeError, ValueError, BufferError):
        return False
    return True


_KIND_OF_CHANNELS = {1: _library.GREY, 2: _library.GREY_ALPHA, 3: _library.RGB, 4: _library.RGBA}


def _pixels(width: int, height: int, kind: int, address: int, steps: tuple[int, int, int]) -> HostPixels:
    pixels = HostPixels()
    pixels.size = ctypes.sizeof(HostPixels)
    pixels.width = width
    pixels.height = height
    pixels.kind = kind
    pixels.channelBytes = 1
    pixels.first = address
    pixels.rowStep, pixels.pixelStep, pixels.channelStep = steps
    return pixels


def _from_array(picture: Any) -> Source:
    if _has_buffer(picture):
        layout, keep = _buffer_layout(picture)
    elif hasattr(picture, "__array_interface__"):
        layout, keep = _interface_layout(picture)
    else:
        raise _refuse(type(picture).__name__)
    if len(layout.shape) not in (2, 3) or layout.format not in ("?", "B", "H"):
        raise _refuse(f"{layout.shape} of {getattr(picture, 'dtype', layout.format)}")
    height, width = layout.shape[:2]
    channels = layout.shape[2] if len(layout.shape) == 3 else 1
    if channels not in _KIND_OF_CHANNELS or (layout.format == "?" and channels != 1):
        raise _refuse(f"{layout.shape} of {getattr(picture, 'dtype', layout.format)}")
    if max(height, width) > 0xFFFFFFFF:
        raise _refuse(f"{layout.shape}, which is too large")
    kind = _library.BOOL if layout.format == "?" else _KIND_OF_CHANNELS[channels]
    steps = (layout.strides[0], layout.strides[1], layout.strides[2] if len(layout.shape) == 3 else 1)
    pixels = _pixels(width, height, kind, layout.address, steps)
    pixels.channelBytes = 2 if layout.format == "H" else 1
    return Source(None, pixels, (picture, keep))


# Pillow's modes, and how their bytes come out of tobytes().
_PILLOW_CHANNELS = {
    "L": (_library.GREY, 1),
    "P": (_library.INDEX, 1),
    "LA": (_library.GREY_ALPHA, 2),
    "RGB": (_library.RGB, 3),
    "RGBA": (_library.RGBA, 4),
    "CMYK": (_library.CMYK, 4),
}
_PILLOW_CONVERTED = {
    "I": "I;16",
    "I;16B": "I;16",
    "La": "LA",
    "RGBX": "RGB",
    "RGBa": "RGBA",
    "PA": "RGBA",
    "YCbCr": "RGB",
    "LAB": "RGB",
    "HSV": "RGB",
}


# Those in which one colour may stand for transparent pixels.
_PILLOW_KEYED = ("1", "L", "RGB")


# How Pillow keeps them: the kind, and the bytes from pixel to pixel and from channel to channel.
_PILLOW_STORED = {
    "1": (_library.BOOL, 1, 1),
    "L": (_library.GREY, 1, 1),
    "P": (_library.INDEX, 1, 1),
    "LA": (_library.GREY_ALPHA, 4, 3),
    "RGB": (_library.RGB, 4, 1),
    "RGBA": (_library.RGBA, 4, 1),
    "CMYK": (_library.CMYK, 4, 1),
}


def _pillow_rows(image: Any) -> Optional[int]:
    """Where the pointers to an image's rows are, in versions of Pillow that tell; else None."""
    image.load()
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", DeprecationWarning)
        pointers = getattr(image.im, "unsafe_ptrs", None)
    if not pointers or image.size[0] < 1 or image.size[1] < 1:
        return None
    address = dict(pointers).get("image")
    return address if isinstance(address, int) and address else None


def _is_pillow(picture: object) -> bool:
    module = sys.modules.get("PIL.Image")
    return module is not None and isinstance(picture, module.Image)


def _pillow_alpha(image: Any, colors: int) -> Optional[bytes]:
    """The opacity of each entry of a palette, where some is transparent: the palette's own, or what the file
    that it comes from said."""
    if image.palette is not None and image.palette.mode == "RGBA":
        return bytes(image.getpalette("RGBA"))[3::4]
    transparency = image.info.get("transparency")
    if isinstance(transparency, bytes):
        return (transparency + b"\xff" * colors)[:colors]
    if isinstance(transparency, int) and 0 <= transparency < colors:
        return b"\xff" * transparency + b"\0" + b"\xff" * (colors - transparency - 1)
    return None


def _from_pillow(image: Any) -> Source:
    info = image.info
    if image.mode in _PILLOW_CONVERTED:
        if image.mode in ("LAB", "YCbCr", "HSV"):
            info = {**info, "icc_profile": None}
        image = image.convert(_PILLOW_CONVERTED[image.mode])
    elif image.mode in _PILLOW_KEYED and isinstance(info.get("transparency"), (int, tuple)):
        if image.mode == "1":  # whose white is 255, or in some versions of Pillow 1
            image = image.convert("L")
            image.info["transparency"] = 255 if info["transparency"] else 0
        image = image.convert("RGBA")  # pixels of that colour have no opacity
    width, height = image.size
    keep: list[object] = [image]
    if image.mode in _PILLOW_STORED and (rows := _pillow_rows(image)):
        kind, pixel, channel = _PILLOW_STORED[image.mode]
        pixels = _pixels(width, height, kind, 0, (0, pixel, channel))
        pixels.rows = rows
        return Source(None, _describe_pillow(image, info, pixels, keep), keep)
    data: bytes = image.tobytes()
    address = ctypes.cast(c_char_p(data), c_void_p).value or 0
    keep.append(data)
    if image.mode == "1":
        pixels = _pixels(width, height, _library.BITS, address, ((width + 7) // 8, 0, 0))
    elif image.mode == "I;16":
        pixels = _pixels(width, height, _library.GREY, address, (2 * width, 2, 1))
        pixels.channelBytes = 2
    elif image.mode in _PILLOW_CHANNELS:
        kind, channels = _PILLOW_CHANNELS[image.mode]
        pixels = _pixels(width, height, kind, address, (channels * width, channels, 1))
    else:
        raise TypeError(f"raxel does not take Pillow's mode {image.mode}; convert it")
    return Source(None, _describe_pillow(image, info, pixels, keep), keep)


def _describe_pillow(image: Any, info: Any, pixels: HostPixels, keep: list[object]) -> HostPixels:
    """Adds table and resolution."""
    if image.mode == "P":
        table = bytes(image.getpalette("RGB"))[: 3 * 256]
        alpha = _pillow_alpha(image, len(table) // 3)
        pixels.table, pixels.colors, pixels.alpha = table, len(table) // 3, alpha
        keep += [table, alpha]
    profile = info.get("icc_profile")
    if isinstance(profile, bytes) and profile:
        pixels.icc, pixels.iccBytes = profile, len(profile)
        keep.append(profile)
    dpi = info.get("dpi")
    if isinstance(dpi, (tuple, list)) and len(dpi) == 2:
        pixels.dpiX, pixels.dpiY = float(dpi[0]), float(dpi[1])
    return pixels


def path_bytes(path: Union[str, bytes, "os.PathLike[str]"]) -> bytes:
    """A path as the library takes it; "-" is a file of that name here."""
    name = os.fsencode(path)
    return b"./-" if name == b"-" else name


def source_of(picture: Picture) -> Source:
    """How the library gets to a picture."""
    if isinstance(picture, (str, os.PathLike)):
        return Source(path_bytes(picture), None, None)
    if _is_pillow(picture):
        return _from_pillow(picture)
    return _from_array(picture)


def sources_of(picture: Union[Picture, Sequence[Picture]]) -> list[Source]:
    """The same for a picture or a list of them."""
    if isinstance(picture, (list, tuple)):
        if not picture:
            raise ValueError("there is no picture in the list")
        return [source_of(page) for page in picture]
    return [source_of(picture)]
