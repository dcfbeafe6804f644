#!/bin/sh
# SPDX-License-Identifier: MIT
# needs.sh LIBRARY: the library asks the loader for the C++ standard library, the maths library, the C
# library and what these bring along, and for nothing else; it carries no search path of its own.
set -eu
LC_ALL=C readelf --dynamic --wide "$1" | awk '
  /\(NEEDED\)/ {
    name = $NF; gsub(/[][]/, "", name); seen = 1
    if (name !~ /^(libstdc\+\+\.so\.6|libm\.so\.6|libgcc_s\.so\.1|libc\.so\.6|ld[a-z0-9-]*\.so\.[12])$/) {
      print "needs " name; bad = 1
    }
  }
  /\((RPATH|RUNPATH|TEXTREL)\)/ { print; bad = 1 }
  END { if (!seen) print "no needed library was found"; exit bad || !seen }'
