# SPDX-License-Identifier: MIT
# Tiles are read as they are written.
for size in 61x40px 600x400px 513x300px; do
  raxel-export --size $size -m bilevel -c t6 --layout tiles "$SAMPLES/photo.png" tiles.tif
  raxel-export --size $size -m bilevel -c t6 "$SAMPLES/photo.png" strips.tif
  raxel-export -c lzw tiles.tif from-tiles.tif
  raxel-export -c lzw strips.tif from-strips.tif
  cmp from-tiles.tif from-strips.tif && echo "$size: same"
done
raxel-export --dry-run tiles.tif
