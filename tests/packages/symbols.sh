#!/bin/sh
# SPDX-License-Identifier: MIT
# symbols.sh LIBRARY SYMBOLS [--update VERSION]: the package's list of symbols is what the library exports, name
# by name; or becomes so, new names standing there with the version that brings them.
set -eu
library=$1 list=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
nm -D --defined-only "$library" | awk '{ name = $3 == "RAXELHOST_0" ? $3 "@RAXELHOST_0" : $3; sub(/@@/, "@", name); print name }' |
  LC_ALL=C sort >"$work/exported"
sed -n 's/^ \([^ ]*@[^ ]*\) [0-9.]*$/\1/p' "$list" | LC_ALL=C sort >"$work/listed"
test "$(wc -l <"$work/exported")" -gt 10 || { echo "$library exports nothing"; exit 1; }
if [ "${3:-}" = --update ]; then
  {
    head -1 "$list"
    while read -r name; do
      old=$(grep -F " $name " "$list" || :)
      echo "${old:- $name $4}"
    done <"$work/exported"
  } >"$work/new"
  cp "$work/new" "$list"
else
  diff "$work/listed" "$work/exported" || { echo "$list is not what is exported: ./dev interface"; exit 1; }
fi
