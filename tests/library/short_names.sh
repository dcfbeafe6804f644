#!/bin/sh
# SPDX-License-Identifier: MIT
# short_names.sh COMPILER INCLUDE NAMES: the headers beside an application that has the same names. Each name
# is declared as something else in front of the headers, which does not compile where they declare it too.
#
# raxel/host.h declares none of the library's names; the library's headers declare no short one where the
# application defines RAXEL_NO_SHORT_NAMES, and otherwise those that each says where it leaves them out.
set -eu
cc=$1 include=$2 names=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bad=0
fault() { echo "$*"; bad=1; }

# compiles HEADER OPTION NAME...: whether the header stands beside other things of those names.
compiles() {
  header=$1 option=$2
  shift 2
  {
    printf 'struct application *%s;\n' "$@"
    echo "#include \"$header\""
  } >"$work/program.c"
  "$cc" -std=c99 -fsyntax-only "$option" -I"$include" "$work/program.c" 2>"$work/errors"
}

all=$(awk '/^(function|data)/ { print $2 }' "$names")
test "$(echo "$all" | wc -l)" -gt 200 || fault "$names is not the list of names"
compiles raxel/host.h -w $all || { fault "raxel/host.h declares names of the library:"; head -5 "$work/errors"; }

short=$(sed -nE 's,^#ifndef RAXEL_NO_SHORT_NAMES  // (.*)$,\1,p' "$include"/raxel/*.h | tr -d ' ' | tr ',' '\n' | LC_ALL=C sort)
compiles raxel/raxel.h -DRAXEL_NO_SHORT_NAMES $short ||
  { fault "a name is left with RAXEL_NO_SHORT_NAMES:"; head -5 "$work/errors"; }
# What the headers say is what there is: each of those names, and every other of small letters alone.
for name in $short; do
  ! compiles raxel/raxel.h -w "$name" || fault "$name is said to be declared, and is not"
  echo "$all" | grep -qx "$name" || fault "$name is not exported"
done
for name in $(echo "$all" | grep -x '[a-z]*'); do
  echo "$short" | grep -qx "$name" || fault "$name: no header says that it declares this short name"
done
# Nothing else goes with them.
declared() {
  echo '#include "raxel/raxel.h"' | "$cc" -std=c99 -E -P "$@" -I"$include" - |
    grep -oE '[A-Za-z_][A-Za-z_0-9]*[[(;]' | tr -d '[(;' | LC_ALL=C sort -u
}
declared -UNONE >"$work/full"
declared -DRAXEL_NO_SHORT_NAMES >"$work/less"
echo "$all" | LC_ALL=C sort >"$work/all"
gone=$(LC_ALL=C comm -23 "$work/full" "$work/less" | LC_ALL=C comm -12 - "$work/all" | xargs)
test "$gone" = "$(echo $short)" || fault "with RAXEL_NO_SHORT_NAMES these go: $gone"
# Each header says what it declares itself.
for header in "$include"/raxel/*.h; do
  for name in $(sed -nE 's,^#ifndef RAXEL_NO_SHORT_NAMES  // (.*)$,\1,p' "$header" | tr ',' ' '); do
    grep -qE "^RAXEL_EXPORT .*[ *]$name[[(;]" "$header" || fault "$header says $name and does not declare it"
  done
done
exit $bad
