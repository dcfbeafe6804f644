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
