# SPDX-License-Identifier: MIT
# Libraries that will not do: exit 70, and a message that names what is wrong.
in=$SAMPLES/chart4.png
code raxel-export --library missing.so "$in" out.tif
echo 'no library' >text.so
code raxel-export --library text.so "$in" out.tif
code raxel-export --library "$FAKES/libother_version.so" "$in" out.tif
code raxel-export --library "$FAKES/libno_entry.so" "$in" out.tif
code raxel-export --library "$FAKES/libno_row.so" "$in" out.tif
code raxel-export --library /usr/lib/x86_64-linux-gnu/libz.so.1 "$in" out.tif
cp "$(command -v raxel-export)" alone
code ./alone "$in" out.tif
ls
# What is loaded when it is needed.
mkdir lib
: >lib/libtiff.so.6
LD_LIBRARY_PATH=lib code raxel-export --verify "$in" out.tif
LD_LIBRARY_PATH=lib raxel-export "$in" out.tif
