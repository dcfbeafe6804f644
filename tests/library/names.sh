#!/bin/sh
# SPDX-License-Identifier: MIT
# names.sh LIBRARY NAMES MAP: the library's dynamic symbols are exactly those of NAMES, of the same kind,
# and MAP (the linker's version script) lists the same.
set -eu
library=$1 names=$2 map=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

grep -v '^#' "$names" | tr -s ' ' | sort >"$work/wanted"
count=$(wc -l <"$work/wanted")
[ "$count" -eq 243 ] || { echo "names.txt lists $count names, not 243"; exit 1; }

# Num: Value Size Type Bind Vis Ndx Name
readelf --dyn-syms --wide "$library" |
  awk '$1 ~ /^[0-9]+:$/ && $7 != "UND" && $7 != "ABS" && $5 != "LOCAL" {
         sub(/@.*/, "", $8)
         kind = $4 == "FUNC" ? "function" : $4 == "OBJECT" ? "data" : $4
         print kind, $8 ($5 == "GLOBAL" ? "" : " " $5) ($6 == "DEFAULT" ? "" : " " $6) }' |
  sort >"$work/exported"
sed -n 's/^ *\([A-Za-z_0-9]*\);$/\1/p' "$map" | sort >"$work/mapped"
sed 's/^[^ ]* //' "$work/wanted" | sort >"$work/bare"

status=0
diff -u "$work/wanted" "$work/exported" || { echo "^ names.txt (-) against $library (+)"; status=1; }
diff -u "$work/bare" "$work/mapped" || { echo "^ names.txt (-) against exports.map (+)"; status=1; }
exit $status
