# SPDX-License-Identifier: MIT
"""WebP: pictures with and without losses, opacities of their own, and canvases with one frame or several."""

import io
import struct

from PIL import Image

from . import jpeg
from .teller import Picture, around

SIZES = ((1, 1), (10, 7), (16, 16), (33, 20))
ANIMATED, EXIF, ALPHA, ICC = 2, 8, 16, 32  # flags


def chunks(data):
    """Name and content of each."""
    at, found = 12, []
    while at + 8 <= len(data):
        size = struct.unpack_from("<I", data, at + 4)[0]
        found.append((data[at:at + 4], data[at + 8:at + 8 + size]))
        at += 8 + size + size % 2
    return found


def chunk(teller, name, content):
    title = name.decode().strip()
    wrong = (content[:-1], content[:len(content) // 2], content + bytes(2), b"")
    content = teller.tell(f"content of {title}", content, wrong)
    told = teller.number(f"length of {title}", len(content))
    told_name = teller.tell(f"name of {title}", name, (b"VP8 ", b"VP8L", b"VP8X", b"ALPH", b"ANMF", b"ABCD"))
    return told_name + struct.pack("<I", told) + content + b"\0" * (len(content) % 2)


def small(value):
    """24 bits."""
    return struct.pack("<I", value & 0xFFFFFF)[:3]


def told(teller, name, value):
    """A side, or a place: one that is too large for its field loses its highest bits."""
    return teller.tell(name, value, around(value, 24) + [1 << 14, (1 << 14) + 1, 1 << 24])


def picture(teller, width, height):
    """The chunks of one, whose own header may have another size."""
    alpha, lossless = teller.maybe(), teller.maybe()
    image = Image.frombytes("RGBA" if alpha else "RGB", (width, height), teller.pixels(width * height * (4 if alpha else 3)))
    out = io.BytesIO()
    image.save(out, "WEBP", lossless=lossless, quality=teller.pick(10, 80))
    body = b""
    for name, content in chunks(out.getvalue()):
        if name == b"VP8L":
            head = struct.unpack_from("<I", content, 1)[0]
            across = teller.number("width of the pixels", width, 14)
            down = teller.number("height of the pixels", height, 14)
            head = head >> 28 << 28 | (down - 1 & 0x3FFF) << 14 | (across - 1 & 0x3FFF)
            head ^= teller.tell("version of VP8L", 0, (1, 2, 7)) << 29 | teller.tell("opacity of VP8L", 0, (1,)) << 28
            content = content[:1] + struct.pack("<I", head) + content[5:]
        elif name == b"VP8 ":
            across = teller.number("width of the pixels", width, 14)
            down = teller.number("height of the pixels", height, 14)
            tag = teller.tell("frame tag", content[:3], (bytes([content[0] | 1]) + content[1:3], content[:1] + b"\xff\xff", bytes(3)))
            content = tag + content[3:6] + struct.pack("<HH", across, down) + content[10:]
        elif name == b"ALPH":
            content = bytes([teller.tell("way of ALPH", content[0], (0, 1, 2, 3, 5, 0x0C, 0x10, 0x30, 0xFF))]) + content[1:]
        if name in (b"VP8L", b"VP8 ", b"ALPH"):
            body += chunk(teller, name, content)
    return body, alpha


def frame(teller, canvas):
    width, height = teller.pick(canvas, canvas, (1, 1), (10, 7))
    width, height = min(width, canvas[0]), min(height, canvas[1])
    left, top = (0, 0) if teller.maybe() else ((canvas[0] - width) // 2 * 2, (canvas[1] - height) // 2 * 2)
    body, _ = picture(teller, width, height)
    fields = (("left", left // 2), ("top", top // 2), ("width of a frame", width - 1), ("height of a frame", height - 1),
              ("time of a frame", 100))
    content = b"".join(small(told(teller, *field)) for field in fields)
    return chunk(teller, b"ANMF", content + bytes([teller.pick(0, 1, 2, 3)]) + body)


def build(teller):
    pick, maybe = teller.pick, teller.maybe
    size = pick(*SIZES)
    kind = pick("simple", "simple", "extended", "extended", "animated")
    turned = False
    if kind == "animated":
        flags, body = ANIMATED | ALPHA, chunk(teller, b"ANIM", teller.noise(4) + b"\0\0")
        body += b"".join(frame(teller, size) for _ in range(pick(1, 2, 3)))
    else:
        body, alpha = picture(teller, *size)
        flags = ALPHA if alpha else 0
    if kind != "simple" or body.startswith(b"ALPH"):
        before = after = b""
        if maybe(0.4):
            flags, turned = flags | EXIF, True
            after = chunk(teller, b"EXIF", pick(b"", b"Exif\0\0") + jpeg.exif(teller, [(0x112, 3, 1, teller.rng.randint(1, 8))]))
        if maybe(0.3):
            flags, before = flags | ICC, chunk(teller, b"ICCP", teller.noise(140))
        flags = teller.tell("flags", flags, (0, ANIMATED, ALPHA, EXIF, ICC, flags ^ ANIMATED, flags ^ ALPHA, 0x3E, 0xFF))
        canvas = told(teller, "width of the canvas", size[0]), told(teller, "height of the canvas", size[1])
        body = chunk(teller, b"VP8X", bytes([flags, 0, 0, 0]) + small(canvas[0] - 1) + small(canvas[1] - 1)) + before + body + after
    whole = b"WEBP" + body
    data = teller.tell("magic", b"RIFF", (b"RIFX", b"riff")) + struct.pack("<I", teller.number("length of the file", len(whole))) + whole
    return Picture(data, size if not teller.said else None, turned)
