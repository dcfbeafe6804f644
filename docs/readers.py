#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Has readers open what the command writes, and puts their answers into the table of docs/format.md.

    docs/readers.py BUILD-FOLDER            (./dev readers)
    docs/readers.py BUILD-FOLDER --check    says what has changed, and writes nothing

"exact" means: every pixel as in the picture that went in. Each reader opens the file as it is, by its own
ordinary way. Needs python3-pil; readers that are not installed keep their column as it was.
"""

import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(HERE), "tests", "cli"))

import readers  # noqa: E402
import tiff  # noqa: E402

BEGIN, END = "<!-- readers: made by docs/readers.py -->\n", "<!-- readers: end -->\n"

# What is written, and from which sample.
FILES = (
    ("bilevel, none", "corner", "-m bilevel -c none"),
    ("bilevel, PackBits", "corner", "-m bilevel -c packbits"),
    ("bilevel, LZW", "corner", "-m bilevel -c lzw"),
    ("bilevel, modified Huffman", "corner", "-m bilevel -c huffman"),
    ("bilevel, Group 3", "corner", "-m bilevel -c t4"),
    ("bilevel, Group 4", "corner", "-m bilevel -c t6"),
    ("the same in one strip", "corner", "-m bilevel -c t6 --strips one"),
    ("the same in tiles", "corner", "-m bilevel -c t6 --layout tiles"),
    ("16 greys, LZW", "grey16", "-m grey16 -c lzw"),
    ("256 greys, PackBits", "ramp", "-m grey256 -c packbits"),
    ("16 colours, LZW", "chart4", "-m color16 -c lzw"),
    ("256 colours, LZW", "chart8", "-m color256 -c lzw"),
    ("24 bits, none", "photo", "-m rgb -c none"),
    ("24 bits, LZW", "photo", "-m rgb -c lzw"),
    ("three pages, LZW", "photo", "--pages -m rgb -c lzw"),
)


def mupdf(path):
    """The file as MuPDF opens it."""
    with open(path, "rb") as file:
        pixels = readers.fitz.Pixmap(file.read())
    if pixels.n not in (1, 3):
        raise tiff.Bad(f"{pixels.n} channels")
    return pixels.width, pixels.height, readers.grey_rgb(pixels.samples) if pixels.n == 1 else pixels.samples, None


def vips(path):
    ppm = path + ".ppm"
    subprocess.run(["vips", "colourspace", path, ppm, "srgb"], check=True, capture_output=True)
    with open(ppm, "rb") as file:
        return readers.portable(file.read())


def single():
    """Name to reader, for all that take one file at a time."""
    found = {"libtiff": readers.LibTiff(), **readers.resting()}
    if readers.fitz:
        found["MuPDF"] = mupdf
    if readers.shutil.which("vips"):
        found["libvips"] = vips
    return found


def answer(picture, wanted):
    """One word for what a reader gave: the even row that a file has more than its picture does not count."""
    if isinstance(picture, str):
        return "no"
    width, height, rgb, _ = picture
    if width != wanted[0] or height not in (wanted[1], wanted[1] + 1):
        return "other size"
    return "exact" if rgb[:len(wanted[2])] == wanted[2] else "other pixels"


def columns(text):
    """Name to answers, from a table that was written; none when it is of other files."""
    rows = [line.strip("| ").split(" | ") for line in text.splitlines() if line.startswith("| ")]
    if [row[0] for row in rows[1:]] != [f"{what} (`{options}`)" for what, _, options in FILES]:
        return {}
    return {name: [row[column] for row in rows[1:]] for column, name in enumerate(rows[0]) if column}


def main():
    build, check = os.path.abspath(sys.argv[1]), "--check" in sys.argv
    program, samples = os.path.join(build, "raxel-export"), os.path.join(os.path.dirname(HERE), "samples")
    table, pixels = {}, {}
    with tempfile.TemporaryDirectory() as folder:
        for sample in {sample for _, sample, _ in FILES}:
            if sample == "grey16":  # every grey that 4 bits hold
                image = readers.Image.frombytes("L", (160, 16), bytes(17 * (x // 10) for x in range(160)) * 16)
                image.save(os.path.join(folder, "grey16.png"))
            elif sample == "corner":  # of the page: tiles want it narrower
                image = readers.Image.open(os.path.join(samples, "page.png")).crop((200, 300, 1800, 1500))
                image.save(os.path.join(folder, "corner.png"))
            else:
                image = readers.Image.open(os.path.join(samples, sample + ".png"))
                image.save(os.path.join(folder, sample + ".png"), dpi=image.info.get("dpi", (96, 96)))
            pixels[sample] = image.width, image.height, image.convert("RGB").tobytes()
        paths = []
        for number, (_, sample, options) in enumerate(FILES):
            source, path = os.path.join(folder, sample + ".png"), os.path.join(folder, f"{number}.tif")
            several = [source] * (3 if "--pages" in options else 1)
            subprocess.run([program, "-q", "--verify", *options.split(), *several, "-o", path], check=True)
            paths.append(path)
        for name, reader in single().items():
            table[name] = []
            for path, (_, sample, _) in zip(paths, FILES):
                try:
                    table[name].append(answer(reader(path), pixels[sample]))
                except Exception:  # whatever it does not open
                    table[name].append("no")
        for name, path, picture in readers.Programs()(paths):
            # Programs may give a file of several pages several names: then there is none of this one.
            table.setdefault(name, []).append(answer(picture, pixels[FILES[paths.index(path)][1]]))
    page = os.path.join(HERE, "format.md")
    with open(page, encoding="utf-8") as text:
        before, rest = text.read().split(BEGIN)
    old, after = rest.split(END)
    if check:
        known = columns(old)
        faults = [f"{name}, {what}: {now} and not {then}" for name in table
                  for (what, _, _), now, then in zip(FILES, table[name], known.get(name, ["nothing"] * len(FILES)))
                  if now != then]
        print("\n".join(faults) or f"{len(table)} readers say of {len(FILES)} files what docs/format.md says")
        return bool(faults) or not table
    table = columns(old) | table
    names = sorted(table, key=str.lower)
    lines = ["| what is written | " + " | ".join(names) + " |", "|---|" + "---|" * len(names)]
    for number, (what, _, options) in enumerate(FILES):
        lines.append(f"| {what} (`{options}`) | " + " | ".join(table[name][number] for name in names) + " |")
    with open(page, "w", encoding="utf-8") as text:
        text.write(before + BEGIN + "\n" + "\n".join(lines) + "\n\n" + END + after)
    return 0


if __name__ == "__main__":
    sys.exit(main())
