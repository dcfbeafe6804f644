# SPDX-License-Identifier: MIT
# What is told of pictures that are handed over as they are: the numbers of the file.
for name in chart8 photo ramp; do
  raxel-export --as-is --dry-run -m grey16 -c lzw "$SAMPLES/$name.png"
  raxel-export --as-is -m grey16 -c lzw "$SAMPLES/$name.png" out.tif
  wc -c <out.tif
  raxel-export --inspect out.tif | grep -E 'ImageWidth|ImageLength|BitsPerSample'
done
raxel-export --as-is -v "$SAMPLES/photo.png" out.tif 2>&1 | sed 's/[0-9]\.[0-9]* s/T s/g'
raxel-export --as-is --json "$SAMPLES/photo.png" out.tif | grep -o '"file":{[^}]*}'
raxel-export --as-is --json --dry-run -m grey256 "$SAMPLES/chart8.png" | grep -o '"file":{[^}]*}'
# Rows are counted in 16 bits, and an odd number of them is made even.
{ printf 'P4\n8 65535\n'; head -c 65535 /dev/zero; } >tall.pbm
code raxel-export --as-is tall.pbm out.tif
code raxel-export --as-is --dry-run tall.pbm
# Where the filter's own conversions exchange red and blue, it is said: a red pixel becomes a blue one.
printf 'P6\n2 2\n255\n\377\0\0\377\0\0\377\0\0\377\0\0' >red.ppm
raxel-export -m color256 red.ppm table.tif
color() { /usr/bin/python3 -c 'import PIL.Image; print(PIL.Image.open("out.tif").convert("RGB").getpixel((0, 0)))'; }
for mode in rgb color256 color16 color8 grey256 grey16 bilevel; do
  for picture in red.ppm table.tif; do
    echo "$picture $mode" | tee /dev/stderr
    raxel-export --as-is -m $mode $picture out.tif
    case $mode in color* | rgb) color ;; esac
  done
done
printf 'P5\n2 2\n255\nabcd' >grey.pgm
raxel-export --as-is -m rgb grey.pgm out.tif
raxel-export --as-is -m color16 grey.pgm out.tif
printf 'P4\n70000 1\n' >wide.pbm
head -c 8750 /dev/zero >>wide.pbm
code raxel-export --as-is wide.pbm out.tif
