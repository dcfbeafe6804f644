# SPDX-License-Identifier: MIT
"""SPIX, as Leptonica keeps its own pictures."""

import struct

from .teller import Picture

DEPTHS = (1, 2, 4, 8, 16, 32)


def build(teller):
    pick, maybe, number = teller.pick, teller.maybe, teller.number
    width, height = pick((1, 1), (9, 7), (33, 2), (64, 40))
    depth = pick(*DEPTHS)
    colors = pick(0, 1 << depth, 2) if depth <= 8 and maybe() else 0
    words = (width * depth + 31) // 32
    data = teller.pixels(4 * words * height)
    data = teller.tell("rows", data, (data[:-4], data[:-1], b"", data + bytes(4)))
    size = number("width", width), number("height", height)
    told_depth = teller.tell("depth", depth, (0, 1, 2, 3, 4, 8, 16, 24, 32, 33, 64, 1 << 31))
    head = struct.pack("<IIIII", *size, told_depth, number("words of a row", words), number("colours", colors))
    whole = teller.tell("magic", b"spix", (b"xips", b"SPIX")) + head + teller.pixels(4 * colors)
    return Picture(whole + struct.pack("<I", number("bytes of the rows", len(data))) + data, size)
