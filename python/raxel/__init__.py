# SPDX-License-Identifier: MIT
"""raxel writes pictures as TIFF::

    import raxel
    raxel.save(array, "picture.tif")
    raxel.save("page.png", "page.tif", mode="bilevel", compress="t6", dpi=300)

Everything is done by libraxelhost and the filter raxel.so, without a compiler; numpy and Pillow are used
where a picture is theirs, and not needed otherwise. The library lets go of Python while it works. It takes
one picture at a time: exports of several threads queue, and processes go side by side.
"""

from __future__ import annotations

import os as _os
from typing import Optional, Union

from . import _library
from ._colors import dither, quantize
from ._error import Error, Stopped, failure
from ._export import Entry, Inspection, plan, save, tobytes
from ._file import MANIFEST, export_file
from ._inspect import inspect
from ._options import NOT_IN_PYTHON, Option, options
from ._report import Report

__version__ = _library.version()


def open(path: Union[None, str, "_os.PathLike[str]"] = None) -> str:
    """Loads the filter, for as long as the process lives, and returns its path.

    Without a path it is looked for in ``RAXEL_LIBRARY``, beside libraxelhost, and where it was installed. The
    first export does that by itself.

    :raises raxel.Error: when it is not there, or another one is loaded.
    """
    code = _library.lib.raxelHostOpen(None if path is None else _os.fsencode(path))
    if code != _library.OK:
        raise failure(code, _library.text(_library.lib.raxelHostOpenError()))
    return _library.text(_library.lib.raxelHostFilter())


__all__ = [
    "MANIFEST",
    "NOT_IN_PYTHON",
    "Entry",
    "Error",
    "Inspection",
    "Option",
    "Report",
    "Stopped",
    "dither",
    "export_file",
    "inspect",
    "open",
    "options",
    "plan",
    "quantize",
    "save",
    "tobytes",
]
