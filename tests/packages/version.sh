#!/bin/sh
# SPDX-License-Identifier: MIT
# version.sh SOURCE VERSION: every place that tells of a version tells of this one. (raxelHostVersion and the
# .pc files are compared where they are used.)
set -eu
cd "$1"
version=$2
bad=0
same() { [ "$2" = "$version" ] || { echo "$1 says $2 instead of $version"; bad=1; }; }

same CHANGELOG.md "$(sed -n 's/^## \([0-9.]*\).*/\1/p' CHANGELOG.md | head -1)"
if [ -f debian/changelog ]; then
  same debian/changelog "$(sed -n '1s/^raxel (\([0-9.]*\)-[0-9]*) .*/\1/p' debian/changelog)"
fi
# And no source repeats it.
pattern=$(echo "$version" | sed 's/\./\\./g')
! grep -rnE "(^|[^0-9.])$pattern([^0-9.]|$)" --include='*.cpp' --include='*.h' --include='*.in' --include='*.txt' \
  --include='*.cmake' --include='*.toml' --include='*.py' CMakeLists.txt cmake docs examples host include src python 2>/dev/null ||
  { echo "a source repeats the version"; bad=1; }
exit $bad
