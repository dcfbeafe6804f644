# Standard input and output.
raxel-export - piped.tif <"$SAMPLES/chart4.png"
cat "$SAMPLES/chart4.png" | raxel-export - - >out.tif
raxel-export "$SAMPLES/chart4.png" named.tif
cmp piped.tif named.tif && cmp out.tif named.tif && echo same
raxel-export -o third.tif - <"$SAMPLES/chart4.png" && cmp third.tif named.tif && echo same
code raxel-export - out.tif </dev/null
raxel-export --json "$SAMPLES/chart4.png" - 2>report >out.tif
cmp out.tif named.tif && grep -c '"command":"export"' report
