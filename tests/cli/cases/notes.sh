# What is worth telling without being asked; -v tells the rest, -q tells nothing.
photo=$SAMPLES/photo.png
raxel-export -m color256 "$photo" out.tif
raxel-export -v -m color256 "$photo" out.tif 2>&1 | sed 's/[0-9.]* s/N s/g; s/; [0-9]* bytes/; N bytes/'
printf 'P5\n1 1\n65535\nAB' >deep.pgm
raxel-export deep.pgm out.tif
raxel-export -q deep.pgm out.tif
raxel-export --json deep.pgm out.tif | sed 's/"seconds":{[^}]*}/"seconds":{}/'
