# SPDX-License-Identifier: MIT
# Standard input and output.
raxel-export - piped.tif <"$SAMPLES/chart4.png"
cat "$SAMPLES/chart4.png" | raxel-export - - >out.tif
raxel-export "$SAMPLES/chart4.png" named.tif
cmp piped.tif named.tif && cmp out.tif named.tif && echo same
raxel-export -o third.tif - <"$SAMPLES/chart4.png" && cmp third.tif named.tif && echo same
code raxel-export - out.tif </dev/null
raxel-export --json "$SAMPLES/chart4.png" - 2>report >out.tif
cmp out.tif named.tif && grep -c '"command":"export"' report
# The report is the whole of standard error then, and never goes into the picture.
printf 'P5\n1 1\n65535\n\0\7' >deep.pgm
raxel-export --json deep.pgm - 2>report >out.tif
head -c 20 report && echo && grep -c note report
code raxel-export --json --library ./nowhere.so deep.pgm - 2>report
cat report
code raxel-export --json --nonsense deep.pgm - 2>report
cat report
code raxel-export --json broken.png - 2>report
cat report
# What begins like no picture is given up long before its end.
head -c 10000000 /dev/zero | raxel-export - endless.tif
echo "exits ${PIPESTATUS[*]}"
