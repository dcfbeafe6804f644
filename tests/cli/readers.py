"""Three readers that share no code: libtiff, MuPDF (when it is installed), and tiff.py.

Each takes a path and gives (width, height, rgb, dpi or None), rows from the top.
"""

import ctypes
import ctypes.util

import tiff

try:
    import fitz

    fitz.TOOLS.mupdf_display_errors(False)
except ImportError:  # python3-fitz
    fitz = None


class LibTiff:
    def __init__(self):
        self.lib = ctypes.CDLL("libtiff.so.6")
        self.lib.TIFFOpen.restype = ctypes.c_void_p
        self.lib.TIFFSetWarningHandler.argtypes = [ctypes.c_void_p]
        self.lib.TIFFSetWarningHandler(None)  # tiles stand in another order than tags should
        self.lib.TIFFSetErrorHandler.argtypes = [ctypes.c_void_p]
        self.lib.TIFFSetErrorHandler(None)

    def number(self, tiff_file, tag, kind):
        value = kind()
        if not self.lib.TIFFGetField(ctypes.c_void_p(tiff_file), tag, ctypes.byref(value)):
            raise tiff.Bad(f"libtiff finds no tag {tag}")
        return value.value

    def __call__(self, path):
        file = self.lib.TIFFOpen(path.encode(), b"r")
        if not file:
            raise tiff.Bad("libtiff cannot open it")
        try:
            width, height = self.number(file, 256, ctypes.c_uint32), self.number(file, 257, ctypes.c_uint32)
            dpi = self.number(file, 282, ctypes.c_float), self.number(file, 283, ctypes.c_float)
            raster = (ctypes.c_uint32 * (width * height))()
            # Orientation 1: from the top left; the last argument stops at errors.
            if not self.lib.TIFFReadRGBAImageOriented(ctypes.c_void_p(file), width, height, raster, 1, 1):
                raise tiff.Bad("libtiff cannot decode it")
        finally:
            self.lib.TIFFClose(ctypes.c_void_p(file))
        rgba = bytes(raster)
        rgb = bytearray(3 * width * height)
        for channel in range(3):
            rgb[channel::3] = rgba[channel::4]
        return width, height, bytes(rgb), dpi


def mupdf(path):
    pixels = fitz.Pixmap(path)
    samples = pixels.samples
    if pixels.n == 1:
        samples = bytes(v for level in samples for v in (level, level, level))
    elif pixels.n != 3:
        raise tiff.Bad(f"MuPDF sees {pixels.n} channels")
    return pixels.width, pixels.height, samples, None


def own(path):
    with open(path, "rb") as file:
        return tiff.decode(file.read())


def independent():
    """Name to reader, for all but libtiff."""
    found = {"tiff.py": own}
    if fitz:
        found["mupdf"] = mupdf
    return found
