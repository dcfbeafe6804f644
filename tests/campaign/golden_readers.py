#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Golden files as readers see them that share no code: libtiff, MuPDF and Java's ImageIO.

    golden_readers.py --build FOLDER --source FOLDER

Writes the files of `raxel_golden_files` (tests/golden), decodes each with all three, and compares every pixel. What a host
can ask for and readers do not open, or each in its own way, is counted by its reason.
"""

import argparse
import collections
import json
import os
import shutil
import subprocess
import sys
import tempfile

CLI = os.path.join(os.path.dirname(os.path.realpath(__file__)), "..", "cli")
sys.path.insert(0, CLI)

import readers  # noqa: E402
import tiff  # noqa: E402

FAX = ("huffman", "g3", "g4")


def unreadable(road, mode, compression, layout, rest, tags):
    """Why not every reader can open such a file; None where all can."""
    if compression in FAX and mode != "bilevel":
        return "fax codes of deeper pixels"
    if layout == "tiles" and compression != "g4":
        return "tiles that are not cut"
    if road == "session" and "bands" in rest and compression != "none":
        return "coded in bands, which the directory has no room for"
    (width,), (height,), row_bits = tags[256], tags[257], tags[258][0] * tags[277][0]
    strip_rows = {tags[278][0], height % tags[278][0]} if 278 in tags else set()
    if compression == "lzw" and any((width * row_bits + 7) // 8 * rows == 1 for rows in strip_rows):
        return "LZW strips of one byte"
    return None


def refuses(reader, compression, tags, said):
    """Whether this is known of a reader: ImageIO has no room for as many runs as fax rows of so few pixels can have."""
    return (reader == "ImageIO" and compression in ("huffman", "g3") and tags[256][0] < 4 and isinstance(said, str)
            and "ArrayIndexOutOfBounds" in said)


def words(name):
    """Road, mode, compression, layout and what else a name is made of."""
    road, mode, compression, *rest = name.split("-")
    return (road, mode, compression, "tiles", rest) if road == "tall" else (road, mode, compression, rest[0], rest[1:])


def asked(reader, path):
    try:
        return reader(path)[:3]
    except (tiff.Bad, OSError, RuntimeError) as why:
        return str(why)


def by_java(paths):
    """What ImageIO sees, in one process for all files: path to picture or trouble."""
    done = subprocess.run(["java", os.path.join(CLI, "ReadImages.java"), *paths], capture_output=True, text=True, check=True)
    seen = {}
    for line in done.stdout.splitlines():
        path, said = line.split(" ", 1)
        seen[path] = said
        if not said.startswith("failed"):
            pages, width, height = map(int, said.split())
            with open(path + ".0.rgb", "rb") as file:
                seen[path] = (width, height, file.read()) if pages == 1 else f"{pages} pages"
    return seen


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", required=True)
    arguments.add_argument("--source", required=True)
    program = os.path.join(os.path.realpath(arguments.parse_args().build), "raxel_golden_files")
    if not readers.fitz or not shutil.which("java"):
        print("SKIPPED: python3-fitz or default-jdk-headless is not installed")
        return 77
    failed, kinds, reasons = 0, collections.Counter(), collections.Counter()
    with tempfile.TemporaryDirectory(prefix="raxel-golden-") as folder:
        subprocess.run([program, "--into", folder], check=True, stdout=subprocess.DEVNULL)
        tags, paths = {}, {}
        for name in sorted(each[:-len(".tif")] for each in os.listdir(folder)):
            path = os.path.join(folder, name + ".tif")
            with open(path, "rb") as file:
                tags[name] = tiff.directory(file.read())
            paths[name] = path
        libtiff, java = readers.LibTiff(), by_java(paths.values())
        passed = 0
        for name, path in paths.items():
            kind = words(name)[1:4]
            seen = {"libtiff": asked(libtiff, path), "MuPDF": asked(readers.mupdf, path), "ImageIO": java.get(path, "nothing")}
            why = unreadable(*words(name), tags[name])
            for reader in [each for each in seen if not why and refuses(each, kind[1], tags[name], seen[each])]:
                del seen[reader]
                reasons[f"read by all but {reader}"] += 1
            if not any(isinstance(each, str) or each != seen["libtiff"] for each in seen.values()):
                passed += 1
                kinds[kind] += 1
            elif why:
                reasons[f"not for readers ({why})"] += 1
            else:
                failed += 1
                print(f"FAILED {name}: " + ", ".join(f"{reader}: {each if isinstance(each, str) else each[:2]}" for reader, each in seen.items()))
    print(json.dumps({"readers": "libtiff, MuPDF, ImageIO", "kinds": len(kinds), **reasons}))
    print(f"readers: {passed} passed, {failed} failed")
    return 1 if failed or not passed else 0


if __name__ == "__main__":
    sys.exit(main())
