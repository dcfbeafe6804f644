# SPDX-License-Identifier: MIT
# A host in C on top of libraxelhost writes what the command writes.
build=$(dirname "$(command -v raxel-export)")
for mode in rgb color256 color16 color8 grey256 grey16 bilevel; do
  "$(find "$build" -name example_prepared -type f | head -1)" "$build/raxel.so" $mode.tif $mode lzw >notes
  raxel-export --inspect $mode.tif >report && tail -1 report
done
raxel-export --inspect rgb.tif | head -14
