#!/bin/sh
# SPDX-License-Identifier: MIT
# api.sh SOURCE FOLDER: the reference of the headers is made without a warning, and says what they say.
set -eu
command -v doxygen >/dev/null || { echo "doxygen is not installed"; exit 77; }
cd "$1"
rm -rf "$2"
mkdir -p "$2"
{ cat docs/api/Doxyfile; echo "OUTPUT_DIRECTORY = $2"; } | doxygen - >"$2/said" 2>&1 || { cat "$2/said"; exit 1; }
[ ! -s "$2/said" ] || { cat "$2/said"; exit 1; }
# A function, what it does; a record, its member and what that is; a page for every header.
contains() { sed 's/<[^>]*>//g' "$1" | tr -s '\n ' ' ' | grep -qF "$2" || { echo "$1 lacks: $2"; exit 1; }; }
contains "$2/html/host__picture_8h.html" "Looks at no pixel, so it is cheap enough to call after every keystroke."
contains "$2/html/structRaxelPicture.html" "bytes from one row to the row below"
for header in include/raxel/*.h; do
  contains "$2/html/files.html" "$(basename "$header")"
done
