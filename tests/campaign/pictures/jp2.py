# SPDX-License-Identifier: MIT
"""JPEG 2000: code streams with other sizes, parts and precisions than they have, and boxes around them."""

import io
import struct

from PIL import Image

from .teller import Picture

MODES = {"L": 1, "LA": 2, "RGB": 3, "RGBA": 4}
WAYS = ({}, {"tile_size": (16, 16)}, {"irreversible": True}, {"num_resolutions": 1}, {"num_resolutions": 3, "progression": "RPCL"})
# The fields of the code stream's size: their places and bytes.
FIELDS = {"capabilities": (6, 2), "right": (8, 4), "bottom": (12, 4), "left": (16, 4), "top": (20, 4),
          "width of tiles": (24, 4), "height of tiles": (28, 4), "left of tiles": (32, 4), "top of tiles": (36, 4), "channels": (40, 2)}
CHANNELS = 42  # the place of the first one's depth and steps
SIGNATURE = b"\0\0\0\x0cjP  \r\n\x87\n"
WHOLE_NUMBER, PALETTE, GREY, SRGB = 0, 1, 17, 16


def boxes(data):
    at, found = 0, []
    while at + 8 <= len(data):
        size = struct.unpack_from(">I", data, at)[0] or len(data) - at
        found.append((data[at + 4:at + 8], data[at + 8:at + size]))
        at += size
    return found


def box(teller, name, content):
    title = name.decode().strip()
    size = 8 + len(content)
    content = teller.tell(f"content of {title}", content, (content[:-1], content[:len(content) // 2], b"", content + b"\0"))
    told = teller.tell(f"length of {title}", size, (0, 1, 2, 7, 8, 9, size - 1, size + 1, 2 * size, (1 << 31) - 1, 1 << 31, (1 << 32) - 1))
    told_name = teller.tell(f"name of {title}", name, (b"jp2c", b"jp2h", b"ihdr", b"pclr", b"uuid", b"ABCD"))
    return struct.pack(">I", told) + told_name + content


def edited(teller, code, channels):
    """The code stream with its main header told."""
    code = bytearray(code)
    for name, (at, size) in FIELDS.items():
        code[at:at + size] = teller.number(name, int.from_bytes(code[at:at + size], "big"), 8 * size).to_bytes(size, "big")
    for channel in range(channels):
        at = CHANNELS + 3 * channel
        code[at] = teller.tell("depth of a channel", code[at], (0, 1, 6, 8, 11, 15, 31, 37, 0x80, 0x87, 0x8F, 0xFF))
        for step in (1, 2):
            code[at + step] = teller.tell("step of a channel", code[at + step], (0, 2, 3, 4, 255))
    styles = code.find(b"\xff\x52")
    if styles > 0:
        for name, at in (("style", 4), ("progression", 5), ("layers", 7), ("change of colours", 8), ("levels", 9), ("width of blocks", 10),
                         ("height of blocks", 11), ("style of blocks", 12), ("wavelet", 13)):
            code[styles + at] = teller.number(name, code[styles + at], 8)
    start = code.find(b"\xff\x90")
    if start > 0:
        code[start + 4:start + 6] = teller.number("number of a tile", 0, 16).to_bytes(2, "big")
        size = int.from_bytes(code[start + 6:start + 10], "big")
        code[start + 6:start + 10] = teller.number("length of a tile", size).to_bytes(4, "big")
    return bytes(code)


def palette(teller, channels):
    """A table of colours, which its own box maps to channels."""
    entries, columns = teller.pick(2, 256), 3
    data = struct.pack(">HB", teller.number("entries of the table", entries, 16), teller.number("columns of the table", columns, 8))
    data += bytes([teller.tell("depth of a column", 7, (0, 15, 37, 0x87, 255))]) * columns + teller.noise(entries * columns)
    mapping = b"".join(struct.pack(">HBB", teller.tell("channel of a map", 0, (1, channels, 255, 65535)),
                                   teller.tell("kind of a map", PALETTE, (0, 2, 255)),
                                   teller.tell("column of a map", column, (0, 3, 255))) for column in range(columns))
    return box(teller, b"pclr", data) + box(teller, b"cmap", mapping)


def meanings(teller, channels):
    """What the channels are: colours, and the last of an even number an opacity."""
    parts = b""
    for channel in range(channels):
        opacity = channels % 2 == 0 and channel == channels - 1
        parts += struct.pack(">HHH", teller.number("channel that is meant", channel, 16),
                             teller.tell("what a channel is", int(opacity), (0, 1, 2, 65535)),
                             teller.number("colour of a channel", 0 if opacity else channel + 1, 16))
    return box(teller, b"cdef", struct.pack(">H", teller.number("channels that are meant", channels, 16)) + parts)


def build(teller):
    pick, maybe = teller.pick, teller.maybe
    mode = pick("L", "LA", "RGB", "RGB", "RGBA")
    width, height = pick((1, 1), (17, 9), (40, 33))
    image = Image.frombytes(mode, (width, height), teller.pixels(width * height * MODES[mode]))
    out = io.BytesIO()
    image.save(out, "JPEG2000", **pick(*(WAYS if width > 1 else WAYS[:-1])))
    found = dict(boxes(out.getvalue()))
    code = edited(teller, found[b"jp2c"], MODES[mode])
    size = tuple(int.from_bytes(code[at:at + 4], "big") - int.from_bytes(code[at + 8:at + 12], "big") for at in (8, 12))
    if maybe(0.2):
        return Picture(code, size)
    header = dict(boxes(found[b"jp2h"]))
    sizes = struct.pack(">II", teller.number("height of the box", height), teller.number("width of the box", width))
    sizes += struct.pack(">HB", teller.number("channels of the box", MODES[mode], 16), teller.number("depth of the box", 7, 8))
    sizes += header[b"ihdr"][11:]
    colors = bytes([teller.tell("kind of colours", 1, (0, 2, 3, 255)), 0, 0]) + struct.pack(
        ">I", teller.tell("colours", SRGB if MODES[mode] > 2 else GREY, (0, 1, 12, 14, 16, 17, 18, 20, 255)))
    inner = box(teller, b"ihdr", sizes) + box(teller, b"colr", colors)
    if mode == "L" and maybe(0.3):
        inner += palette(teller, MODES[mode])
    elif maybe(0.4):
        inner += meanings(teller, MODES[mode])
    if maybe(0.2):
        inner += box(teller, b"res ", box(teller, b"resd", struct.pack(">HHHHBB", 300, 1, 300, 1, 2, 2)))
    parts = [box(teller, b"ftyp", b"jp2 \0\0\0\0jp2 "), box(teller, b"jp2h", inner), box(teller, b"jp2c", code)]
    if maybe(0.1):
        parts.insert(1, box(teller, b"xml ", b"<x/>"))
    parts = teller.tell("boxes", parts, (parts[1:], parts[:-1], parts[::-1], parts[:1] + parts[2:], parts + parts[-1:]))
    unsure = any(word in teller.said for word in ("box", "length", "name", "content"))
    return Picture(teller.tell("signature", SIGNATURE, (b"", SIGNATURE[:8])) + b"".join(parts), None if unsure else size)
