# SPDX-License-Identifier: MIT
"""Picture files that are as their headers say, or that are wrong in one place: a module for each format.

    FORMATS     name to the function that builds one
    draw(...)   one of them
"""

from . import bmp, gif, jp2, jpeg, netpbm, png, spix, tiff, webp
from .teller import draw

FORMATS = {"tiff": tiff.build, "jpeg": jpeg.build, "png": png.build, "gif": gif.build, "bmp": bmp.build, "pnm": netpbm.pnm,
           "pam": netpbm.pam, "webp": webp.build, "jp2": jp2.build, "spix": spix.build}

__all__ = ["FORMATS", "draw"]
