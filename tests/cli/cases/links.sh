# SPDX-License-Identifier: MIT
# Links and files that are no regular ones.
in=$SAMPLES/chart4.png
raxel-export "$in" chart.tif
mkdir there
ln -s there/real.tif link.tif
ln -s link.tif chain.tif
code raxel-export "$in" chain.tif # to a file that is not there yet
cmp there/real.tif chart.tif && ls -l chain.tif link.tif | sed 's/.* \([^ ]* -> \)/\1/'
printf 'MM\0*\nold\n' >there/real.tif
code raxel-export --no-clobber "$in" link.tif
tail -1 there/real.tif
code raxel-export "$in" link.tif
cmp there/real.tif chart.tif
ln -s nowhere/out.tif lost.tif
code raxel-export "$in" lost.tif
ln -s round.tif circle.tif
ln -s circle.tif round.tif
code raxel-export "$in" round.tif
code raxel-export circle.tif out.tif
ln -s "$in" picture
code raxel-export picture out.tif
cmp out.tif chart.tif
mkfifo pipe
cat "$in" >pipe &
code raxel-export pipe out.tif
cmp out.tif chart.tif
cat pipe >piped.tif &
code raxel-export "$in" pipe
wait
cmp piped.tif chart.tif
raxel-export "$in" /dev/stdout | cmp - chart.tif
code raxel-export "$in" /dev/full
code raxel-export /dev/null out.tif
raxel-export --list >/dev/full || echo "exit $?"
raxel-export --dry-run --json "$in" >/dev/full || echo "exit $?"
ls -A . there
