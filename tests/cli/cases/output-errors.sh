# SPDX-License-Identifier: MIT
# Outputs that cannot be created (73) or written (74).
code raxel-export "$SAMPLES/chart4.png" missing/out.tif
echo text >plain
code raxel-export "$SAMPLES/chart4.png" plain/out.tif
mkdir folder
code raxel-export "$SAMPLES/chart4.png" folder
printf 'MM\0*\nold\n' >kept.tif
code raxel-export --no-clobber "$SAMPLES/chart4.png" kept.tif
tail -1 kept.tif
code raxel-export "$SAMPLES/chart4.png" /dev/full
(ulimit -f 30; code raxel-export "$SAMPLES/chart4.png" kept.tif)
tail -1 kept.tif
ls -A
