# SPDX-License-Identifier: MIT
# Names that a shell or a terminal could take for something else.
in=$SAMPLES/chart4.png
raxel-export "$in" chart.tif
try() { code raxel-export "$@"; }
cp "$in" ./-m.png
try -- -m.png -out.tif && cmp ./-out.tif chart.tif
try -o -o.tif -- -m.png && cmp ./-o.tif chart.tif
cp "$in" $'two\nlines \e[31m.png'
try $'two\nlines \e[31m.png' $'two\nlines.tif' && cmp $'two\nlines.tif' chart.tif
try $'not\nthere \e[31m.png' out.tif
try --dry-run $'two\nlines \e[31m.png'
cp "$in" 'Größe 水.png'
try 'Größe 水.png' 'Größe 水.tif' && cmp 'Größe 水.tif' chart.tif
cp "$in" $'\377\376.png'
try --json -d . $'\377\376.png' | head -1
cmp $'\377\376.tif' chart.tif
ls -A | cat -v | sort
