#!/bin/sh
# SPDX-License-Identifier: MIT
# copies.sh PROGRAM: the program holds the library's variables itself, by copy relocations; otherwise its
# tests of sharing prove less than they say.
set -eu
LC_ALL=C readelf --relocs --wide "$1" | awk '
  $3 ~ /^R_[A-Z0-9_]*COPY$/ { name = $5; sub(/@.*/, "", name); copied[name] }
  END {
    count = split("lpCommon hCommon _debug_color_res lpRaster hRaster szFilter FilterExportTable one zero", wanted)
    for (i = 1; i <= count; ++i) if (!(wanted[i] in copied)) { print wanted[i] " is not copied"; bad = 1 }
    exit bad
  }'
