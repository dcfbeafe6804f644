# SPDX-License-Identifier: MIT
# Outputs that are something else by another name: nothing that is read is replaced, and nothing is told of that is not there.
cp "$SAMPLES/chart4.png" a.png
cp "$SAMPLES/chart8.png" b.png
# Links that lead to one file.
mkdir to
raxel-export -q a.png to/b.tif
ln -s b.tif to/a.tif
code raxel-export -q a.png b.png -d to
# What the options name is read, too.
raxel-export -q --mode color16 a.png palette.tif
code raxel-export -q b.png -o palette.tif --palette palette.tif --mode color16
# A manifest tells of files, and of others than itself.
mkfifo pipe
code raxel-export -q a.png -o pipe --manifest lines
code raxel-export -q a.png -o /dev/zero --manifest lines
code raxel-export -q a.png -o lines.tif --manifest lines.tif
wc -c <lines.tif
ls lines
# Nobody calls himself as often as a line is deep.
python3 -c 'print("{\"target\":" + "[" * 200000 + "]" * 200000 + "}")' >lines
code raxel-export -q a.png -o a.tif --manifest lines --resume
# A file without a name is written as it is, all of it.
raxel-export -q a.png whole.tif
head -c 100000 /dev/zero >gone
exec 3<>gone
rm gone
code raxel-export -q a.png -o /dev/fd/3 --force
cmp /dev/fd/3 whole.tif && echo the same
exec 3>&-
# One that has only another name is as well, and not the file that would be called as the system says.
mkdir links
cp whole.tif links/gone
exec 3<>links/gone
ln links/gone links/here
rm links/gone
code raxel-export -q b.png -o /dev/fd/3
raxel-export -q b.png other.tif
cmp links/here other.tif && ls links
exec 3>&-
ls
# What nobody can read was not told.
raxel-export --dry-run -j 2 a.png b.png -d other >/dev/full
echo "exit $?"
