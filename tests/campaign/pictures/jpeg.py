# SPDX-License-Identifier: MIT
"""JPEG: frames of one to ten components with their sampling factors, the scans that they come in, restarts, and what stands
beside the picture. The blocks are of a few small values, which two short tables of codes are enough for.
"""

import struct

from .bits import Bits
from .teller import Picture

BASELINE, EXTENDED, PROGRESSIVE = 0xC0, 0xC1, 0xC2
FRAMES = (0xC0, 0xC1, 0xC2, 0xC3, 0xC5, 0xC6, 0xC7, 0xC9, 0xCA, 0xCB, 0xCD, 0xCE, 0xCF)
START, END = b"\xff\xd8", b"\xff\xd9"
DHT, DAC, DNL, DRI, DQT, SOS = 0xC4, 0xCC, 0xDC, 0xDD, 0xDB, 0xDA
JFIF, EXIF, ICC, ADOBE = 0xE0, 0xE1, 0xE2, 0xEE
MOST = 4  # components of a scan
# Codes of one, two and three bits: of differences of no, three and five bits, and of an end of block and two runs.
COUNTS = bytes([1, 1, 1]) + bytes(13)
DIFFERENCES, ENDS = COUNTS + bytes([0, 3, 5]), COUNTS + bytes([0, 2, 1])


def segment(marker, content, size=None):
    return bytes((0xFF, marker)) + struct.pack(">H", len(content) + 2 if size is None else size) + content


def told(teller, name, marker, content):
    """A segment whose length may be wrong, and its content not whole."""
    size = len(content) + 2
    size = teller.tell(f"length of {name}", size, (0, 1, 2, size - 1, size + 1, size + 9, 65535))
    half = len(content) // 2
    content = teller.tell(f"content of {name}", content, [content[:-1], content + b"\0", b"", content[:half] + b"\xff" * half])
    return segment(marker, content, size)


def quantization():
    return segment(DQT, b"\0" + b"\1" * 64)


def codes():
    return b"".join(segment(DHT, bytes([number | kind << 4]) + table) for number in (0, 1) for kind, table in ((0, DIFFERENCES), (1, ENDS)))


def tables():
    """As TIFF keeps them beside its pieces."""
    return START + quantization() + codes() + END


def exif(teller, entries):
    """What cameras write: tags with a type, a count and a value."""
    order = teller.pick("<", ">")
    first, count = teller.number("Exif's directory", 8), teller.number("Exif's entries", len(entries), 16)
    data = (b"II" if order == "<" else b"MM") + struct.pack(order + "HIH", 42, first, count)
    for tag, kind, number, value in entries:
        number, value = teller.number(f"Exif's count of {tag}", number), teller.number(f"Exif's value of {tag}", value)
        if kind == 3 and order == ">":
            value = value << 16 & 0xFFFFFFFF
        data += struct.pack(order + "HHII", tag, teller.number(f"Exif's type of {tag}", kind, 16), number, value)
    return data + struct.pack(order + "I", 0) + struct.pack(order + "II", 300, 1) * 2 + b"somebody\0"


