# SPDX-License-Identifier: MIT
"""BMP: headers of every size, tables, bit fields, runs of 4 and 8 bits, and rows from the top."""

import struct

from .teller import Picture

PLAIN, RUNS8, RUNS4, FIELDS, ALPHA_FIELDS = 0, 1, 2, 3, 6
OLD, INFO = 12, 40  # bytes of headers
HEADERS = (OLD, INFO, INFO, INFO, 52, 56, 64, 108, 124)
MASKS = {16: ((0xF800, 0x7E0, 0x1F, 0), (0x7C00, 0x3E0, 0x1F, 0x8000), (0xF00, 0xF0, 0xF, 0xF000)),
         32: ((0xFF0000, 0xFF00, 0xFF, 0xFF000000), (0x3FF00000, 0xFFC00, 0x3FF, 0), (0xFF, 0xFF00, 0xFF0000, 0))}

WRONG_MASKS = ((0, 0, 0, 0), (0xFFFFFFFF,) * 4, (0xFF, 0xFF, 0xFF, 0), (0x80000001, 0xAAAAAAAA, 1, 1 << 31))
DOTS = (0, -1, 1, (1 << 31) - 1)  # a metre, other than they are


def runs(teller, width, height, depth):
    """Rows as runs and as pixels that follow one by one, each with its end."""
    data = b""
    for _ in range(height):
        at = 0
        while at < width:
            count = min(width - at, teller.rng.randint(1, 9))
            if teller.maybe() and count > 2:
                size = count if depth == 8 else (count + 1) // 2
                data += bytes([0, teller.number("pixels one by one", count, 8)]) + teller.noise(size) + b"\0" * (size % 2)
            else:
                data += bytes([teller.number("run", count, 8), teller.rng.randrange(256)])
            at += count
        data += teller.tell("end of a row", b"\0\0", (b"", b"\0\1", b"\0\2\1\1", b"\0\2\xff\xff", b"\0\0\0\0"))
    return data + teller.tell("end", b"\0\1", (b"", b"\0", b"\0\0", b"\5\5\0\1"))


def table_of(teller, depth):
    count = 1 << depth
    used = teller.pick(0, 0, count, max(1, count // 2))
    return used or count, used


def build(teller):
    pick, maybe, tell, number = teller.pick, teller.maybe, teller.tell, teller.number
    header = pick(*HEADERS)
    width, height = pick((1, 1), (9, 7), (31, 5), (32, 4), (33, 3), (64, 40))
    depth = pick(1, 4, 8, 24) if header == OLD else pick(1, 1, 2, 4, 4, 8, 8, 16, 24, 32)
    kind = PLAIN
    if header >= INFO and depth in (4, 8) and maybe():
        kind = RUNS4 if depth == 4 else RUNS8
    elif header >= INFO and depth in (16, 32) and maybe(0.6):
        kind = pick(FIELDS, ALPHA_FIELDS)
    from_top = header != OLD and kind in (PLAIN, FIELDS, ALPHA_FIELDS) and maybe(0.3)
    entries, used = table_of(teller, depth) if depth <= 8 else (0, 0)
    if header == OLD:
        entries, used = (1 << depth if depth <= 8 else 0), 0
    size = number("width", width, 16 if header == OLD else 31), number("height", height, 16 if header == OLD else 31)
    masks = b""
    if kind in (FIELDS, ALPHA_FIELDS):
        fields = tell("bit fields", pick(*MASKS[depth]), WRONG_MASKS)
        masks = struct.pack("<4I", *fields)
        masks = masks if kind == ALPHA_FIELDS or header >= 56 else masks[:12]
    told_depth, planes = number("depth", depth, 16), number("planes", 1, 16)
    told_header = number("size of the header", header)
    pitch = (width * depth + 31) // 32 * 4
    if kind in (RUNS4, RUNS8):
        data = runs(teller, width, height, depth)
    else:
        data = teller.pixels(pitch * height)
        data = tell("rows", data, (data[:-1], data[:-pitch], data[:len(data) // 2], data + b"\0", b""))
    if header == OLD:
        head = struct.pack("<IHHHH", told_header, *size, planes, told_depth)
    else:
        across = tell("sign of the width", size[0], (-size[0], -(1 << 31)))
        down = tell("sign of the height", -size[1] if from_top else size[1], (-size[1], size[1], -(1 << 31), 0))
        kind_told = tell("compression", kind, range(12))
        head = struct.pack("<IiiHHIIiiII", told_header, across, down, planes, told_depth, kind_told,
                           number("bytes of the picture", len(data)), tell("dots across", 11811, DOTS), tell("dots down", 11811, DOTS),
                           number("colours used", used), number("colours of weight", 0))
        head += masks.ljust(header - len(head), b"\0") if header > INFO else masks
    body = head + teller.pixels((3 if header == OLD else 4) * entries) + (bytes(6) if maybe(0.1) else b"")
    place = number("place of the pixels", 14 + len(body))
    whole = number("size of the file", 14 + len(body) + len(data))
    front = tell("magic", b"BM", (b"BA", b"MB", b"CI")) + struct.pack("<IHHI", whole, 0, 0, place)
    unsure = any(word in teller.said for word in ("header", "sign"))
    return Picture(front + body + data, None if unsure else size)
