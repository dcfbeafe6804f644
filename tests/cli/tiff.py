# SPDX-License-Identifier: MIT
"""A TIFF decoder of the tests' own: what raxel writes, and nothing more. Shares no code with any other.

    width, height, rgb, dpi = decode(file_bytes)

`rgb` is three bytes a pixel from the top left on.
"""

import itertools
import struct

import fax_codes


class Bad(Exception):
    """The file breaks the format."""


def directory(data):
    """Tag to list of values, of the first directory."""
    if data[:4] != b"II*\0":
        raise Bad("no little-endian TIFF")
    (at,) = struct.unpack_from("<I", data, 4)
    (count,) = struct.unpack_from("<H", data, at)
    tags = {}
    for i in range(count):
        tag, kind, number, value = struct.unpack_from("<HHII", data, at + 2 + 12 * i)
        size = {2: 1, 3: 2, 4: 4, 5: 8, 7: 1}.get(kind)
        if size is None:
            raise Bad(f"type {kind}")
        place = value if size * number > 4 else at + 2 + 12 * i + 8
        form = {2: f"<{number}B", 7: f"<{number}B", 3: f"<{number}H", 4: f"<{number}I", 5: f"<{2 * number}I"}[kind]
        tags[tag] = list(struct.unpack_from(form, data, place))
    if struct.unpack_from("<I", data, at + 2 + 12 * count) != (0,):
        raise Bad("a second directory")
    return tags


def unpack_bits(data):
    out = bytearray()
    at = 0
    while at < len(data):
        n = data[at]
        if n < 128:
            out += data[at + 1:at + 2 + n]
            at += n + 2
        elif n > 128:
            out += data[at + 1:at + 2] * (257 - n)
            at += 2
        else:
            at += 1
    return bytes(out)


def unpack_lzw(data, expected):
    """Stops at the expected number of bytes: in the rare strip whose last code fills the table up to a
    power of two, the writer's end mark has one bit too many, and readers do not look at it.
    """
    table = [bytes([i]) for i in range(256)] + [b"", b""]
    out = []
    width, previous = 9, None
    bits = filled = done = 0
    for byte in data:
        bits = bits << 8 | byte
        filled += 8
        while filled >= width:
            code = bits >> (filled - width)
            filled -= width
            bits &= (1 << filled) - 1
            if code == 256:
                del table[258:]
                width, previous = 9, None
                continue
            if code == 257:
                return b"".join(out)
            if previous is None:
                entry = table[code]
            else:
                if code > len(table):
                    raise Bad("an LZW code before its time")
                entry = table[code] if code < len(table) else previous + previous[:1]
                table.append(previous + entry[:1])
                # The writer widens one code early.
                width = 9 if len(table) < 511 else 10 if len(table) < 1023 else 11 if len(table) < 2047 else 12
            out.append(entry)
            previous = entry
            done += len(entry)
            if done >= expected:
                return b"".join(out)
    raise Bad("LZW data without its end")


class Bits:
    """Codes from the front of a string of bits."""

    def __init__(self, data):
        self.text = "".join(f"{byte:08b}" for byte in data)
        self.at = 0

    def code(self, codes, longest=13):
        for length in range(1, longest + 1):
            word = self.text[self.at:self.at + length]
            if word in codes:
                self.at += length
                return codes[word]
        raise Bad(f"no code at bit {self.at}")

    def run(self, color):
        total = 0
        while True:
            part = self.code(fax_codes.RUNS[color])
            total += part
            if part < 64:
                return total

    def align(self):
        self.at = (self.at + 7) // 8 * 8


def runs_row(bits, width):
    """A one-dimensional row as a list of 0 (white) and 1 (black)."""
    row, color = [], 0
    while len(row) < width:
        row += [color] * bits.run(color)
        color = 1 - color
    if len(row) != width:
        raise Bad("a row that is too long")
    return row


def huffman(data, width, rows):
    bits = Bits(data)
    out = []
    for _ in range(rows):
        out.append(runs_row(bits, width))
        bits.align()
    return out


def t4(data, width, rows):
    bits = Bits(data)
    out = []

    def end_of_line():
        # Fill of any length may stand before it.
        start = bits.text.index("1", bits.at)
        if start - bits.at < 11:
            raise Bad("no EOL where one should be")
        bits.at = start + 1

    end_of_line()
    for _ in range(rows):
        out.append(runs_row(bits, width))
        end_of_line()
    for _ in range(5):
        end_of_line()
    return out


