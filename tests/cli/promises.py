#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Short files that promise more than any machine has, or than there is room for: each is refused by name, soon and with
little memory, by a decoder in its child as well as by one in the process itself.

    promises.py --build FOLDER --source FOLDER
"""

import os
import random
import struct
import subprocess
import sys
import tempfile
import zlib

from PIL import Image

import shared

MEMORY = 700 << 20  # bytes that any of them may take
SECONDS = 20  # of work; the slowest machine takes a tenth
LONGEST = 1 << 26  # pixels of a side
WEBP = "524946461e000000574542505650384c110000002f07c001000750b22257a6ff8188e87f0000"
SIZES = {1: "B", 2: "B", 3: "H", 4: "I", 7: "B", 11: "f"}


def tiff(tags, pieces):
    """A TIFF of these tags, each with its type and values: "at" and "bytes" are those of its pieces, which may be the first again."""
    head = 8 + 2 + 12 * len(tags) + 4
    data, places = b"", []
    for i, piece in enumerate(pieces):
        same = i > 0 and piece is pieces[0]
        places.append(places[0] if same else head + len(data))
        data += b"" if same else piece
    entries = b""
    for tag, kind, values in tags:
        values = places if values == "at" else [len(piece) for piece in pieces] if values == "bytes" else values
        packed = struct.pack(f"<{len(values)}{SIZES[kind]}", *values)
        if len(packed) > 4:
            data += b"\0" * (len(data) % 2)
            packed, data = struct.pack("<I", head + len(data)), data + packed
        entries += struct.pack("<HHI", tag, kind, len(values)) + packed.ljust(4, b"\0")
    return struct.pack("<2sHIH", b"II", 42, 8, len(tags)) + entries + bytes(4) + data


def strips(width, height, bits, samples, colors, rows, compression, pieces):
    return tiff([(256, 4, [width]), (257, 4, [height]), (258, 3, [bits] * samples), (259, 3, [compression]), (262, 3, [colors]),
                 (273, 4, "at"), (277, 3, [samples]), (278, 4, [rows]), (279, 4, "bytes")], pieces)


def jpeg(channels, side):
    """Of one value, whose first scan has as many channels as it may."""
    def segment(marker, content):
        return bytes((0xFF, marker)) + struct.pack(">H", len(content) + 2) + content

    seen = min(channels, 4)
    codes = b"\1" + bytes(15) + b"\0"  # one, of one bit
    return (b"\xff\xd8" + segment(0xDB, b"\0" + b"\1" * 64) +
            segment(0xC0, struct.pack(">BHHB", 8, side, side, channels) + b"".join(bytes((i + 1, 0x11, 0)) for i in range(channels))) +
            segment(0xC4, b"\x00" + codes) + segment(0xC4, b"\x10" + codes) +
            segment(0xDA, bytes([seen]) + b"".join(bytes((i + 1, 0)) for i in range(seen)) + b"\0\x3f\0") +
            bytes(side // 8 * (side // 8) * seen // 4) + b"\xff\xd9")


def scans(side, count, spectrum=(0, 0), before=b""):
    """A progressive grey JPEG whose scans have one value of a bit for each block, of those coefficients."""
    def segment(marker, content):
        return bytes((0xFF, marker)) + struct.pack(">H", len(content) + 2) + content

    codes = b"\1" + bytes(15) + b"\0"
    mean = segment(0xDA, b"\1\1\0" + bytes(spectrum) + b"\0") + bytes((side // 8) ** 2 // 8)
    # Of the highest coefficient, whose end comes for 16384 blocks at once.
    highest = segment(0xDA, b"\1\1\0\x3f\x3f\0") + bytes(2 * ((side // 8) ** 2 // 16384 + 1))
    return (b"\xff\xd8" + before + segment(0xDB, b"\0" + b"\1" * 64) + segment(0xC2, struct.pack(">BHHB", 8, side, side, 1) + b"\1\x11\0") +
            segment(0xC4, b"\x00" + codes) + segment(0xC4, b"\x10\1" + bytes(15) + b"\xe0") + mean + highest * (count - 1) + b"\xff\xd9")


def gif(width, height, frames=((1, 1), (1, 1)), disposal=None):
    """Frames on a screen, each of one code."""
    control = b"" if disposal is None else b"\x21\xf9\4" + bytes([disposal << 2]) + bytes(4)
    return (b"GIF89a" + struct.pack("<HHBBB", width, height, 0x80, 0, 0) + bytes(3) + b"\xff" * 3 +
            b"".join(control + b"\x2c" + struct.pack("<HHHHB", 0, 0, *frame, 0) + b"\2\2\x44\1\0" for frame in frames) + b"\x3b")


def png(width, height, bits, kind, interlaced=0, rows=None):
    def chunk(name, content):
        return struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))

    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, bits, kind, 0, 0, interlaced)) +
            chunk(b"IDAT", zlib.compress(bytes(height * ((width * bits + 7) // 8 + 1)) if rows is None else rows)) + chunk(b"IEND", b""))


def webp(tiff_width, order=1):
    """A TIFF whose only strip is a WebP of 8 by 8 pixels of one colour, with the lowest bit of each byte first where the order is 2."""
    still = bytes.fromhex(WEBP)
    if order == 2:
        still = bytes(int(f"{byte:08b}"[::-1], 2) for byte in still)
    return tiff([(256, 4, [tiff_width]), (257, 4, [8]), (258, 3, [8] * 3), (259, 3, [50001]), (262, 3, [2]), (266, 3, [order]), (273, 4, "at"),
                 (277, 3, [3]), (278, 4, [8]), (279, 4, "bytes")], [still])


def canvas(width, height):
    """An animation of that still on a canvas."""
    def chunk(name, content):
        return name + struct.pack("<I", len(content)) + content

    def size(*numbers):
        return b"".join(struct.pack("<I", number)[:3] for number in numbers)

    still = bytes.fromhex(WEBP)[12:]
    frame = chunk(b"ANMF", size(0, 0, 7, 7, 100) + b"\0" + still)
    body = b"WEBP" + chunk(b"VP8X", b"\2\0\0\0" + size(width - 1, height - 1)) + chunk(b"ANIM", bytes(6)) + frame
    return chunk(b"RIFF", body)


def directory(big):
    """A pixel, and 4,000 entries whose values are the same 480,000 bytes."""
    pixel = [(tag, 4, 1, value) for tag, value in ((256, 1), (257, 1), (258, 8), (259, 1), (262, 1), (273, 8), (278, 1), (279, 1))]
    entries = pixel + [(tag, 1, 480000, 16) for tag in range(1000, 5000)]
    if big:
        head = struct.pack("<2sHHHQQ", b"II", 43, 8, 0, 16, len(entries)) + b"".join(struct.pack("<HHQQ", *entry) for entry in entries)
    else:
        head = struct.pack("<2sHIH", b"II", 42, 8, len(entries)) + b"".join(struct.pack("<HHII", *entry) for entry in entries)
    return head.ljust(500000, b"\0")


def promises():
    """Name to the bytes, what is said of it (all that is refused ends with 66) and the options."""
    small = ["--size", "100x100"]
    deflated = zlib.compress(bytes(100))
    packer = zlib.compressobj()
    tile = zlib.compress(bytes(65536 * 4096), 1)
    row = b"".join(packer.compress(bytes(1 << 20)) for _ in range(1 << 9)) + packer.flush()
    many = [(tag if tag not in (273, 279, 320, 324, 325) else 999, 1, 70000, 8) for tag in range(1000, 1000 + 60000)]
    return {
        # 2^64 + 26 bytes, of which 64 bits hold the 26.
        "wrapped.tif": (strips(3062868337, 2007567422, 8, 3, 2, 669189141, 32773, [bytes(8)] * 3), "is too large: 3062868337 by 2007567422", small),
        # The first place behind the last word or byte of a row has 33 bits.
        "word.tif": (strips(4294967233, 1, 1, 1, 1, 1, 8, [row]), "is too large: 4294967233 by 1 pixels", small),
        "byte.tif": (strips(4294967295, 1, 1, 1, 1, 1, 8, [row]), "is too large: 4294967295 by 1 pixels", [*small, "-m", "bilevel"]),
        "rows.tif": (strips(1, 4294967295, 8, 1, 1, 4294967295, 8, [row]), "is too large: 1 by 4294967295 pixels", small),
        "long.png": (png(LONGEST + 1, 1, 1, 0), f"is too large: {LONGEST + 1} by 1 pixels", small),
        "longest.png": (png(LONGEST, 1, 1, 0), None, ["-m", "grey256", "--size", "100x1px", "--fit", "exact"]),
        "row16.tif": (strips(1 << 29, 1, 16, 1, 1, 1, 8, [deflated]), "is too large: 536870912 by 1 pixels", small),
        "tile.tif": (tiff([(256, 4, [1]), (257, 4, [1]), (258, 3, [8] * 4), (259, 3, [8]), (262, 3, [5]), (277, 3, [4]), (322, 4, [32768]),
                           (323, 4, [32768]), (324, 4, "at"), (325, 4, "bytes")], [deflated]), "is damaged", []),
        "values.tif": (struct.pack("<2sHIH", b"II", 42, 8, len(many)) + b"".join(struct.pack("<HHII", *entry) for entry in many) + bytes(4),
                       "is damaged", []),
        # Strips of inks, a first pass, and screens around small frames.
        "inks.tif": (strips(37000, 37000, 8, 4, 5, 37000, 8, [deflated]), "is damaged", small),
        "passes.png": (png(LONGEST, 500, 1, 0, interlaced=1, rows=b""), "is damaged", small),
        "screen.gif": (gif(65000, 65000), "is too large: 65000 by 65000 pixels", small),
        "screens.gif": (gif(37000, 37000), "is too large: 37000 by 37000 pixels", [*small, "--page", "2"]),
        **{f"channels{n}.jpg": (jpeg(n, 64), f"has {n} channels, which is no known kind of picture", []) for n in (2, 5, 9, 10)},
        **{f"channels{n}.jpg": (jpeg(n, 64), None, []) for n in (1, 3, 4)},
        # Scans that pass over the whole picture, scans that are not there, and segments of nothing.
        "blocks.jpg": (scans(20000, 1)[:-100000], "is damaged: it has less than a bit for each block", small),
        "scans.jpg": (scans(8000, 3000), "is damaged: it has more scans than a picture needs", small),
        "scans_few.jpg": (scans(64, 400), None, []),
        "scans_large.jpg": (scans(16000, 400), "is damaged: it has more scans than a picture needs", small),
        "means.jpg": (scans(64, 2), None, []),
        "means_missing.jpg": (scans(64, 2, (1, 1)), "is damaged: scans are missing", []),
        "segments.jpg": (scans(64, 2, before=b"\xff\xe1\0\2" * 400000), None, []),
        # Directories, tiles beside their picture, and WebP of another size than the strip.
        "overlap.tif": (directory(False), "is damaged: the values of its directory lie over each other", []),
        "overlap_big.tif": (directory(True), "is damaged: the values of its directory lie over each other", []),
        "tiles.tif": (tiff([(256, 4, [1]), (257, 4, [1 << 20]), (258, 3, [8]), (259, 3, [8]), (262, 3, [1]), (277, 3, [1]), (322, 4, [65536]),
                            (323, 4, [4096]), (324, 4, "at"), (325, 4, "bytes")], [tile] * 256), "is damaged", small),
        "webp.tif": (webp(8), None, []),
        "webp_turned.tif": (webp(8, 2), None, []),
        "webp_turned_narrow.tif": (webp(16, 2), "is damaged: its WebP data are of another width than it says", []),
        "webp_narrow.tif": (webp(16), "is damaged: its WebP data are of another width than it says", []),
        "canvas.webp": (canvas(16385, 8), "is too large: 16385 by 8 pixels", []),
        "canvas_largest.webp": (canvas(16384, 8), None, small),
        # Two tiles of 20 pixels of a bit, which lie side by side in no whole bytes; one alone does not mind.
        **{f"tiles{width}.tif": (tiff([(256, 4, [width]), (257, 4, [16]), (258, 3, [1]), (259, 3, [1]), (262, 3, [1]), (277, 3, [1]), (322, 4, [20]),
                                       (323, 4, [16]), (324, 4, "at"), (325, 4, "bytes")], [bytes(48)] * ((width + 19) // 20)), said, [])
           for width, said in ((40, "is damaged"), (20, None))},
        # Fax codes take memory for the changes of a row; planes of uncompressed tiles lie where they lie.
        "wide.tif": (tiff([(256, 4, [16]), (257, 4, [16]), (258, 3, [1]), (259, 3, [3]), (262, 3, [1]), (277, 3, [1]), (322, 4, [1 << 26]),
                           (323, 4, [16]), (324, 4, "at"), (325, 4, "bytes")], [bytes(800)]), "is damaged", []),
        "planes.tif": (tiff([(256, 4, [16]), (257, 4, [16]), (258, 3, [8] * 3), (259, 3, [1]), (262, 3, [2]), (277, 3, [3]), (284, 3, [2]), (322, 4, [16]),
                             (323, 4, [16]), (324, 4, "at"), (325, 4, "bytes")], [bytes(256)] * 3), None, []),
        # What comes behind the pixels that are asked for, or is not there.
        "opacity.pam": (b"P7\nWIDTH 20000\nHEIGHT 20000\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" + bytes(100), "is cut short", small),
        "comment.pam": (b"P7\n#" + b"x" * 5000 + b"\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" + bytes(4), None, []),
        "later.gif": (gif(1, 1, ((1, 1), *((32000, 32000),) * 3)), None, []),
        "restored.gif": (gif(5000, 5000, ((1, 1),) * 3000, 3), None, [*small, "--page", "3000"]),
    }


def unfilled(program, folder):
    """What is wrong with a picture whose last strip has one row, and is as long as the others: it has that row whatever the memory held."""
    noise = random.Random(7).randbytes(300 * 12)
    path, out = os.path.join(folder, "padded.tif"), os.path.join(folder, "out.tif")
    for level in (0, 9):
        with open(path, "wb") as file:
            file.write(strips(300, 13, 8, 1, 1, 12, 8, [zlib.compress(noise, level)] * 2))
        for fill in (90, 165):
            subprocess.run([program, "-q", "--no-sandbox", "-m", "grey256", "-c", "none", path, out], check=True,
                           env={**os.environ, "GLIBC_TUNABLES": f"glibc.malloc.perturb={fill}:glibc.malloc.tcache_count=0"})
            with Image.open(out) as image:
                if image.convert("L").tobytes()[:13 * 300] != noise + noise[:300]:
                    return f"padded.tif at level {level}: its rows are others with memory of {fill}"
    return ""


def main():
    _, _, program = shared.places()
    sanitized = shared.sanitized(program)
    faults, tried, failed = [], 0, 0
    with tempfile.TemporaryDirectory(prefix="raxel-promises-") as folder:
        out = os.path.join(folder, "out.tif")
        for name, (content, said, options) in promises().items():
            path = os.path.join(folder, name)
            with open(path, "wb") as file:
                file.write(content)
            for more in ([], ["--no-sandbox"]):
                tried += 1
                before = len(faults)
                process = subprocess.Popen([program, "-q", *more, *options, path, out], stderr=subprocess.PIPE, text=True)
                words = process.stderr.read()
                _, status, used = os.wait4(process.pid, 0)
                process.returncode = os.waitstatus_to_exitcode(status)
                title = " ".join((name, *more))
                if process.returncode != (66 if said else 0) or (said or "") not in words:
                    faults.append(f"{title}: ends with {process.returncode}, says {words!r}")
                # The sanitizers keep blocks that were given back.
                if not sanitized and used.ru_maxrss > MEMORY >> 10:
                    faults.append(f"{title}: takes {used.ru_maxrss >> 10} MiB")
                if not sanitized and used.ru_utime + used.ru_stime > SECONDS:
                    faults.append(f"{title}: takes {used.ru_utime + used.ru_stime:.1f} s")
                if os.path.exists(out) != (said is None):
                    faults.append(f"{title}: the output is {'there' if said else 'not there'}")
                if os.path.exists(out):
                    os.unlink(out)
                failed += len(faults) > before
        if not sanitized:  # they have a malloc of their own
            tried += 1
            fault = unfilled(program, folder)
            faults += [fault] if fault else []
            failed += fault != ""
    return shared.tell(faults, f"promises: {tried - failed} passed, {failed} failed")


if __name__ == "__main__":
    sys.exit(main())
