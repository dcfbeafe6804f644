# SPDX-License-Identifier: MIT
"""GIF: frames on, across and beyond their screens, disposals, transparent colours, tables of both kinds and codes of every size."""

import struct

from .bits import lzw
from .teller import Picture


def blocks(data, most=255):
    return b"".join(bytes([len(data[at:at + most])]) + data[at:at + most] for at in range(0, len(data), most)) + b"\0"


def control(teller, colors):
    """What becomes of a frame, and which of its colours is transparent."""
    tell = teller.tell
    seen_through = teller.maybe()
    flags = tell("flags of a control", teller.rng.randrange(4) << 2 | seen_through, (0, 1, 4 << 2, 7 << 2 | 1, 0xFF))
    return (b"\x21\xf9" + bytes([tell("length of a control", 4, (0, 1, 3, 5, 255)), flags, 5, 0,
                                 teller.number("transparent colour", teller.rng.randrange(colors), 8)]) + b"\0")


def frame(teller, screen, has_table, within):
    pick, maybe, number = teller.pick, teller.maybe, teller.number
    width, height = pick(screen, screen, (5, 4), (1, 1), (12, 3))
    left, top = (0, 0) if maybe() else (pick(0, 1, 3), pick(0, 2, 9))
    if within:
        width, height = min(width, screen[0]), min(height, screen[1])
        left, top = min(left, screen[0] - width), min(top, screen[1] - height)
    own = pick(0, 1, 3, 7) if maybe(0.3) or not has_table else None
    bits = (own if own is not None else has_table - 1) + 1
    size = max(2, bits)
    flags = (0 if own is None else 0x80 | own) | (0x40 if maybe(0.3) else 0)
    data = control(teller, 1 << bits) if maybe() else b""
    if maybe(0.1):
        data += teller.tell("comment", b"\x21\xfe\3abc\0", (b"\x21\xfe\xffabc\0", b"\x21\xff\x0bICCRGBG1012\x03abc\0",
                                                          b"\x21\x01\x0c" + bytes(13), b"\x21"))
    data += b"\x2c" + struct.pack("<HHHH", number("left", left, 16), number("top", top, 16), number("width of a frame", width, 16),
                                  number("height of a frame", height, 16))
    data += bytes([teller.tell("flags of a frame", flags, (0, 0x40, 0x80, 0x87, 0xC7, 0x20))])
    if own is not None:
        data += teller.pixels(6 << own)
    area = width * height
    count = max(0, teller.tell("pixels", area, (0, 1, area - 1, area - width, area // 2, area + 5)))
    values = [value % (1 << bits) for value in teller.pixels(count)]
    coded = lzw(values, size, gif=True)
    coded = teller.tell("codes", coded, (coded[:-1], coded[:len(coded) // 2], b"", b"\xff" * len(coded), coded[1:]))
    data += bytes([teller.tell("size of codes", size, range(14))]) + blocks(coded, pick(255, 255, 1, 60))
    return data


def build(teller):
    pick, maybe, tell, number = teller.pick, teller.maybe, teller.tell, teller.number
    screen = pick((10, 10), (1, 1), (40, 30), (5, 4), (16, 9))
    table = pick(0, 1, 2, 4, 8)
    size = number("width", screen[0], 16), number("height", screen[1], 16)
    data = tell("version", b"GIF89a", (b"GIF87a", b"GIF88a", b"GIF8"))
    data += struct.pack("<HHBBB", *size, tell("flags of the screen", 0x80 | (table - 1) if table else 0, (0, 0x80, 0x87, 0x88, 0x77, 0xFF)),
                        number("background", 0, 8), number("proportions", 0, 8))
    data += teller.pixels(3 << table) if table else b""
    if maybe(0.2):
        data += b"\x21\xff\x0bNETSCAPE2.0\3\1\0\0\0"
    within = maybe(0.9)  # the screen, which is larger else
    frames = [frame(teller, screen, table, within) for _ in range(pick(1, 1, 1, 2, 5))]
    data += b"".join(tell("frames", frames, ([], frames[1:], frames * 5, [b"\0", *frames], [b"\x21\xf9\4\0\0\0\0\0", *frames])))
    return Picture(data + tell("end", b"\x3b", (b"", b"\0", b"\x3b\x3b", b"\x2c")), size if within and not teller.said else None)
