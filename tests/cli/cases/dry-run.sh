# SPDX-License-Identifier: MIT
for name in photo page chart4 chart8 ramp; do raxel-export --dry-run "$SAMPLES/$name.png"; done
raxel-export --dry-run -m bilevel -c g4 --dpi 200x100 "$SAMPLES/photo.png"
raxel-export --dry-run --size 4x4in --dpi 300 "$SAMPLES/photo.png" out.tif
raxel-export --dry-run --json -m color256 "$SAMPLES/photo.png" | sed 's/"seconds":{[^}]*}/"seconds":{}/'
ls
# Each page of a file of pages is told by itself.
raxel-export --dry-run --pages "$SAMPLES/chart4.png" "$SAMPLES/ramp.png" out.tif
raxel-export -v --pages "$SAMPLES/chart4.png" "$SAMPLES/ramp.png" out.tif 2>&1 | sed 's/; .* s$//' >&2
