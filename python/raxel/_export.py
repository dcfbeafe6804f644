# SPDX-License-Identifier: MIT
"""Pictures to files."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import IO, Any, Mapping, Optional, Sequence, Union

from . import _options
from ._options import Value
from ._order import Order, Progress
from ._pictures import Picture, path_bytes, sources_of
from ._report import Report, report_of

Pictures = Union[Picture, Sequence[Picture]]


class _Default(str):
    """The value of an option that the caller has not given: a preset or a profile goes before it."""


_MODE = _Default("auto")
_COMPRESS = _Default("lzw")


def _order(
    caller: str,
    picture: Pictures,
    pages: bool,
    options: Mapping[str, object],
    *more: tuple[str, Optional[str]],
) -> Order:
    """What any call asks for. A list is pages of one file."""
    listed = isinstance(picture, (list, tuple))
    given: dict[str, object] = {**options, "pages": bool(pages or listed)}
    if given.get("preset") is not None or given.get("profile") is not None:
        given = {name: value for name, value in given.items() if not isinstance(value, _Default)}
    return Order([*_options.arguments(caller, given), *more], sources_of(picture))


def save(
    picture: Pictures,
    path_or_file: Union[str, "os.PathLike[str]", IO[bytes]],
    *,
    mode: Optional[str] = _MODE,
    compress: Optional[str] = _COMPRESS,
    dpi: Union[None, float, tuple[float, float], str] = None,
    dither: Optional[bool] = None,
    pages: bool = False,
    progress: Optional[Progress] = None,
    **options: Value,
) -> Report:
    """Writes a picture as TIFF and tells what was done.

    :param picture: a numpy array (bool, with True for white; uint8 or uint16 of shape (height, width) or
        (height, width, channels) with grey, grey and opacity, RGB or RGBA), a Pillow image, anything with
        ``__array_interface__`` or the buffer protocol, or the path of a picture file; or a list of them,
        which become the pages of one file. Rows that lie as the filter takes them are read in place, and
        must not change meanwhile.
    :param path_or_file: where to: a path, whose file is replaced when the new one is whole, or an object
        with ``write``, which gets the whole file.
    :param mode: what the pixels become; "auto" is the smallest mode that keeps the picture.
    :param compress: "none", "packbits", "lzw", and for bilevel pictures "huffman", "t4" and "t6". With
        ``preset=`` or ``profile=`` mode and compression are theirs, unless they are given.
    :param dpi: dots an inch, one number or (across, down); the picture's own, or 96, by default.
    :param dither: True spreads lost levels, False takes the nearest colour.
    :param pages: takes all pages of a file, and not the first alone.
    :param progress: hears how far it is, 0.0 to 1.0, in the thread that called; answering False stops the
        export with :class:`raxel.Stopped`.
    :param options: every other option of ``raxel-export``; see :func:`raxel.options`. None leaves an option
        to the profile, where one is given, or to its default.
    :raises raxel.Error: when the picture was not written; an old file is as it was.
    """
    given: dict[str, object] = {"mode": mode, "compress": compress, "dpi": dpi, "dither": dither, **options}
    if isinstance(path_or_file, (str, os.PathLike)):
        target = os.fsdecode(path_bytes(path_or_file))
        with _order("save", picture, pages, given, ("output", target)) as order:
            order.run(progress)
            return report_of(order.report())
    with _order("save", picture, pages, given) as order:
        order.run(progress)
        _write_all(path_or_file, order.file())
        return report_of(order.report())


def _write_all(file: IO[bytes], data: memoryview) -> None:
    """Raw files may take less than they are given."""
    while data:
        taken = file.write(data)
        data = data[len(data) if taken is None else taken :]


def tobytes(
    picture: Pictures,
    *,
    mode: Optional[str] = _MODE,
    compress: Optional[str] = _COMPRESS,
    dpi: Union[None, float, tuple[float, float], str] = None,
    dither: Optional[bool] = None,
    pages: bool = False,
    progress: Optional[Progress] = None,
    **options: Value,
) -> bytes:
    """The file that :func:`save` would write, as bytes."""
    given: dict[str, object] = {"mode": mode, "compress": compress, "dpi": dpi, "dither": dither, **options}
    with _order("tobytes", picture, pages, given) as order:
        order.run(progress)
        return order.file_bytes()


def plan(
    picture: Pictures,
    *,
    mode: Optional[str] = _MODE,
    compress: Optional[str] = _COMPRESS,
    dpi: Union[None, float, tuple[float, float], str] = None,
    dither: Optional[bool] = None,
    pages: bool = False,
    **options: Value,
) -> Report:
    """What :func:`save` would write, worked out without writing anything.

    :raises raxel.Error: where :func:`save` would refuse picture and options.
    """
    given: dict[str, object] = {"mode": mode, "compress": compress, "dpi": dpi, "dither": dither, **options}
    with _order("plan", picture, pages, given, ("dry-run", None)) as order:
        order.run()
        return report_of(order.report())


@dataclass(frozen=True)
class Entry:
    """An entry of a TIFF's directory."""

    tag: int
    name: str
    type: str
    count: int
    values: tuple[float, ...]  #: empty for text
    text: str  #: empty for numbers


@dataclass(frozen=True)
class Inspection:
    """What a TIFF file holds."""

    path: str
    bytes: int
    little_endian: bool
    entries: tuple[Entry, ...]
    faults: tuple[str, ...]  #: what is wrong with it, in sentences
    decodes: bool  #: every row can be decoded

    def __getitem__(self, name: Union[str, int]) -> Any:
        """The value of an entry by its name or number: text, a number, or a tuple of them."""
        for entry in self.entries:
            if name in (entry.name, entry.tag):
                if entry.text or not entry.values:
                    return entry.text
                return entry.values[0] if len(entry.values) == 1 else entry.values
        raise KeyError(name)
