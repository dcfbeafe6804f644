#!/bin/sh
# SPDX-License-Identifier: MIT
# compare.sh LIBRARY HEADER DESCRIPTION INCLUDE [--update]: compares what programs are compiled against, every
# exported name with its type and every record behind it, with the description that is kept. A name that is
# exported and not declared does not compile. Ends with 77 where abidiff is not installed.
set -eu
library=$1 header=$2 description=$3 include=$4 update=${5:-}
command -v abidiff >/dev/null && command -v abidw >/dev/null || { echo "abigail-tools is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A pointer to each, since the types of a library built without debug information are in its headers alone;
# and one of each record and enumeration, for those that go through a pointer to anything.
cc=${CC:-cc}
echo "#include \"$header\"" >"$work/interface.c"
$cc -std=gnu99 -E -P -I"$include" "$work/interface.c" >"$work/header.i"
{
  nm -D --defined-only "$library" | awk '$2 ~ /[TBDRVW]/ { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort |
    sed 's/.*/__typeof__(\&&) interface_of_&;/; s/&&/\&/'
  sed -n 's/^} \([A-Z][A-Za-z0-9]*\);$/\1 type_\1;/p; s/^enum \([A-Z][A-Za-z0-9]*\) {.*/enum \1 type_\1;/p' "$work/header.i"
} >>"$work/interface.c"
grep -q interface_of_ "$work/interface.c" || { echo "$library exports nothing"; exit 1; }
$cc -std=gnu99 -g -O0 -shared -fPIC -I"$include" "$work/interface.c" -o "$work/interface.so"
abidw --no-show-locs --no-corpus-path --no-comp-dir-path "$work/interface.so" | sed "s|$work/||" >"$work/now.abi"
if [ "$update" = --update ]; then
  cp "$work/now.abi" "$description"
elif ! abidiff "$description" "$work/now.abi"; then
  echo "The interface has changed. What existing programs cannot bear needs another SOVERSION; a field at"
  echo "the end of a record that begins with its size does not, nor does an enumerator at the end of its own."
  echo "Keep the new description: ./dev interface"
  exit 1
fi
