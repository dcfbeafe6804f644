raxel-export -c lzw "$SAMPLES/chart4.png" chart4.tif
code raxel-export --inspect chart4.tif
raxel-export -m bilevel -c t6 --layout tiles "$SAMPLES/photo.png" tiles.tif
code raxel-export --inspect tiles.tif
head -c 400 chart4.tif >cut.tif
code raxel-export --inspect cut.tif
code raxel-export --inspect "$SAMPLES/chart4.png" missing.tif
code raxel-export --inspect --json chart4.tif cut.tif
