# SPDX-License-Identifier: MIT
# Inputs that are none: exit 66, and nothing is written.
code raxel-export missing.png out.tif
mkdir folder
code raxel-export folder out.tif
: >empty.png
code raxel-export empty.png out.tif
echo 'hello, this is no picture' >text.txt
code raxel-export text.txt out.tif
echo '%PDF-1.7' >drawing.pdf
code raxel-export drawing.pdf out.tif
head -c 5000 "$SAMPLES/photo.png" >cut.png
code raxel-export cut.png out.tif
printf 'P6\n70000 2\n255\n' >wide.ppm
head -c 420000 /dev/zero >>wide.ppm
code raxel-export wide.ppm out.tif
printf 'P4\n8 65535\n' >tall.pbm
head -c 65535 /dev/zero >>tall.pbm
code raxel-export tall.pbm out.tif
# A bitmap 2^31 pixels wide, which is a negative width, and one of 256 colours that ends before them.
bmp() { printf 'BM\0\0\0\0\0\0\0\0\66\0\0\0\50\0\0\0'; printf "$1\1\0\0\0\1\0\10\0"; head -c 24 /dev/zero; }
bmp '\0\0\0\200' >negative.bmp
code raxel-export negative.bmp out.tif
bmp '\1\0\0\0' >bare.bmp
code raxel-export bare.bmp out.tif
ls *.tif 2>/dev/null
# A TIFF of 2^64 + 26 bytes in three strips, of which 64 bits hold the 26.
python3 - >endless.tif <<'END'
import struct, sys
tags = [(256, 4, 1, 3062868337), (257, 4, 1, 2007567422), (258, 3, 3, 134), (259, 3, 1, 32773), (262, 3, 1, 2), (273, 4, 3, 140),
        (277, 3, 1, 3), (278, 4, 1, 669189141), (279, 4, 3, 152), (284, 3, 1, 1)]
sys.stdout.buffer.write(struct.pack("<2sHIH", b"II", 42, 8, len(tags)) + b"".join(struct.pack("<HHII", *tag) for tag in tags) +
                        struct.pack("<I3H6I", 0, 8, 8, 8, 164, 164, 164, 8, 8, 8) + bytes(range(8)))
END
code raxel-export --size 100x100 endless.tif out.tif
code raxel-export --no-sandbox --size 100x100 endless.tif out.tif
code raxel-export --size x600px tall.pbm out.tif
code raxel-export --page 1-2 -d . missing.tif
code raxel-export /proc/self/mem out.tif
