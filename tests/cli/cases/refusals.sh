# SPDX-License-Identifier: MIT
# What readers cannot open is refused with the way out; --as-is writes it all the same.
photo=$SAMPLES/photo.png page=$SAMPLES/page.png
code raxel-export -c g4 "$photo" out.tif
code raxel-export -m grey256 -c t4 "$photo" out.tif
code raxel-export --layout tiles -m bilevel -c lzw "$photo" out.tif
code raxel-export --layout tiles -c t6 "$page" out.tif
printf 'P4\n600 100\n%07500d' 0 >flat.pbm
code raxel-export --layout tiles -c t6 flat.pbm out.tif
code raxel-export --layout tiles -m bilevel -c t6 "$SAMPLES/ramp.png" one-tile.tif
code raxel-export --layout tiles -m bilevel -c t6 "$photo" tiles.tif
code raxel-export --as-is -m grey256 -c t4 "$photo" as-is.tif
code raxel-export --as-is --layout tiles -m bilevel -c t6 --size 1x1 "$photo" no.tif
ls
# Too large by the size asked for is a fault of the command line.
code raxel-export --size 65536x65536px "$photo" no.tif
code raxel-export --size 60000x60000px -m rgb "$photo" no.tif
code raxel-export -m bilevel -c g4 "$photo" page.tif
