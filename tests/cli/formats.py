#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Reads one picture from every format that Pillow writes, and holds it against what Pillow reads.

    formats.py --build FOLDER --source FOLDER
"""

import os
import struct
import subprocess
import sys
import tempfile
import zlib

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
    photo.save(path := os.path.join(folder, "moving.webp"), save_all=True, append_images=[photo.rotate(180)], lossless=True)
    made[path] = 0
    for name, options in (("tiles-jpeg", ("-compress", "jpeg", "-define", "tiff:tile-geometry=32x16")),
                          ("tiles-planes", ("-interlace", "plane", "-define", "tiff:tile-geometry=32x16")),
                          ("tiles-zip", ("-compress", "zip", "-define", "tiff:tile-geometry=64x32")),
                          ("planes", ("-interlace", "plane")), ("planes-lzw", ("-interlace", "plane", "-compress", "lzw")),
                          ("planes-inks", ("-interlace", "plane", "-colorspace", "CMYK")),
                          ("subsampled", ("-compress", "jpeg", "-sampling-factor", "4:2:0")), ("big", ())):
        path = os.path.join(folder, f"{name}.tif")
        subprocess.run(["convert", os.path.join(folder, "rgb.png"), *options, ("TIFF64:" if name == "big" else "") + path], check=True)
        made[path] = 1 if "jpeg" in options or "CMYK" in options else 0
    # netpbm's own words for what Pillow cannot open: see meant().
    for name, path in (("deep", "deep.png"), ("rgb", "rgb.png"), ("grey", "grey.png"), ("two", "two.png"), ("clear", "clear.png")):
        options = ("-alphapam",) if name == "clear" else ()
        pam = subprocess.run(["pngtopam", *options, os.path.join(folder, path)], check=True, capture_output=True).stdout
        if not pam.startswith(b"P7"):
            pam = subprocess.run(["pamtopam"], input=pam, check=True, capture_output=True).stdout
        made[path := os.path.join(folder, f"{name}-pam.pam")] = 0
        with open(path, "wb") as out:
            out.write(pam)
    put_spix(folder, made)
    put_bombs(folder, photo, made)
    put_masks(folder, clear, made)
    put_small_frames(folder, photo, made)
    for turn in range(2, 9):
        exif = Image.Exif()
        exif[274] = turn
        save(f"turned-{turn}.jpg", photo, 1, exif=exif)
        for name, image in (("rgb", photo), ("grey", grey), ("two", two), ("table", table), ("clear", clear)):
            save(f"turned-{name}-{turn}.png", image, exif=exif)
        save(f"turned-{turn}.webp", photo, lossless=True, exif=exif)
        save(f"turned-clear-{turn}.webp", clear, lossless=True, exif=exif)
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


def put_spix(folder, made):
    """Leptonica's own pixels, in words of 32 bits from their high end on; without a table a set bit is black."""
    for name, depth in (("two", 1), ("deep", 16)):
        with Image.open(os.path.join(folder, f"{name}.png")) as image:
            width, height = image.size
            if depth == 1:
                bits = ImageChops.invert(image.convert("1")).tobytes()
            else:
                bits = struct.pack(f">{width * height}H", *image.convert("I").getdata())
        row = len(bits) // height
        words = (width * depth + 31) // 32
        rows = b"".join(bits[row * y:row * (y + 1)].ljust(4 * words, b"\0") for y in range(height))
        made[path := os.path.join(folder, f"{name}-spix.spix")] = 0
        with open(path, "wb") as out:
            out.write(b"spix" + struct.pack("<6I", width, height, depth, words, 0, len(rows)))
            out.write(struct.pack(f"<{words * height}I", *struct.unpack(f">{words * height}I", rows)))


def put_bombs(folder, photo, made):
    """Texts and profiles that inflate to more than anybody wants to hold: they are nothing to the picture."""
    photo.save(path := os.path.join(folder, "bombs.png"))
    with open(path, "rb") as file:
        whole = file.read()
    bomb = zlib.compress(bytes(80 << 20), 1)
    extra = b""
    for kind, front in ((b"iCCP", b"name\0\0"), (b"zTXt", b"Comment\0\0"), (b"iTXt", b"Comment\0\1\0\0\0")):
        data = kind + front + bomb
        extra += struct.pack(">I", len(data) - 4) + data + struct.pack(">I", zlib.crc32(data))
    with open(path, "wb") as out:
        out.write(whole[:33] + extra + whole[33:])
    with open(os.path.join(folder, "plain.png"), "wb") as out:
        out.write(whole)
    made[path] = 0


