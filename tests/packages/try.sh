#!/bin/sh
# SPDX-License-Identifier: MIT
# try.sh SOURCE PACKAGES: a clean Debian gets the tools that a programmer has, then the packages and what they
# depend on; the tests that come with them run there; then they are purged, and the file system is compared with
# what it was. Then each test runs once more in a Debian that has what debian/tests/control says that it needs, and
# nothing else. Needs root.
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
tests=$(sed -n 's/^Tests: //p' "$source/debian/tests/control")
# What a test says that it needs.
depends_of() {
  awk -v RS= -F'\n' -v line="Tests: $1" '
    { mine = 0; for (i = 1; i <= NF; i++) if ($i == line) mine = 1 }
    mine { for (i = 1; i <= NF; i++) if (sub(/^Depends: /, "", $i)) print $i }' "$source/debian/tests/control"
}
run_test() {
  echo "== $1"
  inside sh -c "cd /given && debian/tests/$1"
}

# Packages come from where this machine takes its own, and in the same way.
apt-config dump | grep '^Acquire::' >"$work/apt.conf" || :
mmdebstrap --variant=apt --aptopt="$work/apt.conf" \
  "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root" \
  "$(find /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list 2>/dev/null | head -1)"
cp /etc/resolv.conf "$root/etc/resolv.conf" 2>/dev/null || :
mkdir "$root/given"
cp -r "$source/samples" "$source/tests" "$source/debian" "$root/given/"
for package in "$packages"/*.deb; do
  case $package in *-dbgsym_*) ;; *) cp "$package" "$root/given/" ;; esac
done
(cd "$root/given" && dpkg-scanpackages --multiversion . >Packages)
echo 'deb [trusted=yes] file:/given ./' >"$root/etc/apt/sources.list.d/given.list"
apt_get update
cp -a "$root" "$work/bare"

apt_get install --no-install-recommends gcc g++ libc6-dev cmake ninja-build pkgconf python3-numpy python3-pil
files >"$work/before"
apt_get install $(cd "$root/given" && ls ./*.deb | sed 's,^\.,/given,')
for package in "$root"/given/*.deb; do dpkg-deb -f "$package" Package; done >"$work/names"
for test in $tests; do run_test "$test"; done

apt_get purge $(cat "$work/names")
apt_get autoremove --purge
files >"$work/after"
diff "$work/before" "$work/after" || { echo "what is left after a purge, or is gone with it"; exit 1; }
! inside dpkg-query -W '*raxel*' 2>/dev/null | grep raxel || { echo "dpkg still knows a package"; exit 1; }
! find "$root/var/lib/dpkg" "$root/var/cache" -name '*raxel*' ! -name '*.deb' | grep . || { echo "records are left"; exit 1; }

mkdir "$work/archives"
find "$root/var/cache/apt/archives" -name '*.deb' -exec cp {} "$work/archives/" \;
for test in $tests; do
  needs=$(depends_of "$test")
  [ -n "$needs" ] || { echo "$test does not say what it needs"; exit 1; }
  rm -rf "$root"
  cp -a "$work/bare" "$root"
  find "$work/archives" -name '*.deb' -exec cp {} "$root/var/cache/apt/archives/" \;
  apt_get satisfy --no-install-recommends "$needs"
  run_test "$test"
done
