# SPDX-License-Identifier: MIT
"""Files to what they hold."""

from __future__ import annotations

import ctypes
import json
import os
from typing import Union

from . import _library
from ._error import Error
from ._export import Entry, Inspection
from ._library import lib, text
from ._pictures import path_bytes


def inspect(path: Union[str, "os.PathLike[str]"]) -> Inspection:
    """What a TIFF file holds: the entries of its first directory, its faults, and whether it can be decoded.

    :raises raxel.Error: when the file cannot be read, or is no TIFF.
    """
    try:
        os.stat(path)
    except OSError as error:
        raise Error(f"{os.fspath(path)}: {error.strerror}", error.errno, _library.BAD_ARGUMENT) from error
    address = lib.raxelHostInspect(path_bytes(path))
    if not address:
        raise MemoryError
    try:
        seen = json.loads(text(ctypes.string_at(address)))
    finally:
        lib.raxelHostFree(address)
    if not seen["entries"]:
        raise Error("; ".join(seen["faults"]) or f"{os.fspath(path)}: holds no picture", None, _library.BAD_PICTURE)
    return Inspection(
        path=os.fspath(path),
        bytes=seen["bytes"],
        little_endian=seen["littleEndian"],
        entries=tuple(
            Entry(e["tag"], e["name"], e["type"], e["count"], tuple(e.get("values", ())), e.get("text", ""))
            for e in seen["entries"]
        ),
        faults=tuple(seen["faults"]),
        decodes=seen["decodes"],
    )
