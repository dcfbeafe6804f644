# SPDX-License-Identifier: MIT
# Rows that alternate at every pixel have more runs than libtiff takes in T.4 and Huffman.
{ printf 'P4\n64 2\n'; printf '\252\252\252\252\252\252\252\252\0\0\0\0\0\0\0\0'; } >refused.pbm
{ printf 'P4\n64 2\n'; printf 'UUUUUUUU\0\0\0\0\0\0\0\0'; } >taken.pbm
for file in refused taken; do
  for compression in t4 huffman t6; do
    raxel-export --verify -c $compression $file.pbm $file.tif
    raxel-export --inspect $file.tif | grep Compression
    raxel-export -q --dry-run -c $compression $file.pbm
  done
done
# Any dithered mid-grey has such rows.
{ printf 'P5\n640 64\n255\n'; head -c 40960 /dev/zero | tr '\0' '\177'; } >grey.pgm
raxel-export --verify -m bilevel -c t4 grey.pgm grey.tif
