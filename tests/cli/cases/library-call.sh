# SPDX-License-Identifier: MIT
# A program of a few lines writes what the command writes, built and run against what is installed.
build=$(dirname "$(command -v raxel-export)")
cmake --install "$build" --prefix "$PWD/place" >log 2>&1 || cat log
code_lines() { sed -e 's|/\*.*\*/||' -e '/\/\*/,/\*\//d' "$1" | grep -c '[^ ]'; }
[ "$(code_lines "$EXAMPLES/write.c")" -le 25 ] && echo "short"
export PKG_CONFIG_PATH=$PWD/place/lib/pkgconfig LD_LIBRARY_PATH=$PWD/place/lib
unset RAXEL_LIBRARY
# A program whose libraries were built with the sanitizers has to be linked with them.
sanitizers=
! grep -q __asan_init place/lib/libraxelhost.so.0 || sanitizers=-fsanitize=address,undefined
cc -std=c99 -pedantic -Wall -Wextra -Werror $sanitizers "$EXAMPLES/write.c" $(pkg-config --cflags --libs raxelhost) -o write
printf 'P6\n3 2\n255\nrRgGbBcCmMyYkKwWgG' >in.ppm
./write in.ppm out.tif
raxel-export -c lzw in.ppm command.tif
cmp out.tif command.tif && echo "same"
raxel-export --inspect out.tif | tail -1
# It says what is wrong.
code ./write in.ppm none/out.tif
# Programs link to the library by the name that stays when its interface does.
readelf -d write | grep -o 'libraxelhost[^]]*'
# And it brings no names of others along.
nm -D --defined-only place/lib/libraxelhost.so.0 | awk '$3 !~ /^(raxelHost[A-Z]|RAXELHOST_0)/ { print "exports " $3 }'
