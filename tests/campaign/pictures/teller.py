# SPDX-License-Identifier: MIT
"""Who builds a file asks a teller for all that is left to chance, and has it tell each field of the header. A teller tells
them all as they are, or lies about one of them.
"""

import collections
import random

SOUND = 0.25  # of all files
CUT = 12  # of them one is cut short, or has something behind its end

# The size is that which the header tells, or None where it does not; `turned` when the sides may have changed places.
Picture = collections.namedtuple("Picture", ("data", "size", "turned"), defaults=(False,))
Drawn = collections.namedtuple("Drawn", ("what", "data", "size", "turned", "sound"))


def around(truth, bits=32):
    """Other values of a field of so many bits: next to the truth, and at the ends of what a field or an int holds."""
    most = (1 << bits) - 1
    near = (0, 1, 2, 3, truth - 1, truth + 1, truth + 2, 2 * truth, truth // 2, truth + 8, 255, 256, 65535, 65536, (1 << 26) + 1,
            (1 << 31) - 1, 1 << 31, most - 7, most)
    return [value for value in near if 0 <= value <= most]


class Teller:
    def __init__(self, seed, lie=None, chance=0.0):
        """`lie` is the number of the field that is not told as it is, and `chance` says which other value it has."""
        self.rng, self.lie, self.chance = random.Random(seed), lie, chance
        self.names, self.said = [], ""

    def pick(self, *choices):
        return self.rng.choice(choices)

    def maybe(self, chance=0.5):
        return self.rng.random() < chance

    def noise(self, count):
        return self.rng.randbytes(count)

    def pixels(self, count):
        """Bytes as scans, drawings and photos have them: of one value, of a few, or of any."""
        kind = self.rng.randrange(4)
        if kind == 0:
            return bytes([self.pick(0, 255, 85)]) * count
        if kind == 1:
            return (self.noise(5) * (count // 5 + 1))[:count]
        if kind == 2:
            return b"".join(bytes([self.rng.randrange(256)]) * 9 for _ in range(count // 9 + 1))[:count]
        return self.noise(count)

    def tell(self, name, truth, wrong):
        """A field, or any other part of the file that may be wrong; `wrong` has what may stand there instead."""
        self.names.append(name)
        if len(self.names) - 1 != self.lie:
            return truth
        others = [value for value in wrong if value != truth]
        if not others:
            return truth
        value = others[int(self.chance * len(others))]
        self.said = f"{name} {brief(value)} instead of {brief(truth)}"
        return value

    def number(self, name, truth, bits=32):
        return self.tell(name, truth, around(truth, bits))


def brief(value):
    return f"{len(value)} bytes" if isinstance(value, bytes) and len(value) > 8 else repr(value)


def cut(teller, data):
    """The file as it is on the disk."""
    if teller.rng.randrange(CUT):
        return data
    size = len(data)
    pieces = [data[:size * part // 16] for part in range(1, 16)]
    return teller.tell("whole", data, [*pieces, data[:-1], data[:-2], data + b"\0", data + data])


def draw(build, seed):
    """A file of a format, the same one for the same seed."""
    honest = Teller(seed)
    picture = build(honest)
    data = cut(honest, picture.data)
    rng = random.Random(f"{seed}, lies")
    if rng.random() < SOUND:
        return Drawn("as it says", data, picture.size, picture.turned, True)
    name = rng.choice(sorted(set(honest.names)))
    lie = rng.choice([place for place, other in enumerate(honest.names) if other == name])
    liar = Teller(seed, lie, rng.random())
    picture = build(liar)
    data = cut(liar, picture.data)
    return Drawn(liar.said or "as it says", data, picture.size, picture.turned, not liar.said)
