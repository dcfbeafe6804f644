# SPDX-License-Identifier: MIT
# What is worth telling without being asked; -v tells the rest, -q tells nothing.
photo=$SAMPLES/photo.png
raxel-export -m color256 "$photo" out.tif
raxel-export -v -m color256 "$photo" out.tif 2>&1 | sed 's/[0-9.]* s/N s/g; s/; [0-9]* bytes/; N bytes/'
printf 'P5\n1 1\n65535\nAB' >deep.pgm
raxel-export deep.pgm out.tif
raxel-export -q deep.pgm out.tif
raxel-export --json deep.pgm out.tif | sed 's/"seconds":{[^}]*}/"seconds":{}/'
# A TIFF of one pixel with 16-bit channels.
word() { printf "\\x$(printf %02x $(($1 % 256)))\\x$(printf %02x $(($1 / 256)))"; }
entry() { word "$1"; word "$2"; word "$3"; word 0; word "$4"; word 0; }
{
  printf 'II*\0\10\0\0\0'
  word 9
  entry 256 3 1 1
  entry 257 3 1 1
  entry 258 3 3 122
  entry 259 3 1 1
  entry 262 3 1 2
  entry 273 4 1 128
  entry 277 3 1 3
  entry 278 3 1 1
  entry 279 4 1 6
  printf '\0\0\0\0'
  word 16; word 16; word 16
  printf 'ABCDEF'
} >deep.tif
raxel-export deep.tif out.tif
# Two pictures of a pixel.
frame='\x2c\0\0\0\0\1\0\1\0\0\2\2\x44\1\0'
printf "GIF89a\1\0\1\0\x80\0\0\0\0\0\xff\xff\xff$frame$frame\x3b" >two.gif
raxel-export two.gif out.tif
