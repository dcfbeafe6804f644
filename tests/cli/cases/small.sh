# SPDX-License-Identifier: MIT
# Pictures of a few pixels that a compression cannot carry go out as PackBits, with a note.
printf 'P5\n1 1\n255\n\377' >one.pgm
printf 'P4\n8 2\n\252\252' >eight.pbm
raxel-export --verify -c lzw one.pgm out.tif
raxel-export --verify -c lzw -m bilevel eight.pbm out.tif
raxel-export --verify -c huffman -m bilevel one.pgm out.tif
raxel-export --verify -q -c huffman -m bilevel one.pgm out.tif
raxel-export --verify -c huffman eight.pbm out.tif
raxel-export --verify -c t4 eight.pbm out.tif
raxel-export --dry-run -c lzw one.pgm
raxel-export --dry-run -q -c huffman -m bilevel one.pgm
raxel-export --dry-run -q -c huffman eight.pbm
# Greys of two levels are bits, whatever the file calls them.
printf 'P5\n2 1\n1\n\0\1' >levels.pgm
printf 'P1\n2 1\n1 0\n' >plain.pbm
for file in levels.pgm plain.pbm; do raxel-export --dry-run $file; done
