# SPDX-License-Identifier: MIT
# What is installed works from where it lies.
build=$(dirname "$(command -v raxel-export)")
cmake --install "$build" --prefix "$PWD/place" >log 2>&1 || cat log
(cd place && find . -type f | grep -v 'include/raxel/' | sort)
ls place/include/raxel | grep -cv '\.h$'
code place/bin/raxel-export --verify -c lzw "$SAMPLES/chart4.png" out.tif
raxel-export -c lzw "$SAMPLES/chart4.png" here.tif
sed 's/2\.[0-9.]*/VERSION/' place/lib/pkgconfig/raxelhost.pc
ls place/lib/pkgconfig/../../include/raxel/host.h
cmp out.tif here.tif
