# SPDX-License-Identifier: MIT
"""PBM, PGM and PPM as text and as bytes, and PAM with its kinds of tuples."""

from .teller import Picture

SIZES = ((1, 1), (5, 4), (8, 3), (17, 9), (33, 20))
MAXIMA = (1, 2, 3, 15, 100, 255, 256, 1023, 65535)
WRONG = ("", "0", "-1", "+5", "255", "65535", "65536", "67108865", "2147483647", "2147483648", "4294967295", "4294967296",
         "18446744073709551617", "0x10", "1e3", "nine", "007", "5#5")
KINDS = {"BLACKANDWHITE": 1, "GRAYSCALE": 1, "RGB": 3, "BLACKANDWHITE_ALPHA": 2, "GRAYSCALE_ALPHA": 2, "RGB_ALPHA": 4}


def word(teller, name, value):
    return teller.tell(name, str(value), WRONG + (str(value - 1), str(value + 1)))


def samples(teller, count, maximum):
    """Binary ones, of which some may be beyond the maximum."""
    wide = maximum > 255
    data = b"".join(teller.rng.randint(0, maximum).to_bytes(2 if wide else 1, "big") for _ in range(count))
    return teller.tell("samples", data, (data[:-1], data[:len(data) // 2], b"", b"\xff" * len(data), data + b"\0", data + data))


def text(teller, count, maximum):
    words = [str(teller.rng.randint(0, maximum)) for _ in range(count)]
    middle = count // 2
    others = ("x", "-1", "#", str(maximum + 1), "70000", "4294967296", "99999999999999999999")
    words = teller.tell("samples", words, [words[:-1], words[:middle], [], words + ["1"]] +
                        [words[:middle] + [other] + words[middle + 1:] for other in others])
    return teller.pick(" ", "\n", "  \t ", "\r\n").join(words).encode() + teller.pick(b"\n", b"")


def told_size(width, height):
    """As numbers, where they are some."""
    return (int(width), int(height)) if width.isdigit() and height.isdigit() else None


def pnm(teller):
    pick, maybe = teller.pick, teller.maybe
    kind = pick(1, 2, 3, 4, 5, 6)
    width, height = pick(*SIZES)
    maximum = 1 if kind in (1, 4) else pick(*MAXIMA)
    magic = teller.tell("magic", f"P{kind}", ("P0", "P1", "P2", "P3", "P4", "P5", "P6", "P7", "P8", "Pf", "p5"))
    words = [magic, word(teller, "width", width), word(teller, "height", height)]
    if kind not in (1, 4):
        words.append(word(teller, "maximum", maximum))
    between = pick(" ", "\n", "\t\r\n", "\n# a remark\n", "\n#\n")
    head = between.join(words).encode() + teller.tell("blank behind the header", pick(b"\n", b" "), (b"", b"\n\n", b"#x\n", b"x"))
    if kind == 4:
        pitch = (width + 7) // 8
        data = teller.pixels(pitch * height)
        data = teller.tell("samples", data, (data[:-1], b"", data + b"\0"))
    else:
        count = width * height * (3 if kind in (3, 6) else 1)
        if kind == 1 and maybe(0.3):
            data = "".join(pick("0", "1") for _ in range(count)).encode()
        else:
            data = text(teller, count, maximum) if kind < 4 else samples(teller, count, maximum)
    size = told_size(words[1], words[2])
    return Picture(head + data, None if "blank" in teller.said or "magic" in teller.said else size)


def pam(teller):
    pick, maybe, tell = teller.pick, teller.maybe, teller.tell
    width, height = pick(*SIZES)
    kind = pick(*KINDS)
    maximum = 1 if kind.startswith("BLACK") else pick(*MAXIMA)
    fields = {"WIDTH": width, "HEIGHT": height, "DEPTH": KINDS[kind], "MAXVAL": maximum}
    numbers = {name: word(teller, name, value) for name, value in fields.items()}
    lines = [f"{name} {value}" for name, value in numbers.items()]
    if maybe(0.8):
        lines.append("TUPLTYPE " + tell("TUPLTYPE", kind, (*KINDS, "X", "", "RGB RGB", "rgb", "R" * 300)))
    if maybe(0.3):
        teller.rng.shuffle(lines)
    if maybe(0.2):
        lines.insert(1, pick("# a remark", "", "#"))
    lines = tell("lines", lines, [lines[:at] + lines[at + 1:] for at in range(len(lines))] + [lines + [line] for line in lines] +
                 [[*lines, "WIDTH 1"], ["X 1", *lines]])
    head = tell("magic", "P7\n", ("P7", "P7 \n", "P7 332\n", "P6\n")) + "\n".join(lines) + "\n"
    head += tell("end of the header", "ENDHDR\n", ("", "ENDHDR", "ENDHDR \n", "endhdr\n"))
    data = samples(teller, width * height * KINDS[kind], maximum)
    unsure = any(what in teller.said for what in ("lines", "magic", "end of"))
    return Picture(head.encode() + data, None if unsure else told_size(numbers["WIDTH"], numbers["HEIGHT"]))
