#!/bin/sh
# SPDX-License-Identifier: MIT
# build.sh SOURCE WORK: builds source and binary packages, in another folder, of the files that git knows in the
# first one, as they stand there.
set -eu
cd "$1"
mkdir -p "$2"
work=$(cd "$2" && pwd)
version=$(sed -n '1s/.*(\([0-9.]*\)-.*/\1/p' debian/changelog)
date=$(sed -n '/^ -- /{s/^ -- .*>  //p;q}' debian/changelog)
tree=raxel-$version
mkdir "$work/$tree"
git ls-files -z --cached --others --exclude-standard |
  tar --null --no-recursion --ignore-failed-read -T - -cf - | tar -xf - -C "$work/$tree"
cd "$work"
tar --sort=name --mtime="$date" --owner=0 --group=0 --numeric-owner --mode=u+rw,go+r,go-w \
  --exclude="$tree/debian" -cf - "$tree" | xz -6 -T1 >"raxel_$version.orig.tar.xz"
cd "$tree"
# Nothing of an earlier build: the compiler does all of it again.
CCACHE_DISABLE=1 DEB_BUILD_OPTIONS="parallel=$(nproc)" nice dpkg-buildpackage -us -uc
