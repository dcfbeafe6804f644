#!/bin/sh
# SPDX-License-Identifier: MIT
# starts_fast.sh FILE...: what starts with every picture asks the loader for the C and the maths library alone, and
# for few names in them. (To load the C++ library and look its names up takes longer than a small export; libraries
# of pictures are loaded when a picture of theirs comes.)
set -eu
for file; do
  LC_ALL=C readelf --dynamic --relocs --wide "$file" | awk -v file="$file" '
    /\(NEEDED\)/ {
      name = $NF; gsub(/[][]/, "", name); seen = 1
      if (name !~ /^(libm\.so\.6|libc\.so\.6|ld[a-z0-9-]*\.so\.[12])$/) { print file " needs " name; bad = 1 }
    }
    / R_[A-Z0-9_]+_(GLOB_DAT|JUMP_SLO?T?|64) / { ++looked }
    END {
      if (looked > 500) { print file " has " looked " names looked up"; bad = 1 }
      if (!seen || !looked) { print file ": no library or no name was found"; bad = 1 }
      exit bad
    }'
done
