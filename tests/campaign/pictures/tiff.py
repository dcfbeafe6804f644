# SPDX-License-Identifier: MIT
"""TIFF: every photometric interpretation, depth and number of samples, in strips and tiles, planes, and all compressions that
there is an encoder for.
"""

import io
import zlib

from PIL import Image

from . import fax, jpeg
from .bits import lzw, packbits
from .teller import Picture
from .tiff_file import BYTE, LENGTHS, LONG, OFFSETS, RATIONAL, SHORT, TEXT, UNDEFINED, Page, write

WHITE, BLACK, RGB, TABLE, MASK, INKS, YCBCR, LAB = 0, 1, 2, 3, 4, 5, 6, 8
COLORS = {WHITE: 1, BLACK: 1, RGB: 3, TABLE: 1, MASK: 1, INKS: 4, YCBCR: 3, LAB: 3}  # and the samples that each has
NONE, HUFFMAN, T4, T6, LZW, JPEG, DEFLATE, PACKBITS, OLD_DEFLATE, WEBP = 1, 2, 3, 4, 5, 7, 8, 32773, 32946, 50001
DEPTHS = (1, 1, 2, 4, 8, 8, 8, 16, 16)
SUBSAMPLINGS = ((1, 1), (2, 1), (2, 2), (4, 1), (4, 2), (4, 4), (1, 2))
REVERSED = bytes(int(f"{value:08b}"[::-1], 2) for value in range(256))


