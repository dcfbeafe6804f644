# SPDX-License-Identifier: MIT
# The longest sides, and one more; files with several pictures.
flat() { printf "P6\\n$1 $2\\n255\\n"; seq 100000 | head -c $((3 * $1 * $2)); }
flat 65535 2 >wide.ppm
flat 1 65534 >tall.ppm
flat 65536 1 >wider.ppm
flat 1 65535 >taller.ppm
for options in '-m rgb -c lzw' '-m color16 -c packbits' '-m bilevel -c t6' '-m grey256 -c none'; do
  code raxel-export --verify $options wide.ppm out.tif
  code raxel-export --verify $options tall.ppm out.tif
done
code raxel-export wider.ppm no.tif
code raxel-export taller.ppm no.tif
ls no.tif 2>/dev/null
printf 'P5\n1 1\n255\nAP5\n1 1\n255\nB' >two.pgm
raxel-export two.pgm out.tif
raxel-export -q two.pgm out.tif
