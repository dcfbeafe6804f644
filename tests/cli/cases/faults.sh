# SPDX-License-Identifier: MIT
# A library that errs on the way of a picture: the old file stays, whatever happens.
in=$SAMPLES/chart4.png
printf 'MM\0*\nold\n' >kept.tif
faulty() { FAULT=$1 code raxel-export --library "$FAKES/libfaulty.so" "${@:2}" kept.tif; }
faulty nothing "$in"
faulty code "$in"
faulty pixel --verify "$in"
faulty pixel --verify -m rgb -c lzw "$in"
tail -1 kept.tif
# A process that dies leaves its temporary to the next one.
faulty crash "$in"
tail -1 kept.tif
ls -A
faulty none --verify "$in"
ls -A
tail -2 <(raxel-export --inspect kept.tif)
# A changed pixel is found in every mode and compression.
for mode in bilevel grey16 grey256 color8 color16 color256 rgb; do
  for compression in none packbits lzw huffman t4 t6; do
    case $mode-$compression in bilevel-*) ;; *-huffman | *-t4 | *-t6) continue ;; esac
    faulty pixel --verify -m $mode -c $compression "$in" 2>>seen | tr '\n' ' '
  done
done
echo
faulty pixel --verify -m bilevel -c t6 --layout tiles "$in" 2>>seen
grep -c 'the check failed: row 239 differs from column 0 on; the file is not kept' seen