class Kind:
    """What one page is, drawn so that it can be."""

    def __init__(self, teller):
        pick, maybe = teller.pick, teller.maybe
        self.teller = teller
        self.compression = pick(NONE, NONE, PACKBITS, LZW, DEFLATE, OLD_DEFLATE, HUFFMAN, T4, T6, JPEG, WEBP)
        self.width, self.height = pick(1, 7, 8, 19, 33, 64), pick(1, 5, 13, 16, 40)
        self.colors = pick(WHITE, BLACK, RGB, RGB, TABLE, MASK, INKS, YCBCR, LAB)
        self.depth = pick(*DEPTHS) if maybe(0.9) else teller.rng.randint(1, 16)
        self.more = pick(0, 0, 0, 1, 2)
        self.subsampling = pick(*SUBSAMPLINGS)
        self.planes = maybe(0.25)
        self.fax = self.compression in (HUFFMAN, T4, T6)
        if self.fax:
            self.colors, self.depth, self.more = pick(WHITE, BLACK), 1, 0
        elif self.compression == JPEG:
            self.colors, self.depth, self.more = pick(BLACK, RGB, YCBCR, INKS), 8, 0
        elif self.compression == WEBP:
            self.colors, self.depth, self.more, self.planes = RGB, 8, pick(0, 1), False
        elif self.colors in (TABLE, MASK):
            self.depth, self.more = 1 if self.colors == MASK else pick(1, 2, 4, 8), 0
        elif self.colors in (INKS, YCBCR, LAB):
            self.depth, self.more = (8, 0) if self.colors == YCBCR else (pick(8, 8, 16), self.more)
        self.samples = min(6, COLORS[self.colors] + self.more)
        self.more = self.samples - COLORS[self.colors]
        if self.colors != YCBCR or self.planes:
            self.subsampling = (1, 1)
        self.tile = None
        if maybe(0.35):
            self.tile = pick((16, 16), (32, 16), (16, 64), (64, 16)) if maybe(0.7) else pick((1, 1), (3, 5), (12, 4), (20, 14), (7, 300))
        if self.tile and (self.subsampling != (1, 1) or self.fax):
            self.tile = (16, 16)
        across, down = self.subsampling
        self.rows = pick(1, 3, 8, 13, self.height, self.height, 1000) if across * down == 1 else pick(down * 2, 16, 48)
        self.padded = maybe(0.3) and self.compression != WEBP  # the last strip is as long as the others
        self.reversed = maybe(0.1) and self.compression in (NONE, HUFFMAN, T4, T6)
        self.predicted = (maybe(0.4) and self.compression in (LZW, DEFLATE, OLD_DEFLATE) and self.depth in (8, 16) and
                          self.subsampling == (1, 1))
        self.mixed, self.aligned = maybe(), maybe()  # T.4 codes in two dimensions, and lines that end with a byte

    def raw(self, width, height, samples):
        across, down = self.subsampling
        if across * down > 1:
            return self.teller.pixels(-(-width // across) * -(-height // down) * (across * down + 2))
        return self.teller.pixels((width * samples * self.depth + 7) // 8 * height)

    def piece(self, width, height, samples):
        teller = self.teller
        if self.compression == JPEG:
            factors = [self.subsampling] + [(1, 1)] * (samples - 1)
            if samples == 3 and self.colors == YCBCR and max(self.subsampling) == 4:
                factors = [(2, 2), (1, 1), (1, 1)]
            return jpeg.stream(teller, width, height, factors, adobe=None)
        if self.compression == WEBP:
            # Rows are given as they are, and not below a picture's own.
            width, height = teller.number("width of WebP", width, 6) or 1, teller.number("height of WebP", height, 6) or 1
            image = Image.frombytes("RGBA" if samples == 4 else "RGB", (width, height), teller.pixels(width * height * samples))
            out = io.BytesIO()
            image.save(out, "WEBP", lossless=True)
            return out.getvalue()
        data = self.raw(width, height, samples)
        short = data[:-((width * samples * self.depth + 7) // 8)]
        data = teller.tell("rows of a piece", data, (short, data[:-1], data[:len(data) // 2], data + data, b""))
        if self.fax:
            pitch = (width + 7) // 8
            rows = [[data[at * pitch + x // 8] >> (7 - x % 8) & 1 for x in range(width)] for at in range(len(data) // pitch)]
            data = {HUFFMAN: fax.huffman, T6: fax.t6, T4: lambda rows: fax.t4(rows, self.mixed, self.aligned)}[self.compression](rows)
        elif self.compression == LZW:
            data = lzw(data, 8)
        elif self.compression == PACKBITS:
            pitch = (width * samples * self.depth + 7) // 8  # runs end with their row
            data = b"".join(packbits(data[at:at + pitch]) for at in range(0, len(data), pitch))
        elif self.compression in (DEFLATE, OLD_DEFLATE):
            data = zlib.compress(data, teller.pick(0, 1, 6))
        return data.translate(REVERSED) if self.reversed else data

    def pieces(self):
        planes, samples = (self.samples, 1) if self.planes else (1, self.samples)
        if self.tile:
            count = -(-self.width // self.tile[0]) * -(-self.height // self.tile[1])
            return [self.piece(*self.tile, samples) for _ in range(min(count * planes, 2000))]
        found = []
        for _ in range(planes):
            for top in range(0, self.height, self.rows):
                full = self.padded and self.rows <= self.height
                found.append(self.piece(self.width, self.rows if full else min(self.rows, self.height - top), samples))
        return found

    def tags(self):
        teller, pick, maybe = self.teller, self.teller.pick, self.teller.maybe
        wide = LONG if maybe() else SHORT
        found = {256: (wide, [self.width]), 257: (wide, [self.height]), 258: (SHORT, [self.depth] * self.samples),
                 259: (SHORT, [self.compression]), 262: (SHORT, [self.colors]), 277: (SHORT, [self.samples]),
                 284: (SHORT, [2 if self.planes else 1])}
        if self.tile:
            found.update({322: (wide, [self.tile[0]]), 323: (wide, [self.tile[1]])})
        else:
            found[278] = (LONG, [self.rows if maybe(0.9) or self.rows < self.height else (1 << 32) - 1])
        found[OFFSETS[bool(self.tile)]] = (LONG, None)
        found[LENGTHS[bool(self.tile)]] = (LONG, None)
        if self.more:
            found[338] = (SHORT, [pick(0, 1, 2) for _ in range(self.more)])
        if self.colors == TABLE:
            found[320] = (SHORT, [teller.rng.randrange(65536) for _ in range(3 << self.depth)])
        if self.colors == YCBCR:
            found[530] = (SHORT, list(self.subsampling))
        for tag, there, kind, values in (
                (266, self.reversed, SHORT, [2]), (317, self.predicted, SHORT, [2]),
                (292, self.compression == T4, LONG, [self.mixed | self.aligned << 2]), (293, self.compression == T6, LONG, [0]),
                (254, maybe(0.1), LONG, [pick(0, 1, 2, 4)]), (270, maybe(0.1), TEXT, list(b"a page\0")),
                (274, maybe(0.2), SHORT, [teller.rng.randint(1, 8)]),
                (282, maybe(0.3), RATIONAL, [(300, 1)]), (283, maybe(0.3), RATIONAL, [(600, 2)]), (296, maybe(0.3), SHORT, [pick(1, 2, 3)]),
                (339, maybe(0.2), SHORT, [1] * self.samples), (330, maybe(0.05), LONG, [8]),
                (34675, maybe(0.1), UNDEFINED, list(teller.noise(140))),
                (532, self.colors == YCBCR and maybe(0.3), RATIONAL, [(0, 1), (255, 1), (128, 1), (255, 1), (128, 1), (255, 1)]),
                (700, maybe(0.05), BYTE, list(b"<x/>"))):
            if there:
                found[tag] = (kind, values)
        if self.compression == JPEG and maybe(0.3):
            found[347] = (UNDEFINED, list(jpeg.tables()))
        left_out = teller.tell("tags left out", None, sorted(found))
        found.pop(left_out, None)
        return found


def build(teller):
    pages = []
    for _ in range(teller.pick(1, 1, 1, 2, 3)):
        kind = Kind(teller)
        pieces = kind.pieces()
        pages.append(Page(kind.tags(), pieces))
    data, size = write(teller, pages)
    return Picture(data, size, True)
