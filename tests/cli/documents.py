#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Hands what the command writes to the programs that documents are for, and listens to what they say.

    documents.py --build FOLDER --source FOLDER

tiffinfo, tiffcp and tiffcmp (libtiff-tools), vips (libvips-tools), HylaFAX's tiffcheck (hylafax-server), efix (efax), img2pdf,
tiff2pdf, ocrmypdf and MuPDF (python3-fitz).
Where one is missing, its checks are counted as skipped.
"""

import json
import os
import random
import re
import struct
import subprocess
import sys
import tempfile

import shared

try:
    from PIL import Image, ImageDraw, PngImagePlugin, TiffImagePlugin
except ImportError:
    print("SKIPPED: python3-pil is not installed")
    sys.exit(77)

import readers

TIFFCHECK = "/usr/lib/hylafax/bin/tiffcheck"
FAX = ("huffman", "t4", "t6")


class Documents(shared.Checks):
    def __init__(self, program, samples, folder):
        super().__init__(folder)
        self.program, self.samples = program, samples

    # --- what the tests are made of

    def export(self, *arguments, code=0):
        """Runs the command; returns what it says on standard error."""
        done = subprocess.run([self.program, *arguments], capture_output=True, text=True)
        self.same(" ".join(arguments), (done.returncode, done.stderr if code == 0 and done.returncode else ""),
                  (code, ""))
        return done.stderr

    def run(self, *arguments):
        done = subprocess.run(arguments, capture_output=True, text=True, errors="replace", cwd=self.folder)
        return done.returncode, done.stdout, done.stderr

    def tags(self, path):
        """The tags of all pages, in the order of the file."""
        with open(path, "rb") as file:
            data = file.read()
        number = lambda at, size: int.from_bytes(data[at:at + size], "little")
        pages, at = [], number(4, 4)
        while at:
            entries = {}
            for i in range(number(at, 2)):
                entry = at + 2 + 12 * i
                kind, count = number(entry + 2, 2), number(entry + 4, 4)
                size = {2: 1, 3: 2, 4: 4, 5: 4, 7: 1}[kind]
                count *= 2 if kind == 5 else 1
                start = entry + 8 if size * count <= 4 else number(entry + 8, 4)
                values = data[start:start + count] if size == 1 else [number(start + size * k, size) for k in range(count)]
                entries[number(entry, 2)] = values
            pages.append(entries)
            at = number(at + 2 + 12 * number(at, 2), 4)
        return pages

    def text_page(self):
        """An A4 page at 300 dots an inch, of small text."""
        page = Image.new("1", (827, 1169), 1)
        pen, rng = ImageDraw.Draw(page), random.Random(7)
        for y in range(60, 1100, 13):
            words = " ".join("".join(rng.choice("etaoinshrdlu") for _ in range(rng.randrange(2, 9))) for _ in range(30))
            pen.text((60, y), words[:rng.randrange(100, 118)], fill=0)
        return page.resize((2480, 3508))

    # --- the tests

    def fax_codes_are_min_is_white(self):
        page = self.path("text.png")
        wanted = self.text_page()
        wanted.save(page, dpi=(300, 300))
        for code in FAX:
            for strips in ("quarters", "one"):
                out = self.path(f"{code}-{strips}.tif")
                self.export("--verify", "-c", code, "--strips", strips, page, out)
                tags = self.tags(out)[0]
                self.same(f"{out}: photometric", tags[262], [0])
                self.same(f"{out}: strips", len(tags[273]), 1 if strips == "one" else 4)
                self.true(f"{out}: tags ascend", list(tags) == sorted(tags))
                seen = Image.open(out).convert("1")
                self.same(f"{out}: pixels", seen.crop((0, 0) + wanted.size).tobytes(), wanted.tobytes())
            # libtiff codes the same rows in the same strips; its quarters are given as rows.
            if self.has("tiffcp") and code != "huffman":  # which tiffcp does not write
                quarter = self.tags(self.path(f"{code}-quarters.tif"))[0][278][0]
                scheme = {"t4": "g3:1d:fill", "t6": "g4"}[code]
                for strips, rows in (("quarters", quarter), ("one", 100000)):
                    ours, theirs = self.path(f"{code}-{strips}.tif"), self.path("theirs.tif")
                    self.same("tiffcp", self.run("tiffcp", "-c", scheme, "-r", str(rows), ours, theirs)[0], 0)
                    mine = sum(self.tags(ours)[0][279])
                    its = sum(self.tags(theirs)[0][279])
                    limit = 1.03 if code == "t4" else 1.02
                    self.true(f"{code} in {strips}: {mine} bytes against libtiff's {its}", mine <= limit * its)
        other = self.path("lzw.tif")
        self.export("-c", "lzw", page, other)
        self.same("LZW stays black-is-zero", self.tags(other)[0][262], [1])

    def as_is_is_the_filters_own(self):
        out = self.path("as-is.tif")
        self.export("--as-is", "-c", "t6", "-m", "bilevel", os.path.join(self.samples, "page.png"), out)
        tags = self.tags(out)[0]
        self.same("--as-is: photometric", tags[262], [1])
        self.true("--as-is: no Software", 305 not in tags)
        with open(out, "rb") as file:
            self.same("--as-is: directory", file.read(8), b"II*\0\x08\0\0\0")

    def every_directory_is_in_order(self):
        photo = os.path.join(self.samples, "photo.png")
        rgb = self.path("rgb.tif")
        self.export("--verify", "-m", "rgb", photo, rgb)
        self.same("BitsPerSample", self.tags(rgb)[0][258], [8, 8, 8])
        tiles = self.path("tiles.tif")
        self.export("--verify", "-m", "bilevel", "-c", "t6", "--layout", "tiles", photo, tiles)
        for path in (rgb, tiles):
            tags = list(self.tags(path)[0])
            self.same(f"{path}: order", tags, sorted(tags))
            if self.has("tiffinfo"):
                code, _, errors = self.run("tiffinfo", "-D", path)
                self.same(f"tiffinfo {path}", (code, errors), (0, ""))

    def resolutions_are_true(self):
        scan = self.path("scan.png")
        # A4 at 600 dots an inch.
        Image.new("1", (4960, 7016), 1).save(scan, dpi=(600, 600))
        out = self.path("scan.tif")
        self.same("a scan's notes", self.export("--verify", "-c", "t6", scan, out), "")
        if self.has("tiffinfo"):
            self.true("tiffinfo says 600", "Resolution: 600, 600 pixels/inch" in self.run("tiffinfo", out)[1])
        if self.has("img2pdf"):
            pdf = self.path("scan.pdf")
            self.same("img2pdf", self.run("img2pdf", out, "-o", pdf)[0], 0)
            with open(pdf, "rb") as file:
                box = re.search(rb"/MediaBox\s*\[([^\]]*)\]", file.read()).group(1).split()
            millimetres = [round(float(v) / 72 * 25.4) for v in box[2:]]
            self.same("the page of the PDF", millimetres, [210, 297])
        for given, wanted in (("1200", [1200, 1]), ("203.2", [1016, 5]), ("20", [20, 1]), ("1", [1, 1])):
            self.export("--verify", "--dpi", given, os.path.join(self.samples, "ramp.png"), out)
            self.same(f"--dpi {given}", self.tags(out)[0][282], wanted)
        self.export("--dpi", "600x20", "--size", "2x10in", os.path.join(self.samples, "photo.png"), out)
        with Image.open(out) as seen:
            self.same("a size in inches", seen.size, (1200, 28))

    def fax_programs_take_one_strip(self):
        fax = self.path("fax.tif")
        page = Image.open(os.path.join(self.samples, "page.png")).convert("L").resize((1728, 2290)).convert("1")
        page.save(self.path("fax.png"))
        for code, rows, dpi in (("t4", 2290, "204x196"), ("t4", 1144, "204x98"), ("t6", 4570, "204x391")):
            page.resize((1728, rows)).save(self.path("fax.png"))
            self.export("--verify", "-c", code, "--strips", "one", "--dpi", dpi, self.path("fax.png"), fax)
            if self.has(TIFFCHECK):
                status, said, _ = self.run(TIFFCHECK, "-r", dpi.split("x")[1], fax)
                wanted = "OK" if code == "t4" else "REFORMAT"
                self.same(f"tiffcheck of {code} at {dpi}", said.split("\n")[0].split("+")[0], wanted)
            if self.has("efix") and code == "t4":
                status, _, errors = self.run("efix", "-v", "ew", "-o", "pbm", fax)
                self.same(f"efix of {code} at {dpi}", (status, errors), (0, ""))

    def predictor_makes_photos_smaller(self):
        photo, out = os.path.join(self.samples, "photo.png"), self.path("lzw.tif")

        def size(path, *options):
            self.export("-q", "--verify", "-c", "lzw", *options, path, out)
            return os.path.getsize(out)

        def predictor():
            return self.tags(out)[0].get(317, [1])

        for mode in ("rgb", "grey256"):
            plain = size(photo, "-m", mode, "--predictor", "none")
            self.same(f"{mode} plain", predictor(), [1])
            wanted = Image.open(out).tobytes()
            differences = size(photo, "-m", mode, "--predictor", "horizontal")
            self.same(f"{mode} differences", predictor(), [2])
            self.true(f"{mode}: {differences} bytes against {plain}", differences < 0.8 * plain)
            self.true(f"{mode}: pixels", Image.open(out).tobytes() == wanted)
            with open(out, "rb") as file:
                whole = file.read()
            size(photo, "-m", mode)
            with open(out, "rb") as file:
                self.true(f"{mode}: the default is the same file", file.read() == whole)
            if mode == "rgb":
                size(photo, "-m", mode, "--via", "driver")
                with open(out, "rb") as file:
                    self.true("a driver session writes it, too", file.read() == whole)
            if self.has("vips"):
                theirs = self.path("vips.tif")
                self.export("-q", "-m", mode, photo, out)
                self.same("vips", self.run("vips", "tiffsave", out, theirs, "--compression", "lzw", "--predictor",
                                           "horizontal")[0], 0)
                its = os.path.getsize(theirs)
                self.true(f"{mode}: {differences} bytes against libvips' {its}", differences <= 1.02 * its)
        # Text is smaller as it is.
        page = os.path.join(self.samples, "page.png")
        plain, differences = (size(page, "-m", "grey256", "--predictor", kind) for kind in ("none", "horizontal"))
        self.true(f"a page: {plain} bytes against {differences}", plain < differences)
        self.same("a page by default", (size(page, "-m", "grey256"), predictor()), (plain, [1]))
        # Every page for itself.
        self.export("-q", "--verify", "--pages", "-c", "lzw", "-m", "grey256", photo, page, photo, "-o", out)
        self.same("pages", [page.get(317, [1]) for page in self.tags(out)], [[2], [1], [2]])
        # What it is not for.
        for options in (("-c", "packbits"), ("-c", "lzw", "-m", "grey16"), ("-c", "lzw", "-m", "color256")):
            self.export("-q", *options, "--predictor", "horizontal", photo, out, code=64)
            self.export("-q", *options, photo, out)
            self.same(f"{options}", predictor(), [1])
        self.export("--as-is", "--predictor", "horizontal", photo, out, code=64)

    def bmp_with_profile(self, picture, profile):
        """A BMP of the fifth kind, by hand: Pillow writes no profile."""
        pixels = b"".join(picture.crop((0, y, picture.width, y + 1)).tobytes("raw", "BGR").ljust((3 * picture.width + 3) // 4 * 4, b"\0")
                          for y in reversed(range(picture.height)))
        header = struct.pack("<IiiHHIIiiII", 124, picture.width, picture.height, 1, 24, 0, len(pixels), 0, 0, 0, 0)
        header += bytes(16) + b"DEBM" + bytes(48) + struct.pack("<IIII", 4, 124 + len(pixels), len(profile), 0)
        return b"BM" + struct.pack("<IHHI", 14 + 124 + len(pixels) + len(profile), 0, 0, 14 + 124) + header + pixels + profile

    def profiles_and_texts_are_kept(self):
        numbers = random.Random(11)

        def profile_of(space, size):
            front = struct.pack(">I4sI4s4s4s", size, b"test", 0x04000000, b"mntr", space, b"XYZ ") + bytes(12) + b"acsp"
            return (front + bytes(88) + bytes(numbers.randrange(256) for _ in range(size)))[:size]

        icc, grey, small = profile_of(b"RGB ", 150001), profile_of(b"GRAY", 300), profile_of(b"RGB ", 128)
        photo = Image.open(os.path.join(self.samples, "photo.png")).convert("RGB").resize((64, 48))
        out = self.path("described.tif")

        def seen(page=0):
            """The profile, and description, artist, copyright and date."""
            tags = self.tags(out)[page]
            return tags.get(34675), [tags[tag].rstrip(b"\0").decode() if tag in tags else None for tag in (270, 315, 33432, 306)]

        nothing = [None] * 4
        # From every format that holds one.
        inputs = {"png": {}, "jpg": {"quality": 95}, "tif": {}, "webp": {"lossless": True}}
        for kind, options in inputs.items():
            photo.save(self.path("in." + kind), icc_profile=icc, **options)
        with open(self.path("in.bmp"), "wb") as file:
            file.write(self.bmp_with_profile(photo, icc))
        for kind in [*inputs, "bmp"]:
            said = self.export("--verify", "-c", "lzw", self.path("in." + kind), out)
            self.same(f"notes of {kind}", said, "")
            self.true(f"the profile of {kind}", seen() == (icc, nothing))
            self.true(f"Pillow's of {kind}", Image.open(out).info.get("icc_profile") == icc)
        if self.has("tiffinfo"):
            code, told, errors = self.run("tiffinfo", out)
            self.true("tiffinfo shows it", (code, errors) == (0, "") and "ICC Profile: <present>, 150001 bytes" in told)
        source = self.path("in.png")
        # Others that fit, and those that do not.
        for name, profile in (("grey.icc", grey), ("rgb.icc", small), ("cut.icc", icc[:-1])):
            with open(self.path(name), "wb") as file:
                file.write(profile)
        self.export("--icc", "drop", source, out)
        self.same("--icc drop", seen(), (None, nothing))
        self.export("--icc", self.path("rgb.icc"), source, out)
        self.same("--icc FILE", seen(), (small, nothing))
        self.export("--icc", self.path("grey.icc"), "-m", "grey256", source, out)
        self.same("--icc of greys", seen(), (grey, nothing))
        self.export("--icc", self.path("grey.icc"), source, out, code=64)
        self.export("--icc", source, source, out, code=66)
        self.export("--icc", self.path("cut.icc"), source, out, code=66)
        photo.save(self.path("cut.png"), icc_profile=icc[:-1])
        said = self.export(self.path("cut.png"), out)
        self.true(f"a note of a profile cut short: {said}", "the ICC profile (it is damaged)" in said)
        # In the words of profiles, and not of pictures.
        for name, why in ((self.path("nowhere.icc"), "cannot be opened: No such file or directory"), ("/dev/zero", "is no ICC profile"),
                          (self.folder, "is a folder; name an ICC profile in it")):
            said = self.export("--icc", name, source, out, code=66)
            self.same(f"--icc {name}", said, f"raxel-export: {name}: {why}\n")
        # A pipe's, which is longer than what is looked at first.
        with open(self.path("piped.icc"), "wb") as file:
            file.write(icc)
        piped = self.run("sh", "-c", f'cat piped.icc | "{self.program}" --icc - "{source}" "{out}"')
        self.true(f"a profile from a pipe: {piped}", piped[0] == 0 and seen() == (icc, nothing))
        for mode, why in (("grey256", "it is for RGB, and the mode is grey256"), ("color256", "it is for RGB, and the mode is color256")):
            said = self.export("-m", mode, source, out)
            self.true(f"a note in {mode}: {said}", f"note: not carried over: the ICC profile ({why})" in said)
            self.same(f"no profile in {mode}", seen(), (None, nothing))
        said = self.export("--color-treatment", "invert", source, out)
        self.true(f"a note for other colours: {said}", "the ICC profile (the colours are changed)" in said)
        photo.convert("L").save(self.path("grey.png"), icc_profile=grey)
        self.export("--verify", self.path("grey.png"), out)
        self.true("a grey picture's", seen() == (grey, nothing))
        # Texts: of the input, of the options, and without.
        texts = PngImagePlugin.PngInfo()
        texts.add_text("Description", "Caf\u00e9")
        texts.add_itxt("Author", "\u0141ukasz")
        texts.add_text("Copyright", "(c) 2026")
        photo.save(self.path("text.png"), pnginfo=texts)
        tiff = TiffImagePlugin.ImageFileDirectory_v2()
        tiff[270], tiff[315], tiff[33432], tiff[306] = "A lake", "Ann", "Bob", "2001:01:01 00:00:00"
        photo.save(self.path("text.tif"), tiffinfo=tiff)
        exif = Image.Exif()
        exif[270], exif[315], exif[33432], exif[271] = "A lake  ", "Ann", "Bob", "Maker"
        exif[34665] = {33434: 0.01}
        photo.save(self.path("text.jpg"), exif=exif)
        for name, wanted in (("text.png", ["Caf\u00e9", "\u0141ukasz", "(c) 2026", None]),
                             ("text.tif", ["A lake", "Ann", "Bob", None]), ("text.jpg", ["A lake", "Ann", "Bob", None])):
            said = self.export("--verify", self.path(name), out)
            self.same(f"texts of {name}", seen(), (None, wanted))
            left = {"text.tif": "the date", "text.jpg": "the device's name, Exif data of the camera"}.get(name, "")
            self.true(f"a note of {name}: {said}", said.endswith(f"not carried over: {left}\n") if left else said == "")
        self.export("--verify", "--description", "a b", "--artist", "", "--date", "2026:01:31 23:59:59", self.path("text.tif"), out)
        self.same("texts of the options", seen(), (None, ["a b", None, "Bob", "2026:01:31 23:59:59"]))
        self.export("--date", "now", source, out)
        self.true("--date now", re.fullmatch(r"20\d\d:\d\d:\d\d \d\d:\d\d:\d\d", seen()[1][3] or ""))
        for date in ("2026-01-31 23:59:59", "2026:13:45 99:99:99"):
            self.export("--date", date, source, out, code=64)
        # From places of 64 bits too, and what is left out has its note.
        if self.has("tiffcp"):
            photo.save(self.path("small.tif"), icc_profile=icc, tiffinfo=tiff)
            self.run("tiffcp", "-8", "small.tif", "big.tif")
            with open(self.path("big.tif"), "rb") as file:
                self.same("a BigTIFF", file.read(4), b"II+\0")
            said = self.export("--verify", self.path("big.tif"), out)
            # It copies no copyright.
            self.same("a BigTIFF's", (seen()[0] == icc, seen()[1]), (True, ["A lake", "Ann", None, None]))
            self.true(f"its date: {said}", said.endswith("not carried over: the date\n"))
        photo.save(self.path("comment.jpg"), comment="hello")
        photo.save(self.path("large.png"), icc_profile=icc + bytes(16 << 20))
        for name, what in (("comment.jpg", "comments"),
                           ("large.png", "the ICC profile (it is damaged, or of more than 16 MiB)")):
            said = self.export(self.path(name), out)
            self.true(f"a note of {name}: {said}", said.endswith(f"not carried over: {what}\n"))
        for option in (("--icc", "drop"), ("--artist", "A"), ("--date", "now")):
            self.export("--as-is", *option, source, out, code=64)
        # What is told beforehand, and every page for itself.
        self.export("--description", "even", "--artist", "odd", source, out)
        told = subprocess.run([self.program, "--dry-run", "--json", "--description", "even", "--artist", "odd", source],
                              capture_output=True, text=True).stdout
        self.same("--dry-run", json.loads(told)["results"][0]["file"]["uncompressedBytes"], os.path.getsize(out))
        self.export("--verify", "--pages", "--copyright", "me", self.path("text.tif"), source, "-o", out)
        self.same("pages", [seen(0), seen(1)], [(None, ["A lake", "Ann", "me", None]), (icc, [None, None, "me", None])])

    def pages_make_one_file(self):
        inputs = [os.path.join(self.samples, name) for name in ("page.png", "photo.png", "chart8.png")]
        out, again = self.path("pages.tif"), self.path("again.tif")
        self.export("-q", "--verify", "--pages", "-c", "lzw", *inputs, "-o", out)
        pages = self.tags(out)
        self.same("pages", [page[297] for page in pages], [[0, 3], [1, 3], [2, 3]])
        self.same("their kind", [page[254] for page in pages], [[2]] * 3)

        def picture(path, number=0):
            image = Image.open(path)
            image.seek(number)
            return image.size, image.convert("RGB").tobytes()

        for number, source in enumerate(inputs):
            alone = self.path("alone.tif")
            self.export("-q", "-c", "lzw", source, alone)
            self.same(f"page {number + 1}", picture(out, number), picture(alone))
        # Pages in, in another order; and each to a file of its own. Pillow cannot go on behind a colour map.
        self.export("-q", "--verify", "--pages", "--page", "2,1-1,3-", "-c", "packbits", out, again)
        self.same("chosen pages", [picture(again, i) for i in range(3)], [picture(out, i) for i in (1, 0, 2)])
        self.export("-q", "--page", "2-", "-d", self.folder, out)
        self.same("a file a page", [picture(self.path(f"pages-00{i + 1}.tif")) for i in (1, 2)],
                  [picture(out, i) for i in (1, 2)])
        self.true("no file for page 1", not os.path.exists(self.path("pages-001.tif")))
        self.export("-q", "--page", "2", out, self.path("one.tif"))
        self.same("a page alone", picture(self.path("one.tif")), picture(out, 1))
        self.same("which is no page of several", self.tags(self.path("one.tif"))[0][254], [0])
        said = self.export(out, self.path("first.tif"))
        self.true("the first with a note", "only the first picture of the file is taken" in said)
        # Consumers.
        if self.has("tiffcp"):
            self.same("tiffcp", self.run("tiffcp", out, self.path("copy.tif")), (0, "", ""))
            self.same("its pages", [picture(self.path("copy.tif"), i) for i in range(3)],
                      [picture(out, i) for i in range(3)])
        wanted = [picture(out, i) for i in range(3)]
        pdf = self.path("img2pdf.pdf")
        for program, arguments in (("img2pdf", [out, "-o", pdf]), ("tiff2pdf", [out, "-o", self.path("tiff2pdf.pdf")]),
                                   ("ocrmypdf", ["--quiet", "--output-type", "pdf", "--tesseract-timeout", "0", pdf,
                                                 self.path("ocrmypdf.pdf")])):
            if self.has(program) and (program != "ocrmypdf" or self.has("img2pdf")):  # whose pages it takes
                self.same(program, self.run(program, *arguments)[0], 0)
                self.same_pages(program, self.path(program + ".pdf"), wanted)
        # A page that cannot be read leaves the old file.
        with open(out, "rb") as file:
            before = file.read()
        broken = self.path("broken.png")
        with open(broken, "wb") as file, open(inputs[1], "rb") as good:
            file.write(good.read()[:2000])
        self.export("-q", "--pages", inputs[0], broken, inputs[2], "-o", out, code=66)
        with open(out, "rb") as file:
            self.true("the old file stays", file.read() == before)
        self.same("nothing stays beside it", [name for name in os.listdir(self.folder) if name.startswith(".")], [])
        self.export("--page", "4", out, again, code=66)
        # Nor does a file that ends before its last directory lose a page in silence.
        last = struct.unpack_from("<I", before, 4)[0]
        for _ in range(2):
            last, = struct.unpack_from("<I", before, last + 2 + 12 * struct.unpack_from("<H", before, last)[0])
        for rest in (0, 1, 2, 100):
            with open(broken, "wb") as file:
                file.write(before[:last + rest])
            self.export("-q", "--pages", broken, "-o", out, code=66)
            self.export("--inspect", broken, code=66)
        # Nor does one whose last directory links back to the first, with places of 32 or of 64 bits.
        link = last + 2 + 12 * struct.unpack_from("<H", before, last)[0]
        loops = [("loop", before[:link] + before[4:8] + before[link + 4:])]
        if self.has("tiffcp"):
            self.run("tiffcp", "-8", "first.tif", "big.tif")
            with open(self.path("big.tif"), "rb") as file:
                big = file.read()
            first, = struct.unpack_from("<Q", big, 8)
            end = first + 8 + 20 * struct.unpack_from("<Q", big, first)[0]
            loops.append(("big", big[:end] + big[8:16] + big[end + 8:]))
        for name, loop in loops:
            with open(broken, "wb") as file:
                file.write(loop)
            said = self.export("-q", "--pages", broken, "-o", out, code=66)
            self.true(f"a chain that comes back: {said}", name == "big" or "the directories link back to where they were" in said)
            self.export("--inspect", broken, code=66)
        with open(out, "rb") as file:
            self.true("the old file stays", file.read() == before)
        self.export("--page", "1-2", out, again, code=64)
        self.export(inputs[0], inputs[1], "-o", again, code=64)

    def same_pages(self, program, pdf, wanted):
        """Every page of a PDF is one picture, and has its size and pixels."""
        with open(pdf, "rb") as file:
            self.true(f"{program} writes a PDF", file.read(5) == b"%PDF-")
        if not readers.fitz:
            if "python3-fitz" not in self.skipped:
                self.skipped.append("python3-fitz")
            return
        with readers.fitz.open(pdf) as file:
            self.same(f"pages of {program}", file.page_count, len(wanted))
            for number, (page, (size, pixels)) in enumerate(zip(file, wanted)):
                images = page.get_images()
                self.same(f"pictures on page {number + 1} of {program}", len(images), 1)
                seen = readers.fitz.Pixmap(file, images[0][0])
                self.same(f"size of page {number + 1} of {program}", (seen.width, seen.height), size)
                samples = readers.grey_rgb(seen.samples) if seen.n == 1 else seen.samples
                self.true(f"pixels of page {number + 1} of {program}", samples == pixels)

    def thumbnails_and_masks_are_no_pages(self):
        photo = os.path.join(self.samples, "photo.png")
        inputs = []
        for size in ((64, 48), (32, 24), (16, 12), (8, 6)):
            inputs.append(self.path(f"{size[0]}.png"))
            Image.open(photo).convert("RGB").resize(size).save(inputs[-1])
        chain, out = self.path("chain.tif"), self.path("taken.tif")
        self.export("-q", "--pages", *inputs, "-o", chain)
        with open(chain, "rb") as file:
            plain = file.read()

        def taken(*kinds, options=("--pages",), code=0):
            """Widths of the pages that are taken from directories of these kinds, and what is said."""
            data = bytearray(plain)
            at = struct.unpack_from("<I", data, 4)[0]
            for kind in kinds:
                entries, = struct.unpack_from("<H", data, at)
                self.same("NewSubfileType comes first", struct.unpack_from("<H", data, at + 2)[0], 254)
                struct.pack_into("<I", data, at + 2 + 8, kind)
                at, = struct.unpack_from("<I", data, at + 2 + 12 * entries)
            with open(chain, "wb") as file:
                file.write(data)
            said = self.export(*options, chain, "-o", out, code=code)
            return [page[256][0] for page in self.tags(out)], "reduced images and masks" in said

        self.same("pages", taken(2, 2, 2, 2), ([64, 32, 16, 8], False))
        self.same("pages without their kind", taken(0, 0, 0, 0), ([64, 32, 16, 8], False))
        self.same("a thumbnail and a mask", taken(2, 1, 2, 4), ([64, 16], True))
        self.same("of pages", taken(0, 3, 6, 5), ([64], True))
        self.same("the first is taken", taken(1, 1, 2, 2), ([64, 16, 8], True))
        self.same("the second page", taken(2, 1, 2, 4, options=("--page", "2"))[0], [16])
        taken(2, 1, 2, 4, options=("--page", "3"), code=66)
        if self.has("tiff2pdf") and readers.fitz:
            taken(2, 1, 2, 4)
            with open(chain, "r+b") as file:
                data = file.read()
                at = struct.unpack_from("<I", data, 4)[0]
                while at:  # it takes whatever has a number for a page
                    entries, = struct.unpack_from("<H", data, at)
                    for entry in range(at + 2, at + 2 + 12 * entries, 12):
                        if struct.unpack_from("<H", data, entry) == (297,):
                            file.seek(entry)
                            file.write(struct.pack("<H", 300))  # a tag that says nothing
                    at, = struct.unpack_from("<I", data, at + 2 + 12 * entries)
            self.same("tiff2pdf", self.run("tiff2pdf", chain, "-o", self.path("chain.pdf"))[0], 0)
            with readers.fitz.open(self.path("chain.pdf")) as file:
                self.same("which skips them as well", [page.get_images()[0][2] for page in file], [64, 16])

    def gifs_go_in_page_by_page(self):
        """Frames that cover a part, clear it again, or bring back what was there, beside ImageMagick's word."""
        numbers, colors = random.Random(5), [(200, 30, 30), (30, 160, 60), (40, 60, 200), (240, 220, 20), (0, 0, 0)]
        table = b"".join(map(bytes, colors)) + bytes(9)

        def codes(indices):
            """The indices in codes of 9 bits that never grow, for the table is cleared often enough."""
            bits = at = 0
            for i, index in enumerate(indices):
                for code in ((256, index) if i % 200 == 0 else (index,)):
                    bits, at = bits | code << at, at + 9
            bits, at = bits | 257 << at, at + 9
            data = bits.to_bytes(at // 8 + 1, "little")
            pieces = [data[k:k + 255] for k in range(0, len(data), 255)]
            return b"\x08" + b"".join(bytes([len(piece)]) + piece for piece in pieces) + b"\0"

        width, height, count = 40, 30, 12
        file = b"GIF89a" + struct.pack("<HHBBB", width, height, 0xF2, 0, 0) + table
        for frame in range(count):
            left, top = (0, 0) if frame == 0 else (numbers.randrange(30), numbers.randrange(20))
            across, down = (width, height) if frame == 0 else (numbers.randrange(1, width - left), numbers.randrange(1, height - top))
            clear = frame % 3 == 1
            file += b"\x21\xF9\x04" + struct.pack("<BHBB", (frame % 4) << 2 | clear, 5, 4, 0)
            file += b"\x2C" + struct.pack("<HHHHB", left, top, across, down, 0)
            file += codes([numbers.randrange(5) for _ in range(across * down)])
        source, out = self.path("frames.gif"), self.path("frames.tif")
        with open(source, "wb") as to:
            to.write(file + b"\x3B")
        self.export("-q", "--verify", "--pages", "--background", "#ffffff", source, "-o", out)
        self.same("a page a frame", len(self.tags(out)), count)
        if self.has("convert"):
            self.same("ImageMagick", self.run("convert", source, "-coalesce", "-background", "white", "-alpha", "remove",
                                              "-type", "truecolor", "PNG24:" + self.path("frame-%02d.png"))[0], 0)
            wrong = []
            for frame in range(count):
                seen = Image.open(out)
                self.export("-q", "-m", "rgb", "--page", str(frame + 1), source, self.path("frame.tif"))
                alone = Image.open(self.path("frame.tif")).tobytes()
                wanted = Image.open(self.path(f"frame-{frame:02}.png")).convert("RGB").tobytes()
                if alone != wanted:
                    wrong.append(frame)
            self.same("frames other than ImageMagick's", wrong, [])
        self.export("-q", "-m", "rgb", "--pages", "--page", "7,2,7-8", source, "-o", out)
        self.same("chosen frames", len(self.tags(out)), 4)
        # A frame that is cut short fails as a page does.
        with open(source, "wb") as to:
            to.write(file[:-40])
        with open(out, "rb") as before:
            old = before.read()
        self.export("-q", "--pages", source, "-o", out, code=66)
        with open(out, "rb") as after:
            self.true("the old file stays", after.read() == old)

    def inspection_goes_through_all_pages(self):
        out = self.path("inspected.tif")
        photo, page = (os.path.join(self.samples, name) for name in ("photo.png", "page.png"))
        self.export("-q", "--pages", "-c", "lzw", "-m", "grey256", photo, page, photo, "-o", out)

        def inspect(code):
            done = subprocess.run([self.program, "--inspect", out], capture_output=True, text=True)
            self.same("--inspect", done.returncode, code)
            return done.stdout

        said = inspect(0)
        self.true("three pages", "little-endian, 3 pages\n" in said)
        self.same("each of them", re.findall(r"^Page \d+:", said, re.M), ["Page 1:", "Page 2:", "Page 3:"])
        self.same("which decode", said.count("The pixels decode."), 3)
        self.same("without faults", said.count("No faults."), 3)
        self.same("and differences", len(re.findall(r"317  Predictor +SHORT +1  2 \(rows are differences\)", said)), 2)
        told = subprocess.run([self.program, "--inspect", "--json", out], capture_output=True, text=True).stdout
        pages = [dict((e["tag"], e.get("values")) for e in p["entries"])
                 for r in json.loads(told)["results"] for p in (r, *r["furtherPages"])]
        self.same("--json", [p[297] for p in pages], [[0, 3], [1, 3], [2, 3]])
        self.export("-q", "-c", "t4", "-m", "bilevel", page, out)
        self.true("white is 0", re.search(r"262  Photometric +SHORT +1  0 \(white is 0\)", inspect(0)))
        self.true("no word of pages", "pages" not in inspect(0) and "Page 1" not in inspect(0))
        # A page that is cut, and one that says to be another.
        self.export("-q", "--pages", "-c", "packbits", "-m", "rgb", photo, photo, "-o", out)
        with open(out, "r+b") as file:
            data = file.read()
            first = int.from_bytes(data[4:8], "little")
            second = int.from_bytes(data[first + 2 + 12 * data[first]:][:4], "little")
            entries = {int.from_bytes(data[at:at + 2], "little"): at
                       for at in range(second + 2, second + 2 + 12 * data[second], 12)}
            file.seek(entries[297] + 8)
            file.write(b"\x05")
        self.true("a wrong number", "PageNumber does not say that it is page 2 of 2" in inspect(0))
        with open(out, "r+b") as file:
            counts = int.from_bytes(data[entries[279] + 8:][:4], "little")
            file.seek(counts)
            file.write(b"\x01\0\0\0")
        said = inspect(66)
        self.same("a page that does not decode", [said.count(f"The pixels {word}.") for word in ("decode", "do not decode")], [1, 1])

    def ten_thousand_pages_take_linear_time(self):
        with open(self.path("dot.pbm"), "wb") as file:
            file.write(b"P4\n64 2\nabcdefghabcdefgh")
        many, again = self.path("many.tif"), self.path("many-again.tif")
        spent = {}
        few, lots = (100, 1000) if shared.sanitized(self.program) else (1000, 10000)
        for count in (few, lots):
            before = os.times()
            self.export("-q", "--pages", "-c", "t6", *[self.path("dot.pbm")] * count, "-o", many)
            self.export("-q", "--verify", "--pages", "-c", "t4", many, again)
            after = os.times()
            spent[count] = after.children_user + after.children_system - before.children_user - before.children_system
            pages = self.tags(again)
            self.same(f"{count} pages", (len(pages), pages[-1][297]), (count, [count - 1, count]))
        self.true(f"linear time: {spent}", spent[lots] < 30 * spent[few] + 1)

    def all(self):
        self.fax_codes_are_min_is_white()
        self.as_is_is_the_filters_own()
        self.every_directory_is_in_order()
        self.resolutions_are_true()
        self.fax_programs_take_one_strip()
        self.predictor_makes_photos_smaller()
        self.profiles_and_texts_are_kept()
        self.pages_make_one_file()
        self.thumbnails_and_masks_are_no_pages()
        self.inspection_goes_through_all_pages()
        self.gifs_go_in_page_by_page()
        self.ten_thousand_pages_take_linear_time()
        return self.told()


if __name__ == "__main__":
    _, source, program = shared.places()
    with tempfile.TemporaryDirectory() as folder:
        sys.exit(Documents(program, os.path.join(source, "samples"), folder).all())
