# SPDX-License-Identifier: MIT
"""Bits in a row, and LZW as TIFF and GIF have it."""


class Bits:
    """Codes one after the other: the first in the highest bits, or as GIF has it in the lowest."""

    def __init__(self, lowest_first=False):
        self.data, self.held, self.count, self.lowest_first = bytearray(), 0, 0, lowest_first

    def put(self, code, size):
        if self.lowest_first:
            self.held |= code << self.count
        else:
            self.held = self.held << size | code
        self.count += size
        while self.count >= 8:
            self.count -= 8
            if self.lowest_first:
                self.data.append(self.held & 255)
                self.held >>= 8
            else:
                self.data.append(self.held >> self.count)
                self.held &= (1 << self.count) - 1

    def text(self, code):
        """A code written as zeros and ones."""
        self.put(int(code, 2), len(code))

    def align(self, filler=0):
        if self.count:
            self.put(filler & ((1 << (8 - self.count)) - 1), 8 - self.count)

    def whole(self):
        self.align()
        return bytes(self.data)


def pack(values, size):
    """Samples of so many bits, in whole bytes."""
    bits = Bits()
    for value in values:
        bits.put(value & ((1 << size) - 1), size)
    return bits.whole()


def lzw(values, size, gif=False):
    """`size` is that of a value in bits. TIFF widens its codes one earlier than GIF."""
    clear, bits, early = 1 << size, Bits(gif), 0 if gif else 1
    table, width, prefix = {}, size + 1, ()
    bits.put(clear, width)
    for value in values:
        if not prefix or prefix + (value,) in table:
            prefix += (value,)
            continue
        bits.put(table[prefix] if len(prefix) > 1 else prefix[0], width)
        table[prefix + (value,)] = number = clear + 2 + len(table)
        prefix = (value,)
        if number + early >= 1 << width:
            width += 1
        if number >= 4093:
            bits.put(clear, min(width, 12))
            table, width = {}, size + 1
    if prefix:
        bits.put(table[prefix] if len(prefix) > 1 else prefix[0], width)
        if clear + 2 + len(table) + early >= 1 << width and width < 12:
            width += 1
    bits.put(clear + 1, width)
    return bits.whole()


def packbits(data):
    return b"".join(bytes([len(data[at:at + 128]) - 1]) + data[at:at + 128] for at in range(0, len(data), 128))
