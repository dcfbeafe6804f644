#!/bin/sh
# SPDX-License-Identifier: MIT
# try.sh SOURCE PACKAGES: a clean Debian gets the tools that a programmer has, then the packages and what they
# depend on; the tests that come with them run there; then they are purged, and the file system is compared with
# what it was. Needs root.
set -eu
source=$1
packages=$2
work=$(mktemp -d)
root=$work/root
trap 'rm -rf "$work"' EXIT

inside() {
  chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}
# Every name outside of caches and records, which those who keep them answer for.
files() {
  (cd "$root" && find . \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./run -o -path ./tmp -o -path ./given \
    -o -path ./var/cache -o -path ./var/log -o -path ./var/lib/apt -o -path ./var/lib/dpkg \) -prune -o -print | LC_ALL=C sort)
}
apt_get() { inside apt-get -q -y -o APT::Sandbox::User=root "$@"; }

# Packages come from where this machine takes its own, and in the same way.
apt-config dump | grep '^Acquire::' >"$work/apt.conf" || :
mmdebstrap --variant=apt --aptopt="$work/apt.conf" --include=gcc,g++,libc6-dev,cmake,ninja-build,pkgconf,python3-numpy,python3-pil \
  "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root" \
  "$(find /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list 2>/dev/null | head -1)"
cp /etc/resolv.conf "$root/etc/resolv.conf" 2>/dev/null || :
apt_get update
files >"$work/before"

mkdir "$root/given"
cp -r "$source/samples" "$source/tests" "$source/debian" "$root/given/"
for package in "$packages"/*.deb; do
  case $package in *-dbgsym_*) ;; *) cp "$package" "$root/given/" ;; esac
done
apt_get install $(cd "$root/given" && ls ./*.deb | sed 's,^\.,/given,')
for package in "$root"/given/*.deb; do dpkg-deb -f "$package" Package; done >"$work/names"
for test in $(sed -n 's/^Tests: //p' "$source/debian/tests/control"); do
  echo "== $test"
  inside sh -c "cd /given && debian/tests/$test"
done

apt_get purge $(cat "$work/names")
apt_get autoremove --purge
files >"$work/after"
diff "$work/before" "$work/after" || { echo "what is left after a purge, or is gone with it"; exit 1; }
! inside dpkg-query -W '*raxel*' 2>/dev/null | grep raxel || { echo "dpkg still knows a package"; exit 1; }
! find "$root/var/lib/dpkg" "$root/var/cache" -name '*raxel*' ! -name '*.deb' | grep . || { echo "records are left"; exit 1; }
