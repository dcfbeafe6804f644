# SPDX-License-Identifier: MIT
# A bitmap of OS/2 1: sizes of 16 bits, colours of three bytes, blue first, and the lowest row comes first.
printf 'BM\40\0\0\0\0\0\0\0\40\0\0\0\14\0\0\0\2\0\2\0\1\0\1\0' >old.bmp
printf '\0\0\377\377\0\0' >>old.bmp          # red, blue
printf '\100\0\0\0\200\0\0\0' >>old.bmp      # red and blue below, blue and red above
code raxel-export -m rgb -c none old.bmp old.tif
od -An -v -tx1 old.tif | tr -d '\n' | grep -o '00 00 ff ff 00 00 ff 00 00 00 00 ff'
# A page that is asked for twice would take its own name twice.
raxel-export --pages old.bmp old.bmp -o pages.tif
code raxel-export --page 1,1 -d folder pages.tif
code raxel-export --page 2,1 -d folder pages.tif
ls folder
