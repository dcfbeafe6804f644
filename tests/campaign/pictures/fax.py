# SPDX-License-Identifier: MIT
"""Bilevel rows as fax codes: modified Huffman, T.4 in one and two dimensions, T.6."""

import fax_codes

from .bits import Bits

RUNS = tuple({length: code for code, length in codes.items()} for codes in fax_codes.RUNS)
MODES = {mode: code for code, mode in fax_codes.MODES.items()}


def changes(row):
    """Where a row's colour changes, which is white before its first pixel."""
    return [at for at in range(len(row)) if row[at] != (row[at - 1] if at else 0)]


def run(bits, color, length):
    while length >= 2560:
        bits.text(RUNS[color][2560])
        length -= 2560
    if length >= 64:
        bits.text(RUNS[color][length // 64 * 64])
    bits.text(RUNS[color][length % 64])


def one_dimension(bits, row):
    at, color = 0, 0
    for change in [*changes(row), len(row)]:
        run(bits, color, change - at)
        at, color = change, 1 - color


def two_dimensions(bits, row, above):
    width, at, color = len(row), -1, 0
    own, over = changes(row), changes(above)

    def after(places, start, color):
        """The first change beyond `start`, and to another colour than `color`."""
        return next((place for number, place in enumerate(places) if place > start and number % 2 == color), width)

    while at < width:
        a1 = after(own, at, color)
        b1 = after(over, at, color)
        b2 = after(over, b1, 1 - color)
        if b2 < a1:
            bits.text(MODES["pass"])
            at = b2
        elif -3 <= a1 - b1 <= 3:
            bits.text(MODES[a1 - b1])
            at, color = a1, 1 - color
        else:
            a2 = after(own, a1, 1 - color)
            bits.text(MODES["horizontal"])
            run(bits, color, a1 - max(at, 0))
            run(bits, 1 - color, a2 - a1)
            at = a2


def huffman(rows):
    bits = Bits()
    for row in rows:
        one_dimension(bits, row)
        bits.align()
    return bits.whole()


def t4(rows, mixed, aligned, every=4):
    """`mixed` rows are coded from those above, but one in `every`; `aligned` ends of lines end with a byte."""
    bits, above = Bits(), None
    for number, row in enumerate(rows):
        if aligned:
            bits.put(0, (4 - bits.count) % 8)
        bits.text(fax_codes.EOL)
        alone = not mixed or number % every == 0
        if mixed:
            bits.put(int(alone), 1)
        if alone:
            one_dimension(bits, row)
        else:
            two_dimensions(bits, row, above)
        above = row
    return bits.whole()


def t6(rows):
    bits = Bits()
    above = [0] * len(rows[0]) if rows else []
    for row in rows:
        two_dimensions(bits, row, above)
        above = row
    bits.text(fax_codes.EOL * 2)
    return bits.whole()
