# SPDX-License-Identifier: MIT
"""Prints the processor seconds that Pillow takes to map a picture to a given table with error diffusion.

    pillow_dither.py PHOTO TABLE

TABLE holds 3-byte entries red, green, blue.
"""

import sys
import time

from PIL import Image

photo = Image.open(sys.argv[1]).convert("RGB")
with open(sys.argv[2], "rb") as file:
    entries = file.read()
palette = Image.new("P", (1, 1))
palette.putpalette(list(entries))

start = time.process_time()
photo.quantize(palette=palette, dither=Image.Dither.FLOYDSTEINBERG)
print(time.process_time() - start)