def t6(data, width, rows):
    bits = Bits(data)
    out = []
    above = [0] * width
    for _ in range(rows):
        row, a0, color = [], -1, 0
        while a0 < width:
            at = max(a0, 0)
            # b1: the first change right of a0 to the colour that a0 has not.
            b1 = a0 + 1
            while b1 < width and not (above[b1] != color and (above[b1 - 1] if b1 else 0) == color):
                b1 += 1
            b2 = b1 + 1
            while b2 < width and above[b2] != color:
                b2 += 1
            b2 = min(b2, width)
            mode = bits.code(fax_codes.MODES)
            if mode == "pass":
                row += [color] * (b2 - at)
                a0 = b2
            elif mode == "horizontal":
                first, second = bits.run(color), bits.run(1 - color)
                row += [color] * first + [1 - color] * second
                a0 = at + first + second
            else:
                a1 = b1 + mode
                if a1 < at:
                    raise Bad("a change that goes back")
                row += [color] * (a1 - at)
                a0, color = a1, 1 - color
            if a0 >= width:
                break
        if len(row) != width:
            raise Bad(f"a row of {len(row)} instead of {width} pixels")
        out.append(row)
        above = row
    return out


def pack(rows):
    out = bytearray()
    for row in rows:
        text = "".join(map(str, row))
        text += "0" * (-len(text) % 8)
        out += int(text, 2).to_bytes(len(text) // 8, "big") if text else b""
    return bytes(out)


def piece(data, compression, width, rows, expected):
    """One strip or tile as packed rows."""
    if compression == 1:
        return data
    if compression == 32773:
        return unpack_bits(data)
    if compression == 5:
        return unpack_lzw(data, expected)
    return pack({2: huffman, 3: t4, 4: t6}[compression](data, width, rows))


def packed_rows(data, tags, width, height, bits):
    """All rows, one after the other, without padding."""
    (compression,) = tags[259]
    row_bytes = (width * bits + 7) // 8
    if 324 not in tags:
        (rows,) = tags[278]
        out = b""
        for i, (offset, count) in enumerate(zip(tags[273], tags[279])):
            here = min(rows, height - i * rows)
            strip = piece(data[offset:offset + count], compression, width, here, here * row_bytes)
            if len(strip) != here * row_bytes:
                raise Bad(f"strip {i} has {len(strip)} instead of {here * row_bytes} bytes")
            out += strip
        return out
    (tile_width,), (tile_height,) = tags[322], tags[323]
    across = -(-width // tile_width)
    tile_bytes = tile_width * bits // 8
    rows = [b""] * height
    for i, (offset, count) in enumerate(zip(tags[324], tags[325])):
        tile = piece(data[offset:offset + count], compression, tile_width, tile_height, tile_height * tile_bytes)
        for r in range(tile_height):
            y = i // across * tile_height + r
            if y < height:
                rows[y] += tile[r * tile_bytes:(r + 1) * tile_bytes]
    return b"".join(row[:row_bytes] for row in rows)


def undifferenced(rows, width, channels):
    """Samples of 8 bits from their differences to the pixel to the left."""
    out = bytearray()
    for start in range(0, len(rows), width * channels):
        row = bytearray(rows[start:start + width * channels])
        for c in range(channels):
            row[c::channels] = bytes(total & 255 for total in itertools.accumulate(row[c::channels]))
        out += row
    return bytes(out)


def decode(data):
    tags = directory(data)
    (width,), (height,), (channels,) = tags[256], tags[257], tags[277]
    depth = tags[258][0]
    if tags[258] != [depth] * channels:
        raise Bad(f"{channels} samples of {tags[258]} bits")
    if list(tags) != sorted(tags):
        raise Bad(f"tags in the order {list(tags)}")
    fax = tags[259][0] in (2, 3, 4)
    if tags[262] != ([2] if channels == 3 else [3] if 320 in tags else [0] if fax else [1]):
        raise Bad(f"photometric {tags[262]}")
    if tags[296] != [2]:
        raise Bad("a resolution that is not in inches")
    dpi = (tags[282][0] / tags[282][1], tags[283][0] / tags[283][1])
    rows = packed_rows(data, tags, width, height, depth * channels)
    if tags.get(317, [1]) == [2]:
        rows = undifferenced(rows, width, channels)
    elif 317 in tags:
        raise Bad(f"predictor {tags[317]}")
    if channels == 3:
        return width, height, rows, dpi
    levels = 1 << depth
    if tags[262] == [3]:
        red, green, blue = (tags[320][c * levels:(c + 1) * levels] for c in range(3))
        table = [bytes((r >> 8, g >> 8, b >> 8)) for r, g, b in zip(red, green, blue)]
    else:
        table = [bytes([i * 255 // (levels - 1)] * 3) for i in range(levels)]
        if fax:  # white is 0
            table.reverse()
    if depth == 8:
        return width, height, b"".join(table[v] for v in rows), dpi
    per_byte = 8 // depth
    # Each byte of packed pixels as its colours.
    spread = [b"".join(table[v >> (8 - depth * (k + 1)) & (levels - 1)] for k in range(per_byte)) for v in range(256)]
    row_bytes = (width * depth + 7) // 8
    out = []
    for y in range(height):
        out.append(b"".join(map(spread.__getitem__, rows[y * row_bytes:(y + 1) * row_bytes]))[:3 * width])
    return width, height, b"".join(out), dpi
