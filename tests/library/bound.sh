#!/bin/sh
# SPDX-License-Identifier: MIT
# bound.sh LIBRARY NAMES: inside the library every call of an exported function is bound to the library's
# own: no relocation names one. The variables stay open, so that a host can hold them.
set -eu
LC_ALL=C readelf --relocs --wide "$1" | awk '
  FNR == NR { if ($1 == "function") functions[$2]; next }
  { name = $5; sub(/@.*/, "", name) }
  name in functions { print "a host could put its own " name " in front of the library'\''s"; bad = 1 }
  name == "lpCommon" { open = 1 }
  END { if (!open) print "lpCommon is bound, a host cannot hold it"; exit bad || !open }' "$2" -