def put_masks(folder, clear, made):
    """Bitmaps whose channels masks place, as a header of version 5 and as one of version 1 before three masks."""
    width, height = clear.size
    rows = [clear.crop((0, y, width, y + 1)) for y in reversed(range(height))]

    def put(name, bits, masks, pixels, version=5):
        stride = (width * bits + 31) // 32 * 4
        size, after = (124, 0) if version == 5 else (40, 12)
        data = b"".join(row + bytes(stride - len(row)) for row in pixels)
        head = struct.pack("<IiiHHIIiiII", size, width, height, 1, bits, 3, len(data), 2835, 2835, 0, 0)
        head += struct.pack("<4I", *masks) + bytes(size - 56) if version == 5 else struct.pack("<3I", *masks[:3])
        # Six bits become eight by rounding or by repeating.
        made[path := os.path.join(folder, name)] = 1 if bits == 16 else 0
        with open(path, "wb") as out:
            out.write(struct.pack("<2sIHHI", b"BM", 14 + size + after + len(data), 0, 0, 14 + size + after) + head + data)

    def packed(red, green, blue):
        def of(row):
            return b"".join(struct.pack("<H", (r >> 8 - red) << green + blue | (g >> 8 - green) << blue | b >> 8 - blue) for r, g, b, _ in row.getdata())
        return [of(row) for row in rows]

    put("bgra.bmp", 32, (0xFF0000, 0xFF00, 0xFF, 0xFF000000), [row.tobytes("raw", "BGRA") for row in rows])
    put("bgrx.bmp", 32, (0xFF0000, 0xFF00, 0xFF, 0), [row.tobytes("raw", "BGRA") for row in rows])
    put("unclear.bmp", 32, (0xFF0000, 0xFF00, 0xFF, 0xFF000000), [row.convert("RGB").tobytes("raw", "BGRX") for row in rows])
    put("bgrx-1.bmp", 32, (0xFF0000, 0xFF00, 0xFF), [row.tobytes("raw", "BGRA") for row in rows], 1)
    put("565.bmp", 16, (0xF800, 0x7E0, 0x1F, 0), packed(5, 6, 5))
    put("555.bmp", 16, (0x7C00, 0x3E0, 0x1F, 0), packed(5, 5, 5))
    put("565-1.bmp", 16, (0xF800, 0x7E0, 0x1F), packed(5, 6, 5), 1)


def put_small_frames(folder, photo, made):
    """Animations whose first frame leaves a part of the screen free; GIFs with few colours and with as many as there may be."""
    photo.crop((0, 0, 40, 30)).save(path := os.path.join(folder, "frame.webp"), lossless=True)
    with open(path, "rb") as file:
        alone = file.read()[12:]  # its one chunk

    def chunk(kind, data):
        return kind + struct.pack("<I", len(data)) + data + bytes(len(data) % 2)

    def three(*numbers):
        return b"".join(struct.pack("<I", number)[:3] for number in numbers)

    shown = chunk(b"ANMF", three(12 // 2, 8 // 2, 40 - 1, 30 - 1, 100) + b"\0" + alone)
    whole = chunk(b"VP8X", b"\x02\0\0\0" + three(61 - 1, 47 - 1)) + chunk(b"ANIM", b"\xff\xff\xff\xff\0\0") + shown
    with open(path, "wb") as out:
        out.write(chunk(b"RIFF", b"WEBP" + whole))
    made[path] = 0
    for colors in (2, 5, 200, 256):
        frame = photo.crop((0, 0, 40, 30)).quantize(colors)
        path = os.path.join(folder, f"frame-{colors}.gif")
        frame.save(path)
        with open(path, "rb") as file:
            data = bytearray(file.read())
        at = data.index(b"\x2c\0\0\0\0" + struct.pack("<HH", 40, 30))
        data[6:10] = struct.pack("<HH", 61, 47)
        data[at + 1:at + 5] = struct.pack("<HH", 13, 9)
        with open(path, "wb") as out:
            out.write(data)
        made[path] = 0


def on_screen(image, color):
    """A frame where it belongs. Pillow fills the screen with the file's background colour, or black, which viewers leave clear."""
    if not os.path.basename(getattr(image, "filename", "")).startswith("frame"):
        return image
    left, top = (12, 8) if image.format == "WEBP" else (13, 9)
    screen = Image.new("RGB", image.size, color)
    screen.paste(image.convert("RGB").crop((left, top, left + 40, top + 30)), (left, top))
    return screen


def upright(image):
    turn = {2: Image.Transpose.FLIP_LEFT_RIGHT, 3: Image.Transpose.ROTATE_180, 4: Image.Transpose.FLIP_TOP_BOTTOM,
            5: Image.Transpose.TRANSPOSE, 6: Image.Transpose.ROTATE_270, 7: Image.Transpose.TRANSVERSE,
            8: Image.Transpose.ROTATE_90}.get(image.getexif().get(274))
    return image.transpose(turn) if turn is not None and image.format in ("JPEG", "PNG", "WEBP") else image


def meant(path, color):
    # Pillow refuses to look at it, and cannot open PAM and SPIX.
    name = path.replace("bombs", "plain").replace("-pam.pam", ".png").replace("-spix.spix", ".png")
    with Image.open(name) as image:
        image = on_screen(upright(image), color)
        if image.mode.startswith("I"):
            return image.convert("I").point(lambda v: v / 257).convert("L").convert("RGB")
        # An opacity of 0 everywhere is not meant.
        if image.mode == "CMYK" or os.path.basename(path) == "unclear.bmp":
            return image.convert("RGB")
        over = image.convert("RGBA")
        under = Image.new("RGBA", over.size, (*color, 255))
        under.alpha_composite(over)
        return under.convert("RGB")


def main():
    _, source, program = shared.places()
    faults, tried = [], 0
    # The sanitizers take their time: what is meant to be seen there is seen on one background.
    backgrounds = {name: color for name, color in BACKGROUNDS.items() if name != "white" or not shared.sanitized(program)}
    # In memory where there is such a place: every file is synced.
    place = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="raxel-formats-", dir=place) as folder:
        files = write_all(source, folder)
        out = os.path.join(folder, "out.tif")
        for path, allowed in files.items():
            for name, color in backgrounds.items():
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