class Frame:
    def __init__(self, teller, width, height, factors, kind):
        self.teller, self.width, self.height, self.factors, self.kind = teller, width, height, factors, kind
        self.names = teller.tell("names of components", list(range(1, len(factors) + 1)),
                                 ([0] * len(factors), [5] * len(factors), list(b"RGBA567890"[:len(factors)]), list(range(len(factors)))))
        self.restart = teller.pick(0, 0, 0, 1, 2, 7)

    def head(self, marker_name="frame"):
        tell, number = self.teller.tell, self.teller.number
        size = number("height", self.height, 16), number("width", self.width, 16)
        count = tell("components", len(self.factors), range(12))
        parts = b""
        for name, (across, down) in zip(self.names, self.factors):
            factor = tell("sampling", across << 4 | down, (0, 0x01, 0x10, 0x11, 0x12, 0x21, 0x22, 0x31, 0x13, 0x41, 0x14, 0x44, 0x51, 0xFF))
            parts += bytes([name, factor, tell("quantization of a component", 0, (1, 3, 4, 255))])
        content = struct.pack(">BHHB", tell("precision", 8, (0, 1, 2, 4, 7, 12, 16, 255)), *size, count) + parts
        return told(self.teller, marker_name, tell("kind of frame", self.kind, FRAMES), content), (size[1], size[0])

    def blocks(self, chosen):
        """The blocks of a component in each unit, and how many units there are."""
        widest, tallest = max(across for across, _ in self.factors), max(down for _, down in self.factors)
        if len(chosen) == 1:  # as many as the picture has
            across, down = self.factors[chosen[0]]
            wide, high = -(-self.width * across // widest), -(-self.height * down // tallest)
            return 1, -(-wide // 8) * -(-high // 8)
        each = sum(across * down for across, down in (self.factors[at] for at in chosen))
        return each, -(-self.width // (8 * widest)) * -(-self.height // (8 * tallest))

    def coded(self, chosen, first, last, refined):
        rng, bits, out = self.teller.rng, Bits(), b""
        each, units = self.blocks(chosen)
        for unit in range(units):
            if self.restart and unit and unit % self.restart == 0:
                bits.align(255)
                out += bits.whole().replace(b"\xff", b"\xff\0")
                marker = bytes((0xFF, 0xD0 + (unit // self.restart - 1) % 8))
                out += self.teller.tell("restart", marker, (b"", b"\xff\xd7", b"\xff\xd0\xff\xd1"))
                bits = Bits()
            for _ in range(each):
                if refined:
                    bits.put(rng.randrange(2), 1) if first == 0 else bits.put(0, 1)
                    continue
                if first == 0:
                    size = rng.randrange(3)
                    bits.put((0, 2, 6)[size], size + 1)
                    bits.put(rng.randrange(1 << (0, 3, 5)[size]), (0, 3, 5)[size])
                if last:
                    bits.put(0, 1)
        bits.align(255)
        return out + bits.whole().replace(b"\xff", b"\xff\0")

    def scan(self, chosen, first, last, high=0, low=0):
        tell = self.teller.tell
        count = tell("components of a scan", len(chosen), (0, 1, 2, 3, 4, 5, 255))
        names = tell("names in a scan", [self.names[at] for at in chosen], ([self.names[0]] * len(chosen), [77] * len(chosen)))
        parts = b"".join(bytes([name, tell("tables of a scan", 0x11 if at else 0, (0x01, 0x02, 0x10, 0x20, 0x33, 0x44, 0xFF))])
                         for at, name in enumerate(names))
        limits = [tell("first of a scan", first, (0, 1, 5, 63, 64, 255)), tell("last of a scan", last, (0, 1, 5, 62, 63, 64, 255)),
                  tell("bits of a scan", high << 4 | low, (0, 1, 0x10, 0x11, 0x21, 0x12, 0xD0, 0x0D, 0xFF))]
        return told(self.teller, "scan", SOS, bytes([count]) + parts + bytes(limits)) + self.coded(chosen, first, last, high > 0)

    def scans(self):
        every = list(range(len(self.factors)))
        teller = self.teller
        if self.kind == PROGRESSIVE:
            low = teller.pick(0, 1)
            found = [self.scan(every[at:at + MOST], 0, 0, 0, low) for at in range(0, len(every), MOST)]
            if low:
                found += [self.scan(every[at:at + MOST], 0, 0, 1, 0) for at in range(0, len(every), MOST)]
            bands = teller.pick([(1, 63)], [(1, 5), (6, 63)])
            found += [self.scan([at], first, last) for first, last in bands for at in every]
        elif teller.maybe(0.3) or sum(across * down for across, down in self.factors) > 10:
            found = [self.scan([at], 0, 63) for at in every]
        else:
            found = [self.scan(every[at:at + MOST], 0, 63) for at in range(0, len(every), MOST)]
        return teller.tell("scans", found, (found[1:], found[:-1], found[::-1], found + found, found * 8, []))


def stream(teller, width, height, factors, adobe=None, front=b""):
    return frame(teller, width, height, factors, adobe, front)[0]


def frame(teller, width, height, factors, adobe=None, front=b""):
    """All of a file, and the size that it tells."""
    tell = teller.tell
    made = Frame(teller, width, height, factors, teller.pick(BASELINE, BASELINE, EXTENDED, PROGRESSIVE))
    head, size = made.head()
    lines = tell("rows told behind the first scan", None, (0, 1, height, height + 1, 65535))
    larger = segment(BASELINE, struct.pack(">BHHB", 8, 2 * height, 2 * width, 1) + b"\1\x11\0")
    smaller = segment(BASELINE, struct.pack(">BHHB", 8, 1, 1, 4) + b"".join(bytes([name, 0x11, 0]) for name in range(1, 5)))
    second = tell("second frame", b"", [head, larger, smaller, START])
    place = tell("where a second frame stands", 0, (1,))
    scans = made.scans()
    if lines is not None and scans:
        scans[0] += segment(DNL, struct.pack(">H", lines))
    data = START + front
    data += tell("Adobe's segment", b"" if adobe is None else segment(ADOBE, b"Adobe\0\x64\0\0\0\0" + bytes([adobe])),
                 [b"", *(segment(ADOBE, b"Adobe\0\x64\0\0\0\0" + bytes([kind])) for kind in (0, 1, 2, 3, 255)), segment(ADOBE, b"Adobe")])
    data += tell("quantization", quantization(), (b"", quantization()[:40], segment(DQT, b"\x10" + b"\1" * 128),
                                                  segment(DQT, b"\4" + b"\1" * 64), segment(DQT, bytes(65))))
    data += head + (second if not place else b"")
    data += tell("codes", codes(), (b"", codes()[:30], segment(DHT, b"\0" + b"\xff" * 16 + bytes(255)), segment(DHT, b"\4" + DIFFERENCES),
                                    codes() + segment(DAC, b"\0\1")))
    if made.restart:
        data += told(teller, "restarts", DRI, struct.pack(">H", teller.number("interval of restarts", made.restart, 16)))
    data += (second if place else b"").join(scans) + tell("end", END, (b"", END + START, END + b"\0" * 9))
    return data, size


def build(teller):
    pick, maybe = teller.pick, teller.maybe
    width, height = pick((1, 1), (8, 8), (20, 13), (17, 33), (64, 2), (70, 50))
    count = pick(1, 3, 3, 3, 4) if maybe(0.8) else teller.rng.randint(1, 10)
    factors = [(1, 1)] * count
    if maybe(0.6):
        factors[0] = pick((1, 1), (2, 1), (2, 2), (1, 2), (4, 1))
    if maybe(0.15):
        factors = [(pick(1, 2, 3, 4), pick(1, 2, 3, 4)) for _ in range(count)]
    front = b""
    if maybe(0.3):
        unit = teller.number("unit of JFIF", pick(0, 1, 2), 8)
        across, down = teller.number("dots across", 300, 16), teller.number("dots down", 300, 16)
        thumbnail = teller.number("thumbnail across", 0, 8), teller.number("thumbnail down", 0, 8)
        front += told(teller, "JFIF", JFIF, b"JFIF\0\1\2" + struct.pack(">BHHBB", unit, across, down, *thumbnail))
    turned = maybe(0.3)
    if turned:
        entries = [(0x112, 3, 1, teller.rng.randint(1, 8)), (0x11A, 5, 1, 62), (0x13B, 2, 9, 78)]
        front += told(teller, "Exif", EXIF, b"Exif\0\0" + exif(teller, entries))
    if maybe(0.2):
        parts = pick(1, 2, 3)
        for at in range(parts):
            numbers = bytes([teller.number("ICC part", at + 1, 8), teller.number("ICC parts", parts, 8)])
            front += told(teller, "ICC", ICC, b"ICC_PROFILE\0" + numbers + teller.noise(60))
    data, size = frame(teller, width, height, factors, pick(None, None, 0, 1, 2), front)
    lines = 0 in size or "rows told" in teller.said or "second" in teller.said
    return Picture(data, None if lines else size, turned)
