# SPDX-License-Identifier: MIT
# Command lines that make no sense: exit 64, and a sentence that says what to do.
code raxel-export
code raxel-export in.png
code raxel-export a.png b.png c.tif
code raxel-export --mode sepia in.png out.tif
code raxel-export --compress zip in.png out.tif
code raxel-export --dpi 0.5 in.png out.tif
code raxel-export --size 6x4ft in.png out.tif
code raxel-export --nonsense in.png out.tif
code raxel-export --save in.png out.tif
code raxel-export -d here a/x.png b/x.png
# An empty name is a fault, and not the last input's leave to be written over.
for name in a b; do echo $name >$name.png; done
code raxel-export -d "" a.png b.png
code raxel-export -o "" a.png b.png
code raxel-export --profile "" a.png b.tif
cat b.png
rm a.png b.png
ls
