# SPDX-License-Identifier: MIT
raxel-export -c lzw "$SAMPLES/chart4.png" chart4.tif
code raxel-export --inspect chart4.tif
raxel-export --as-is -m bilevel -c t6 --layout tiles "$SAMPLES/photo.png" tiles.tif
code raxel-export --inspect tiles.tif
raxel-export --as-is -m color16 -c lzw "$SAMPLES/chart4.png" as-is.tif
head -c 400 as-is.tif >cut.tif
code raxel-export --inspect cut.tif
code raxel-export --inspect "$SAMPLES/chart4.png" missing.tif
code raxel-export --inspect --json chart4.tif cut.tif
