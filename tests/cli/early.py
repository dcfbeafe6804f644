#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What header and options refuse is refused before pixels take memory or time, and want of memory is called so.

    early.py --build FOLDER --source FOLDER
"""

import os
import resource
import struct
import subprocess
import sys
import tempfile

from PIL import Image

import shared

SIDE = 5000  # 25 million pixels
MOST = 45 << 20  # bytes that a refusal may take, libraries and all


def write_all(folder):
    """Large pictures that make small files."""
    grey = Image.new("L", (SIDE, SIDE), 200)
    colors = Image.merge("RGB", (grey, grey, grey))

    def save(name, image, **options):
        image.save(os.path.join(folder, name), **options)

    save("rgb.png", colors, compress_level=1)
    save("clear.png", colors.convert("RGBA"), compress_level=1)
    save("rgb.jpg", colors)
    save("progressive.jpg", grey, progressive=True)
    save("rgb.bmp", colors)
    save("grey.gif", grey)
    save("rgb.tif", colors, compression="tiff_deflate")
    save("inks.tif", Image.merge("CMYK", (grey, grey, grey, grey)), compression="tiff_lzw")
    save("rgb.ppm", colors)
    save("grey.jp2", grey)
    save("rgb.webp", colors, lossless=True, quality=0, method=0)


def written(folder):
    """The same by a process of its own: a child counts the memory that its parent had."""
    child = os.fork()
    if child == 0:
        try:
            write_all(folder)
            os._exit(0)
        finally:
            os._exit(1)
    _, status = os.waitpid(child, 0)
    if status != 0:
        raise RuntimeError("the pictures cannot be written")
    return sorted(os.path.join(folder, name) for name in os.listdir(folder))


def run(command, **options):
    """Exit code, what went to stderr, and the most memory in use."""
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, **options)
    said = child.stderr.read()
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    return child.returncode, said, usage.ru_maxrss * 1024


def main():
    _, _, program = shared.places()
    if shared.sanitized(program):
        print("early: the sanitizers take memory of their own")
        return 77
    faults, tried = [], 0
    with tempfile.TemporaryDirectory(prefix="raxel-early-") as folder:
        out = os.path.join(folder, "out.tif")
        for path in written(folder):
            for options, code in ((("--size", "70000x70000px", "-m", "rgb"), 64), (("--size", "70000x70000px",), 64),
                                  (("-m", "rgb", "-c", "t6"), 64), (("-m", "rgb", "-c", "t6", "--dry-run"), 64)):
                tried += 1
                exit_code, said, most = run([program, *options, path] + ([out] if "--dry-run" not in options else ["-o", out]))
                if exit_code != code or most > MOST:
                    faults.append(f"{os.path.basename(path)} {' '.join(options)}: exit {exit_code} with {most >> 20} MiB: {said}")
            os.unlink(path)

        # A frame of a few hundred bytes on a screen that no file holds.
        vast = os.path.join(folder, "vast.gif")
        Image.linear_gradient("L").resize((30, 20)).save(vast)
        with open(vast, "r+b") as file:
            file.seek(6)
            file.write(struct.pack("<HH", 65535, 65534))
        for options in ((), ("-m", "rgb")):
            tried += 1
            exit_code, said, most = run([program, *options, vast, out])
            if exit_code != 66 or "2 GiB or more" not in said or most > MOST:
                faults.append(f"a vast screen {' '.join(options)}: exit {exit_code} with {most >> 20} MiB: {said}")

        # Sparse: nothing of it is on the disk.
        large = os.path.join(folder, "large.pgm")
        with open(large, "wb") as file:
            file.write(b"P5\n10000 10000\n255\n")
            file.truncate(file.tell() + 100000000)
        limit = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_AS, (60000 << 10, 60000 << 10))}
        tried += 1
        exit_code, said, _ = run([program, large, out], **limit)
        if exit_code != 66 or said != f"raxel-export: {large}: there is not enough memory to read it\n":
            faults.append(f"a file in 60 MB: exit {exit_code}: {said}")
    return shared.tell(faults, f"early: {tried - len(faults)} passed, {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
