#!/usr/bin/python3
"""Reads one picture from every format that Pillow writes, and holds it against what Pillow reads.

    formats.py --build FOLDER --source FOLDER
"""

import os
import struct
import subprocess
import sys
import tempfile

from PIL import Image, ImageChops, ImageStat

import shared

BACKGROUNDS = {"white": (255, 255, 255), "#204060": (0x20, 0x40, 0x60)}


def write_all(source, folder):
    """The files, each with how far a channel may be off on average."""
    photo = Image.open(os.path.join(source, "samples/photo.png")).convert("RGB").resize((61, 40))
    grey, two, table = photo.convert("L"), photo.convert("1"), photo.quantize(200)
    clear = photo.convert("RGBA")
    clear.putalpha(Image.linear_gradient("L").resize(photo.size))
    deep = grey.convert("I").point(lambda v: v * 257)
    made = {}

    def save(name, image, allowed=0, **options):
        path = os.path.join(folder, name)
        image.save(path, **options)
        made[path] = allowed

    for name, image in (("rgb", photo), ("grey", grey), ("two", two), ("table", table), ("clear", clear)):
        save(f"{name}.png", image)
        save(f"{name}.tif", image)
        save(f"{name}-lzw.tif", image, compression="tiff_lzw")
        if name != "clear":
            save(f"{name}.bmp", image)
            save(f"{name}.gif", image)
    save("clear.bmp", clear)  # its fourth byte has no meaning, says the format
    save("grey-clear.png", clear.convert("LA"))
    save("grey-clear.tif", clear.convert("LA"))
    save("16 colours.gif", photo.quantize(16), transparency=3)
    save("table-transparent.png", table, transparency=5)
    save("grey-transparent.png", grey, transparency=grey.getpixel((9, 9)))
    save("interlaced.gif", table, interlace=1, transparency=table.getpixel((30, 20)))
    save("deep.png", deep)
    save("inks.tif", photo.convert("CMYK"), 1)
    save("fax.tif", two, compression="group4")
    save("zip.tif", photo, compression="tiff_adobe_deflate")
    save("lossless.webp", photo, lossless=True)
    save("clear.webp", clear, lossless=True)
    save("rgb.jp2", photo)
    save("grey.jp2", grey)
    save("clear.jp2", clear)
    save("clear.j2k", clear)
    save("rgb.ppm", photo)
    save("grey.pgm", grey)
    save("two.pbm", two)
    # Decoders of these may differ by a little.
    save("lossy.webp", photo, 1)
    save("rgb.jpg", photo, 1, quality=90)
    save("grey.jpg", grey, 1)
    save("inks.jpg", photo.convert("CMYK"), 1)
    save("jpeg.tif", photo, 1, compression="jpeg")
    for turn in range(2, 9):
        exif = Image.Exif()
        exif[274] = turn
        save(f"turned-{turn}.jpg", photo, 1, exif=exif)
        for name, image in (("rgb", photo), ("grey", grey), ("two", two), ("table", table), ("clear", clear)):
            save(f"turned-{name}-{turn}.tif", image, tiffinfo={274: turn})
        put_tiles(os.path.join(folder, f"turned-tiles-{turn}.tif"), photo, turn)
        made[os.path.join(folder, f"turned-tiles-{turn}.tif")] = 0
    return made


def put_tiles(path, image, turn):
    """Colours in tiles of 32 by 16, which Pillow does not write."""
    width, height = image.size
    tiles = [image.crop((x, y, x + 32, y + 16)).tobytes() for y in range(0, height, 16) for x in range(0, width, 32)]
    count, size = len(tiles), 32 * 16 * 3
    after = 8 + 2 + 12 * 13 + 4  # where the values that take more room begin
    tags = [(256, 4, 1, width), (257, 4, 1, height), (258, 3, 3, after), (259, 3, 1, 1), (262, 3, 1, 2), (274, 3, 1, turn),
            (277, 3, 1, 3), (284, 3, 1, 1), (317, 3, 1, 1), (322, 4, 1, 32), (323, 4, 1, 16), (324, 4, count, after + 6),
            (325, 4, count, after + 6 + 4 * count)]
    data = after + 6 + 8 * count
    with open(path, "wb") as out:
        out.write(struct.pack("<2sHIH", b"II", 42, 8, len(tags)))
        for tag in tags:
            out.write(struct.pack("<HHII", *tag))
        out.write(struct.pack("<I3H", 0, 8, 8, 8))
        out.write(struct.pack(f"<{2 * count}I", *(data + size * i for i in range(count)), *[size] * count))
        out.write(b"".join(tiles))


def upright(image):
    turn = {2: Image.Transpose.FLIP_LEFT_RIGHT, 3: Image.Transpose.ROTATE_180, 4: Image.Transpose.FLIP_TOP_BOTTOM,
            5: Image.Transpose.TRANSPOSE, 6: Image.Transpose.ROTATE_270, 7: Image.Transpose.TRANSVERSE,
            8: Image.Transpose.ROTATE_90}.get(image.getexif().get(274))
    return image.transpose(turn) if turn is not None and image.format == "JPEG" else image


def meant(path, color):
    with Image.open(path) as image:
        image = upright(image)
        if image.mode.startswith("I"):
            return image.convert("I").point(lambda v: v / 257).convert("L").convert("RGB")
        if image.mode == "CMYK":
            return image.convert("RGB")
        over = image.convert("RGBA")
        under = Image.new("RGBA", over.size, (*color, 255))
        under.alpha_composite(over)
        return under.convert("RGB")


def main():
    _, source, program = shared.places()
    faults, tried = [], 0
    with tempfile.TemporaryDirectory(prefix="raxel-formats-") as folder:
        files = write_all(source, folder)
        out = os.path.join(folder, "out.tif")
        for path, allowed in files.items():
            for name, color in BACKGROUNDS.items():
                tried += 1
                title = f"{os.path.basename(path)} on {name}"
                # In blocks that malloc has filled, so that pixels which nobody writes are seen.
                done = subprocess.run([program, "-q", "-m", "rgb", "--background", name, path, out], capture_output=True, text=True,
                                      env={**os.environ, "GLIBC_TUNABLES": "glibc.malloc.perturb=90"})
                if done.returncode:
                    faults.append(f"{title}: {done.stderr}")
                    continue
                expected = meant(path, color)
                with Image.open(out) as image:
                    seen = image.convert("RGB")
                if seen.size != (expected.width, (expected.height + 1) & ~1):
                    faults.append(f"{title}: is {seen.size}, meant is {expected.size}")
                    continue
                off = ImageChops.difference(seen.crop((0, 0, *expected.size)), expected)
                mean, most = max(ImageStat.Stat(off).mean), max(high for _, high in off.getextrema())
                # Rounding may go either way where transparent parts are laid over.
                if mean > max(allowed, 0.5) or (allowed == 0 and most > 1):
                    faults.append(f"{title}: is off by {mean:.2f}, and by {most} at most")
    return shared.tell(faults, f"formats: {tried - len(faults)} passed, {len(faults)} failed")


if __name__ == "__main__":
    sys.exit(main())
