# SPDX-License-Identifier: MIT
"""Readers that the written files are tried on.

Each takes a path and gives (width, height, rgb, dpi or None), rows from the top. libtiff, MuPDF (where it is
installed) and tiff.py share no code. Leptonica, Pillow and the programs rest on libtiff for most of their
decoding; colours, depths and which way is up are their own work.
"""

import ctypes
import ctypes.util
import io
import os
import shutil
import struct
import subprocess
import tempfile

from PIL import Image

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

    def __call__(self, path, page=0):
        file = self.lib.TIFFOpen(path.encode(), b"r")
        if not file or (page and not self.lib.TIFFSetDirectory(ctypes.c_void_p(file), page)):
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
        return width, height, rgb_of(bytes(raster)), dpi


def rgb_of(rgba):
    rgb = bytearray(len(rgba) // 4 * 3)
    for channel in range(3):
        rgb[channel::3] = rgba[channel::4]
    return bytes(rgb)


# --- MuPDF -----------------------------------------------------------------------------------------


def as_strips(data, tags):
    """T.6 tiles below one another as the strips of one narrow picture: MuPDF reads a tile as if it were as wide
    as the picture. Not a bit of the codes changes."""
    tiles = [data[offset:offset + count] for offset, count in zip(tags[324], tags[325])]
    (width,), (height,) = tags[322], tags[323]
    entries = 9
    place = 8 + 2 + 12 * entries + 4
    offsets, counts = [], [len(tile) for tile in tiles]
    at = place + 8 * len(tiles)
    for tile in tiles:
        offsets.append(at)
        at += len(tile)
    lists = offsets + counts
    if len(tiles) == 1:
        places = lists
    else:
        places = [place, place + 4 * len(tiles)]
    fields = [(256, 1, width), (257, 1, height * len(tiles)), (258, 1, 1), (259, 1, 4), (262, 1, tags[262][0]),
              (273, len(tiles), places[0]), (277, 1, 1), (278, 1, height), (279, len(tiles), places[1])]
    out = b"II*\0" + struct.pack("<IH", 8, entries)
    out += b"".join(struct.pack("<HHII", tag, 4, number, value) for tag, number, value in fields)
    return out + struct.pack(f"<I{len(lists)}I", 0, *lists) + b"".join(tiles)


def with_photometric(data, value):
    """The same file with another meaning of its pixels."""
    (at,) = struct.unpack_from("<I", data, 4)
    (count,) = struct.unpack_from("<H", data, at)
    out = bytearray(data)
    for i in range(count):
        entry = at + 2 + 12 * i
        if struct.unpack_from("<H", data, entry) == (262,):
            struct.pack_into("<H", out, entry + 8, value)
    return bytes(out)


def greys_of(data):
    """Width, height and one byte a pixel."""
    pixels = fitz.Pixmap(data)
    if pixels.n != 1:
        raise tiff.Bad(f"MuPDF sees {pixels.n} channels instead of greys")
    return pixels.width, pixels.height, pixels.samples


def grey_rgb(samples):
    out = bytearray(3 * len(samples))
    for channel in range(3):
        out[channel::3] = samples
    return bytes(out)


def mupdf(path):
    with open(path, "rb") as file:
        data = file.read()
    tags = tiff.directory(data)
    (width,), (height,), bits = tags[256], tags[257], tags[258][0]
    if 324 in tags:
        tile_width, _, samples = greys_of(as_strips(data, tags))
        (tile_height,) = tags[323]
        across = -(-width // tile_width)
        rows = []
        for y in range(height):
            down, row = divmod(y, tile_height)
            starts = (((down * across + k) * tile_height + row) * tile_width for k in range(across))
            rows.append(b"".join(samples[at:at + tile_width] for at in starts)[:width])
        return width, height, grey_rgb(b"".join(rows)), None
    if tags[262] == [3] and width * bits < 64:
        # It refuses colour maps in pictures whose rows have less than 8 bytes: the indices as greys, then.
        _, _, samples = greys_of(with_photometric(data, 1))
        levels = 1 << bits
        red, green, blue = (tags[320][c * levels:(c + 1) * levels] for c in range(3))
        table = [bytes((r >> 8, g >> 8, b >> 8)) for r, g, b in zip(red, green, blue)]
        return width, height, b"".join(table[v * (levels - 1) // 255] for v in samples), None
    pixels = fitz.Pixmap(data)
    if pixels.n not in (1, 3):
        raise tiff.Bad(f"MuPDF sees {pixels.n} channels")
    return pixels.width, pixels.height, grey_rgb(pixels.samples) if pixels.n == 1 else pixels.samples, None


# --- The rest ------------------------------------------------------------------------------------------


def own(path):
    with open(path, "rb") as file:
        return tiff.decode(file.read())


def pillow(path):
    with Image.open(path) as image:
        return image.width, image.height, image.convert("RGB").tobytes(), image.info.get("dpi")


class Leptonica:
    def __init__(self):
        self.lib = ctypes.CDLL("liblept.so.5")
        self.lib.setMsgSeverity(6)  # nothing
        for name in ("pixRead", "pixReadTiff", "pixConvertTo32", "pixGetData"):
            getattr(self.lib, name).restype = ctypes.c_void_p

    def __call__(self, path, page=0):
        read = ctypes.c_void_p(self.lib.pixReadTiff(path.encode(), page) if page else self.lib.pixRead(path.encode()))
        if not read:
            raise tiff.Bad("Leptonica cannot read it")
        wide = ctypes.c_void_p(self.lib.pixConvertTo32(read))
        width, height = self.lib.pixGetWidth(wide), self.lib.pixGetHeight(wide)
        dpi = self.lib.pixGetXRes(read), self.lib.pixGetYRes(read)
        words = ctypes.string_at(self.lib.pixGetData(wide), 4 * width * height)
        for pix in (read, wide):
            self.lib.pixDestroy(ctypes.byref(pix))
        # Words of this machine, red in the highest byte.
        rgb = bytearray(3 * width * height)
        for channel in range(3):
            rgb[channel::3] = words[3 - channel::4]
        return width, height, bytes(rgb), dpi


def independent():
    """Name to reader, for all but libtiff."""
    found = {"tiff.py": own}
    if fitz:
        found["mupdf"] = mupdf
    return found


def resting():
    """Name to reader, for those which rest on libtiff."""
    found = {"Pillow": pillow}
    try:
        found["Leptonica"] = Leptonica()
    except OSError:
        pass
    return found


def portable(data):
    """A raw PPM, PGM or PBM as (width, height, rgb, None)."""
    image = Image.open(io.BytesIO(data)).convert("RGB")
    return image.width, image.height, image.tobytes(), None


class Programs:
    """Programs that people convert files with; each is asked once for many files."""

    def __init__(self):
        self.commands = {}
        for name, program in (("ImageMagick", ["mogrify"]), ("GraphicsMagick", ["gm", "mogrify"])):
            if shutil.which(program[0]):
                self.commands[name] = [*program, "-format", "ppm", "-depth", "8"]
        self.netpbm = shutil.which("tifftopnm") is not None

    def names(self):
        return [*self.commands, *(["netpbm"] if self.netpbm else [])]

    def __call__(self, paths):
        """Yields (program, path, picture or the trouble)."""
        for name, command in self.commands.items():
            with tempfile.TemporaryDirectory(dir=os.path.dirname(paths[0])) as folder:
                # Links, so that what comes out lies beside them: not both programs can be told a folder.
                for number, path in enumerate(paths):
                    os.symlink(path, os.path.join(folder, f"{number}.tif"))
                files = [f"{number}.tif" for number in range(len(paths))]
                done = subprocess.run([*command, *files], cwd=folder, capture_output=True, text=True)
                for number, path in enumerate(paths):
                    try:
                        with open(os.path.join(folder, f"{number}.ppm"), "rb") as made:
                            yield name, path, portable(made.read())
                    except OSError:
                        yield name, path, done.stderr[-200:]
        if self.netpbm:
            for path in paths:
                done = subprocess.run(["tifftopnm", path], capture_output=True)
                try:
                    yield "netpbm", path, portable(done.stdout)
                except OSError:
                    yield "netpbm", path, done.stderr[-200:].decode()
