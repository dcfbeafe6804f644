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
code raxel-export --size x600px tall.pbm out.tif
# 2^32 + 100 pixels, of which 32 bits hold the 100.
code raxel-export --dpi 100000 --size 42949.67396x0.001in --fit pad "$SAMPLES/chart4.png" wrapped.tif
code raxel-export --page 1-2 -d . missing.tif
code raxel-export /proc/self/mem out.tif
