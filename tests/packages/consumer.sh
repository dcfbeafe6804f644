#!/bin/sh
# SPDX-License-Identifier: MIT
# consumer.sh ROAD SOURCE BUILD WORK: builds the small application beside this by one road, runs it, and looks
# at what it says and writes.
#
#   package       find_package, in what `cmake --install` has installed
#   pkgconfig     cc $(pkg-config ...), there
#   subdirectory  add_subdirectory
#   fetch         FetchContent
#   filter-alone  find_package of an installation without libraxelhost
set -eu
road=$1 source=$2 build=$3 work=$4
here=$(cd "$(dirname "$0")" && pwd)
unset RAXEL_LIBRARY
rm -rf "$work"
mkdir -p "$work/place"
cd "$work"

quietly() { "$@" >log 2>&1 </dev/null || { tail -30 log; echo "failed: $*"; exit 1; }; }
same() { [ "$2" = "$3" ] || { echo "$1: \"$2\" instead of \"$3\""; exit 1; }; }

# The optimiser is nobody's subject here.
configure() { quietly cmake -G Ninja -S "$here/consumer" -B "$work/made" -DCMAKE_BUILD_TYPE=None "$@"; }
part=$(sed -n 's/^#define RAXEL_HOST_VERSION_[A-Z]* \([0-9]*\)$/\1/p' "$source/include/raxel/host_export.h" | tr '\n' .)
version=${part%.}

loads() { same "$road" "$("$1")" "loads 0x02000005"; }
exports() {
  same "$road" "$("$1" "$work/four.tif")" "exports $version"
  # Width and height of 2, in an even file.
  same "$road: the file begins" "$(head -c 4 "$work/four.tif" | od -An -tx1 | tr -d ' ')" 49492a00
}

case $road in
  package | pkgconfig) quietly cmake --install "$build" --prefix "$work/place" ;;
esac
case $road in
  package)
    configure -DROAD=package -DCOMPONENTS=host -DCMAKE_PREFIX_PATH="$work/place"
    quietly cmake --build made
    loads made/loads
    exports made/exports
    ! cmake -S "$here/consumer" -B other -DROAD=package -DCOMPONENTS=other -DCMAKE_PREFIX_PATH="$work/place" >log 2>&1 ||
      { echo "a component that there is not was found"; exit 1; }
    ;;
  pkgconfig)
    PKG_CONFIG_PATH=$(dirname "$(find "$work/place" -name raxel.pc)")
    export PKG_CONFIG_PATH
    for module in raxel raxelhost; do same "version of $module" "$(pkg-config --modversion $module)" "$version"; done
    cc=${CC:-cc}
    quietly $cc -std=c99 "$here/consumer/exports.c" $(pkg-config --cflags --libs raxelhost) -o exports
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir raxelhost)
    export LD_LIBRARY_PATH
    exports ./exports
    quietly $cc -std=gnu99 "$here/consumer/loads.c" $(pkg-config --cflags raxel) \
      -DFILTER="\"$(pkg-config --variable=filter raxel)\"" -ldl -o loads
    loads ./loads
    # The examples, as far as they are installed here with the documents.
    printf 'P6 2 2 255\n123456789012' >in.ppm
    filter=$(pkg-config --variable=filter raxel)
    for example in $(find "$work/place" -path '*/doc/raxel/examples/*.c'); do
      name=$(basename "$example" .c)
      quietly $cc -std=c99 -D_POSIX_C_SOURCE=200809L "$example" $(pkg-config --cflags --libs raxelhost) -ldl -o "$name"
      case $name in write) first=in.ppm ;; *) first=$filter ;; esac
      quietly "./$name" "$first" "$name.tif"
      built="${built-}$name "
    done
    for example in "$source"/examples/*.c; do
      case " ${built-}" in
        *" $(basename "$example" .c) "*) ;;
        *) echo "not installed: $example"; exit 1 ;;
      esac
    done
    ;;
  subdirectory)
    configure -DROAD=subdirectory -DSOURCE="$source"
    # To build libraxelhost once more takes a minute, which `./dev package --try` has.
    if [ -n "${RAXEL_WHOLE-}" ]; then
      quietly cmake --build made --target exports
      exports made/exports
    fi
    quietly cmake --build made --target loads CMakeFiles/exports.dir/exports.c.o
    loads made/loads
    # What is installed is the application's affair.
    cmake --install made --prefix "$work/place" >log 2>&1 || { tail -30 log; echo "raxel installs itself"; exit 1; }
    same "files installed" "$(find "$work/place" -type f)" ""
    ;;
  fetch)
    # What comes of it is add_subdirectory: here the filter alone, and that the target of libraxelhost is found.
    configure -DROAD=fetch -DSOURCE="$source"
    quietly cmake --build made --target loads CMakeFiles/exports.dir/exports.c.o
    loads made/loads
    ;;
  filter-alone)
    # Only what the filter installs, from the build that is there.
    quietly cmake -G Ninja -S "$source" -B alone -DRAXEL_HOST=OFF -DRAXEL_TESTS=OFF -DCMAKE_BUILD_TYPE=Debug \
      -DCMAKE_INSTALL_LIBDIR=lib/some-machine
    quietly cmake --build alone --target raxel-manuals
    cp "$build/raxel.so" alone/
    quietly cmake --install alone --prefix "$work/place"
    same "host headers" "$(find "$work/place/include" -name 'host*')" ""
    configure -DROAD=package -DCMAKE_PREFIX_PATH="$work/place" \
      -Draxel_DIR="$work/place/lib/some-machine/cmake/raxel"
    quietly cmake --build made
    loads made/loads
    [ ! -e made/exports ] || { echo "raxel::host without libraxelhost"; exit 1; }
    ;;
  *)
    echo "no road is called $road"
    exit 2
    ;;
esac
