# SPDX-License-Identifier: MIT
# Every road writes the same file.
for name in photo page chart4 chart8 ramp; do
  raxel-export --verify -c lzw "$SAMPLES/$name.png" cell.tif
  raxel-export --verify -c lzw --via driver --dpi 96 "$SAMPLES/$name.png" driver.tif
  raxel-export --verify -c lzw --dpi 96 "$SAMPLES/$name.png" cell.tif
  cmp cell.tif driver.tif && echo "$name: same"
done
code raxel-export --via driver --dpi 200x100 "$SAMPLES/photo.png" out.tif
printf 'P5\n29 2\n255\n%058d' 0 >odd.pgm
code raxel-export --via driver --dpi 100 odd.pgm out.tif
code raxel-export --via metafile "$SAMPLES/photo.png" out.tif
ls
