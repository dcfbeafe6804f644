#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Feeds the command damaged pictures of every format: each is exported or refused, and nothing in between. What
is exported does not depend on what the memory held before.

    hostile.py --build FOLDER --source FOLDER
"""

import filecmp
import io
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile

from PIL import Image

import shared

EACH, EACH_SANITIZED = 200, 100  # damaged pictures of a kind; a child of a process with the sanitizers takes 10 ms
AGAIN = 20  # of them that are exported again
HANG = 300  # seconds after which a run over all of them is taken not to end


def kinds(source):
    """Name to the bytes of a whole picture."""
    photo = Image.open(os.path.join(source, "samples/photo.png")).convert("RGB").resize((61, 40))
    made = {}

    def save(name, image, form, **options):
        out = io.BytesIO()
        image.save(out, form, **options)
        made[name] = out.getvalue()

    save("rgb.png", photo, "PNG")
    save("alpha.png", photo.convert("RGBA"), "PNG")
    save("table.png", photo.convert("P"), "PNG")
    save("bits.png", photo.convert("1"), "PNG")
    save("deep.png", photo.convert("I").point(lambda v: v * 200), "PNG")
    save("levels.png", photo.convert("L").quantize(4), "PNG", bits=2)
    save("rgb.jpg", photo, "JPEG", quality=90)
    save("grey.jpg", photo.convert("L"), "JPEG", progressive=True)
    save("inks.jpg", photo.convert("CMYK"), "JPEG")
    save("rgb.bmp", photo, "BMP")
    save("table.gif", photo.convert("P"), "GIF")
    save("rgb.tiff", photo, "TIFF", compression="tiff_lzw")
    save("fax.tiff", photo.convert("1"), "TIFF", compression="group4")
    save("rgb.webp", photo, "WEBP", lossless=True)
    save("rgb.jp2", photo, "JPEG2000")
    save("rgb.ppm", photo, "PPM")
    save("grey.pgm", photo.convert("L"), "PPM")
    save("bits.pbm", photo.convert("1"), "PPM")
    save("interlaced.gif", photo.convert("P"), "GIF", interlace=1)
    save("jpeg.tiff", photo, "TIFF", compression="jpeg")
    save("zip.tiff", photo.convert("L"), "TIFF", compression="tiff_adobe_deflate")
    save("fax3.tiff", photo.convert("1"), "TIFF", compression="group3")
    save("packbits.tiff", photo.convert("P"), "TIFF", compression="packbits")
    made["alpha.pam"] = b"P7\nWIDTH 61\nHEIGHT 40\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n" + photo.convert("RGBA").tobytes()
    made["plain.ppm"] = b"P3\n3 2\n255\n" + b"255 0 0  0 255 0  0 0 255  255 255 0  1 2 3  7 8 9\n"
    return made


def damage(whole, rng):
    data = bytearray(whole)
    kind = rng.randrange(4)
    if kind == 0:
        return bytes(data[:rng.randrange(len(data))])
    if kind == 1:  # the header is where the sizes are
        for _ in range(rng.randrange(1, 4)):
            data[rng.randrange(min(64, len(data)))] = rng.choice((0, 255, rng.randrange(256)))
    elif kind == 2:
        for _ in range(rng.randrange(1, 10)):
            data[rng.randrange(len(data))] ^= 1 << rng.randrange(8)
    else:
        at = rng.randrange(len(data))
        data[at:at + rng.randrange(1, 40)] = rng.randbytes(rng.randrange(1, 40))
    return bytes(data)


def main():
    _, source, program = shared.places()
    rng = random.Random(5)
    exported = refused = looked_at = compared = 0
    sanitized = shared.sanitized(program)
    each = EACH_SANITIZED if sanitized else EACH
    faults = []
    place = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="raxel-hostile-", dir=place) as folder:
        made = kinds(source)
        # Nobody else writes tiles here.
        tiles = os.path.join(folder, "tiles.tiff")
        options = ["-m", "bilevel", "-c", "t6", "--layout", "tiles", "--size", "61x40px"]
        subprocess.run([program, *options, os.path.join(source, "samples/photo.png"), tiles], check=True)
        with open(tiles, "rb") as file:
            made["tiles.tiff"] = file.read()
        for name, whole in made.items():
            inputs, inspected = [], []
            for i in range(each):
                path = os.path.join(folder, f"{i}-{name}")
                with open(path, "wb") as out:
                    out.write(damage(whole, rng) if i else whole)
                inputs.append(path)
            target = os.path.join(folder, "to")
            os.makedirs(target)
            try:
                done = subprocess.run([program, "--json", "-q", "-d", target, *inputs], capture_output=True, timeout=HANG)
                results = json.loads(done.stdout)["results"]
            except subprocess.TimeoutExpired as error:
                faults.append(f"{name}: no end after {HANG} s; says {(error.stderr or b'')[-300:]}")
                results = []
            except ValueError as error:
                faults.append(f"{name}: {error}; {done.returncode}: {done.stderr[-300:]}")
                results = []
            again = os.path.join(folder, "again")
            os.makedirs(again)
            # malloc fills new blocks with something else than zeros: all of the 35 MB that an export asks for to see
            # whether there is memory, which takes ten times as long as the export. The sanitizers have their own malloc.
            if not sanitized:
                subprocess.run([program, "-q", "-d", again, *inputs[::each // AGAIN]], capture_output=True, timeout=HANG,
                               env={**os.environ, "GLIBC_TUNABLES": "glibc.malloc.perturb=90"})
            _, others, failed = filecmp.cmpfiles(target, again, os.listdir(again), shallow=False)
            if others or failed:
                faults.append(f"{name}: {others + failed} are not the same from used memory")
            compared += len(os.listdir(again))
            shutil.rmtree(again)
            for number, result in enumerate(results):
                there = os.path.exists(result["output"])
                exported += result["exit"] == 0
                refused += result["exit"] != 0
                if result["exit"] not in (0, 66):
                    faults.append(f"{result['input']}: exit {result['exit']}: {result.get('error')}")
                if there != (result["exit"] == 0):
                    faults.append(f"{result['input']}: exit {result['exit']}, and the output is {'' if there else 'not '}there")
                if number == 0 and result["exit"] != 0:
                    faults.append(f"{name}, undamaged: {result.get('error')}")
            # What was written is damaged in its turn, and inspected.
            written = [os.path.join(target, entry) for entry in os.listdir(target)][:3]
            for path in written:
                with open(path, "rb") as file:
                    whole_file = file.read()
                for i in range(each // 10):
                    inspected.append(f"{path}-{i}")
                    with open(inspected[-1], "wb") as out:
                        out.write(damage(whole_file, rng))
            done = subprocess.run([program, "--json", "--inspect", *inspected], capture_output=True, timeout=HANG)
            try:
                codes = [result["exit"] for result in json.loads(done.stdout)["results"]]
                if len(codes) != len(inspected) or not set(codes) <= {0, 66}:
                    faults.append(f"{name}: inspections end with {set(codes)}")
                looked_at += len(codes)
            except ValueError as error:
                faults.append(f"{name}: --inspect: {error}; {done.returncode}: {done.stderr[-300:]}")
            left = [entry for entry in os.listdir(target) if ".raxel-" in entry]
            if left:
                faults.append(f"{name}: {left} are left behind")
            for entry in os.listdir(target):
                os.unlink(os.path.join(target, entry))
            os.rmdir(target)
            for path in inputs:
                os.unlink(path)
    return shared.tell(faults, f"hostile: {exported} pictures exported, {refused} refused, {looked_at} files inspected, {compared} exported again; {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
