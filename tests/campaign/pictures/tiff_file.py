# SPDX-License-Identifier: MIT
"""The container of TIFF: directories of tags and the pieces that they point to, in either order of bytes and in either size."""

import struct

SIZES = {1: 1, 2: 1, 3: 2, 4: 4, 5: 8, 6: 1, 7: 1, 8: 2, 9: 4, 10: 8, 11: 4, 12: 8, 13: 4, 16: 8, 17: 8, 18: 8}
FORMS = {1: "B", 2: "B", 3: "H", 4: "I", 5: "II", 6: "b", 7: "B", 8: "h", 9: "i", 10: "ii", 11: "f", 12: "d", 13: "I", 16: "Q", 17: "q",
         18: "Q"}
BYTE, TEXT, SHORT, LONG, RATIONAL, UNDEFINED, LONG8 = 1, 2, 3, 4, 5, 7, 16
WIDTH, HEIGHT = 256, 257
OFFSETS, LENGTHS = (273, 324), (279, 325)  # of strips, and of tiles


class Page:
    """`tags` has a type and values for each; those of the pieces are filled in when their places are known."""

    def __init__(self, tags, pieces):
        self.tags, self.pieces = tags, pieces


class Writer:
    def __init__(self, teller, order, big):
        self.teller, self.order, self.big = teller, order, big
        self.data = bytearray()
        self.offset = "Q" if big else "I"
        self.size_told = True  # by the width and height as they stand in the file

    def packed(self, form, *values):
        return struct.pack(self.order + form, *values)

    def head(self):
        tell = self.teller.tell
        magic = tell("magic", 43 if self.big else 42, (0, 41, 42, 43, 44))
        self.data += b"II" if self.order == "<" else b"MM"
        self.data += self.packed("H", magic)
        if self.big:
            self.data += self.packed("HH", tell("bytes of an offset", 8, (0, 4, 16)), 0)
        first = tell("first directory", 16 if self.big else 8, (0, 1, 2, 7, 9, 1 << 16, (1 << 31), (1 << 32) - 8))
        self.data += self.packed(self.offset, first)

    def content(self, tag, kind, values):
        """The bytes of a tag's values, the first of which may be wrong, or all of them."""
        bits = 8 * SIZES[kind] // len(FORMS[kind])
        if FORMS[kind] in "BHIQ" and values:
            every = [[value] * len(values) for value in ((1 << bits) - 1, 0)] if len(values) > 1 else []
            first = values[0]
            others = (*range(9), 12, 16, 24, 32, 41, first - 1, first + 1, first + 8, 2 * first, 255, 65535, 1 << 26, (1 << 31) - 1,
                      (1 << 32) - 1)
            with_others = [[value, *values[1:]] for value in others if 0 <= value < 1 << bits]
            values = self.teller.tell(f"tag {tag}", values, with_others + every)
        parts = [part for value in values for part in (value if isinstance(value, tuple) else (value,))]
        return struct.pack(self.order + FORMS[kind] * (len(parts) // len(FORMS[kind])), *parts), values

    def entry(self, tag, kind, values):
        """The head of an entry, and its content."""
        before = self.teller.said
        content, values = self.content(tag, kind, values)
        told_kind = self.teller.tell(f"type of {tag}", kind, sorted(FORMS) + [0, 14, 255])
        number = len(values)
        count = self.teller.tell(f"count of {tag}", number, (0, 1, 2, 3, max(0, number - 1), number + 1, 100, 65535, 1 << 28, (1 << 32) - 1))
        told_tag = self.teller.tell(f"number of {tag}", tag, (tag - 1, tag + 1, 999))
        if tag in (WIDTH, HEIGHT) and self.teller.said != before and self.teller.said.split()[0] in ("type", "count", "number"):
            self.size_told = False
        return self.packed("HH" + self.offset, told_tag, told_kind, count), content, values

    def page(self, page, last):
        """One directory, what its tags hold, and its pieces. Returns its size as it is told."""
        entries = sorted(page.tags.items())
        room = 8 if self.big else 4
        start = len(self.data)
        behind = start + (8 if self.big else 2) + (12 + room - 4 + (4 if self.big else 0)) * len(entries) + room
        places, body = [], b""
        for piece in page.pieces:
            places.append(behind + len(body))
            body += piece + b"\0" * (len(piece) % 2)
        directory, size = b"", {}
        for tag, (kind, values) in entries:
            values = places if tag in OFFSETS else [len(piece) for piece in page.pieces] if tag in LENGTHS else values
            head, content, told = self.entry(tag, kind, values)
            if len(content) > room:
                far = self.teller.tell(f"place of {tag}", behind + len(body), (0, start, 1 << 20, (1 << 31) - 1, (1 << 32) - 2))
                body += content + b"\0" * (len(content) % 2)
                content = self.packed(self.offset, far)
            directory += head + content.ljust(room, b"\0")
            size[tag] = told[0] if told else 0
        count = self.teller.tell("number of tags", len(entries), (0, 1, len(entries) - 1, len(entries) + 1, 4096, 65535))
        following = 0 if last else behind + len(body)
        following = self.teller.tell("next directory", following, (0, start, start + 2, 1, 8, 1 << 20, (1 << 31) - 1, (1 << 32) - 2))
        one, half = len(directory) // len(entries), len(directory) // 2
        # Half of them in the place of the others, and the first one twice.
        directory = self.teller.tell("order of tags", directory, [directory[half:] + directory[:half], directory[:-one] + directory[:one]])
        self.data += self.packed("Q" if self.big else "H", count) + directory + self.packed(self.offset, following) + body
        return size.get(WIDTH), size.get(HEIGHT)


def write(teller, pages):
    """The file, and its first page's size, None where the directory does not tell it."""
    writer = Writer(teller, teller.pick("<", ">"), teller.maybe(0.2))
    writer.head()
    sizes = [writer.page(page, page is pages[-1]) for page in pages]
    plain = not any(word in teller.said for word in ("number of tags", "order of tags", "first directory", "magic"))
    return bytes(writer.data), sizes[0] if writer.size_told and plain and None not in sizes[0] else None
