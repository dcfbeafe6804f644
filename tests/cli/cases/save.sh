# SPDX-License-Identifier: MIT
# --save stores the settings of the command line, and no others; --dry-run stores nothing.
printf '[own]\nDriver=RAXEL.1\nBitmap Mode=222\n' >own.ini
photo=$SAMPLES/photo.png
raxel-export --dry-run --save --profile own.ini --section own -m grey16 "$photo"
cat own.ini
raxel-export --save --profile own.ini --section own -m grey16 -c lzw --dpi 200x100 --color-treatment invert "$photo" out.tif
cat own.ini
raxel-export --save --profile own.ini --section own --set 9=143 --set 14=1.5 -c none "$photo" out.tif
cat own.ini
code raxel-export --save --profile own.ini --section own -c g4 "$photo" out.tif
grep Compression own.ini
ls -A
# A size that no profile holds is refused before anything is done.
printf 'MM\0*\nold\n' >out.tif; cp own.ini before.ini
code raxel-export --save --profile own.ini --section own -c lzw --size 30in --dpi 32 "$photo" out.tif
tail -1 out.tif; cmp own.ini before.ini
# What will not count next time is said.
raxel-export --save --profile own.ini --section own --set 18=3 --size 4x3 --layout strips "$photo" out.tif
raxel-export --save --profile own.ini --section own --size 96x64px --set 19=3 --dpi 96 "$photo" out.tif
printf '[ready]\nDriver=RAXEL.1\nResolution Mode=310\nSize Mode=603\n' >ready.ini
raxel-export --save --profile ready.ini --section ready --set 14=1.5 --dpi 96 "$photo" out.tif
cat ready.ini
# A section that is not there yet is made, and counts at once.
printf '[other]\nDriver=RAXEL.1\n' >sections.ini
raxel-export --dry-run --save --profile sections.ini --section made -m grey16 "$photo"
cat sections.ini
raxel-export --save --profile sections.ini --section made -m grey16 -c lzw --dpi 100 --set 14=1.5 "$photo" out.tif
raxel-export --save --profile sections.ini --section "" -m grey16 "$photo" out.tif || echo "exit $?"
code raxel-export --save --profile sections.ini -m grey16 "$photo" out.tif
code raxel-export --profile sections.ini --section none "$photo" out.tif
code raxel-export --save --profile missing.ini --section made "$photo" out.tif
printf '[none]\nCompression Mode=230\n' >>sections.ini
raxel-export --save --profile sections.ini --section none -m bilevel "$photo" out.tif
cat sections.ini
raxel-export --dry-run --profile sections.ini --section made "$photo"
raxel-export --dry-run --profile sections.ini --section none "$photo"
rm sections.ini
# A profile where nothing can be made beside it: the picture is written, and the settings are not.
SETTINGS=$'\n[own]\nDriver=RAXEL.1\n' code raxel-export --save --profile /proc/self/environ --section own -m grey16 "$photo" kept.tif
raxel-export --inspect kept.tif | head -1
rm before.ini ready.ini kept.tif
# Exports side by side do not lose each other's keys.
printf '[own]\nDriver=RAXEL.1\n' >own.ini
mkdir in to
for n in $(seq 40); do printf 'P5\n2 2\n255\nabcd' >in/$n.pgm; done
code raxel-export -q -j 16 -d to --save --profile own.ini --section own -m grey16 -c lzw --dpi 100 in/*.pgm
cat own.ini
