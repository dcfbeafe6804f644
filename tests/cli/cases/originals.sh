# SPDX-License-Identifier: MIT
# An output never is one of the inputs, under whatever name, and --force does not help.
cp "$SAMPLES/chart4.png" mine.png
cp "$SAMPLES/photo.png" other.png
same() { cmp "$SAMPLES/chart4.png" mine.png && cmp "$SAMPLES/photo.png" other.png; }
code raxel-export -m bilevel mine.png mine.png
code raxel-export -f mine.png ./mine.png
code raxel-export --dry-run mine.png mine.png
ln -s mine.png link.tif
ln mine.png hard.tif
code raxel-export -f mine.png link.tif
code raxel-export -f hard.tif mine.png
code raxel-export -f - mine.png <mine.png
raxel-export -f mine.png - 1<>mine.png || echo "exit $?"
same
# As "raxel-export *.png" does with two files.
code raxel-export mine.png other.png
code raxel-export -n mine.png other.png
same
echo letter >letter.txt
code raxel-export mine.png letter.txt
cat letter.txt
code raxel-export -f mine.png letter.txt
raxel-export --inspect letter.txt | head -1
# In a batch every input counts; the rest is written.
mkdir in
cp mine.png in/a.png
raxel-export mine.png in/b.tif
cp in/b.tif b.tif
ln -s b.tif in/a.tif
code raxel-export -f -d in in/a.png in/b.tif
ln -s ../link.tif in/c.tif
cp mine.png in/c.png
for jobs in 1 2; do
  rm -f in/d.tif
  cp mine.png in/d.png
  code raxel-export -q -j $jobs -d in in/c.png in/d.png mine.png
  raxel-export --inspect in/d.tif | head -1
done
cmp b.tif in/b.tif
same
