# SPDX-License-Identifier: MIT
"""PNG: every type and depth, tables and transparent colours, interlaced or not, and chunks in and out of their order."""

import struct
import zlib

from .teller import Picture

GREY, RGB, TABLE, GREY_ALPHA, RGB_ALPHA = 0, 2, 3, 4, 6
CHANNELS = {GREY: 1, RGB: 3, TABLE: 1, GREY_ALPHA: 2, RGB_ALPHA: 4}
DEPTHS = {GREY: (1, 2, 4, 8, 16), RGB: (8, 16), TABLE: (1, 2, 4, 8), GREY_ALPHA: (8, 16), RGB_ALPHA: (8, 16)}
# The passes of interlaced pictures: the first column and row, and the steps.
PASSES = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2))
SIGNATURE = b"\x89PNG\r\n\x1a\n"


def beside(teller):
    """Chunks that a file may do without: most of them in their form, and content that any of them may have instead."""
    profile = b"own\0\0" + zlib.compress(teller.noise(140))
    exif = b"II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0"
    colors = struct.pack(">8I", 31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000)
    return ((b"gAMA", struct.pack(">I", 45455)), (b"cHRM", colors), (b"sRGB", b"\0"), (b"iCCP", profile),
            (b"pHYs", struct.pack(">IIB", 11811, 11811, 1)), (b"tEXt", b"Author\0somebody"),
            (b"zTXt", b"Title\0\0" + zlib.compress(b"x" * 99)), (b"iTXt", b"Author\0\0\0en\0\0somebody"), (b"eXIf", exif),
            (b"tIME", bytes(7)), (b"sPLT", b"a\0\x08" + bytes(12)), (b"acTL", bytes(8)), (b"prVt", b"any"))


class File:
    def __init__(self, teller):
        self.teller, self.chunks = teller, []

    def add(self, name, content):
        """The parts of a chunk, each of which may be wrong."""
        tell, title = self.teller.tell, name.decode()
        content = tell(f"content of {title}", content, (content[:-1], content + b"\0", b"", b"\xff" * len(content), self.teller.noise(9)))
        told_name = tell(f"name of {title}", name, (b"IDAT", b"IEND", b"IHDR", b"PLTE", b"tRNS", b"ABCD", b"\0\0\0\0"))
        size = self.teller.number(f"length of {title}", len(content))
        checked = tell(f"sum of {title}", zlib.crc32(told_name + content), (0, 1))
        self.chunks.append(struct.pack(">I", size) + told_name + content + struct.pack(">I", checked))

    def whole(self):
        """With two of the chunks in each other's places, with one twice, or one left out."""
        every = range(len(self.chunks))
        places = list(every)
        exchanged = [places[:at] + [other] + places[at + 1:other] + [at] + places[other + 1:]
                     for at in every for other in every if at < other]
        twice = [places[:at] + [at] + places[at:] for at in every]
        without = [places[:at] + places[at + 1:] for at in every]
        order = self.teller.tell("order of chunks", places, exchanged + twice + without)
        return self.teller.tell("signature", SIGNATURE, (SIGNATURE[:-1], b"\x89PNG\n\n\x1a\n")) + b"".join(self.chunks[at] for at in order)


def rows(teller, width, height, bits, interlaced):
    data = b""
    for left, top, across, down in PASSES if interlaced else ((0, 0, 1, 1),):
        wide, high = -(-(width - left) // across), -(-(height - top) // down)
        if wide > 0:
            size = (wide * bits + 7) // 8
            filters = teller.tell("filter", teller.rng.randrange(5), (5, 6, 128, 255))
            data += b"".join(bytes([filters]) + teller.pixels(size) for _ in range(high))
    size = len(data)
    return teller.tell("rows", data, (data[:-1], data[:size // 2], data[:size * 7 // 8], data + b"\0", data + bytes(99999), b""))


def build(teller):
    pick, maybe, tell, number = teller.pick, teller.maybe, teller.tell, teller.number
    kind = pick(*CHANNELS)
    depth = pick(*DEPTHS[kind])
    interlaced = maybe(0.4)
    width, height = pick((1, 1), (5, 3), (9, 9), (17, 8), (64, 33), (3, 40), (8, 1), (1, 8))
    file = File(teller)
    size = number("width", width), number("height", height)
    kind_told, depth_told = tell("type", kind, range(8)), tell("depth", depth, (0, 1, 2, 3, 4, 8, 16, 32))
    ways = tell("compression", 0, (1, 255)), tell("filtering", 0, (1, 64)), tell("interlacing", int(interlaced), (0, 1, 2, 255))
    file.add(b"IHDR", struct.pack(">IIBBBBB", *size, depth_told, kind_told, *ways))
    others = [chunk for chunk in beside(teller) if maybe(0.12)]
    for chunk in others[::2]:
        file.add(*chunk)
    entries = 0
    if kind == TABLE or kind in (RGB, RGB_ALPHA) and maybe(0.2):
        entries = number("entries of the table", pick(1 << depth, 1 << depth, 2) if kind == TABLE else 200, 9)
        file.add(b"PLTE", teller.pixels(3 * entries))
    if kind in (GREY, RGB, TABLE) and maybe(0.4):
        alphas = number("transparent entries", pick(1, entries), 9) if kind == TABLE else 0
        color = b"".join(struct.pack(">H", teller.rng.randrange(1 << depth)) for _ in range(CHANNELS[kind]))
        file.add(b"tRNS", teller.noise(alphas) if kind == TABLE else color)
    if maybe(0.15):
        file.add(b"bKGD", bytes({TABLE: 1, GREY: 2, GREY_ALPHA: 2}.get(kind, 6)))
    data = zlib.compress(rows(teller, width, height, depth * CHANNELS[kind], interlaced), pick(0, 1, 9))
    cut = pick(len(data), len(data), len(data) // 2, 1)
    for part in (data[:cut], data[cut:]):
        if part:
            file.add(b"IDAT", part)
    for chunk in others[1::2]:
        file.add(*chunk)
    file.add(b"IEND", b"")
    unsure = any(word in teller.said for word in ("of IHDR", "order"))
    return Picture(file.whole(), None if unsure else size, True)
