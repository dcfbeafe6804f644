#!/bin/sh
# SPDX-License-Identifier: MIT
# structure.sh CHECK SOURCE-FOLDER: checks the sources as text; prints every line that breaks a rule.
set -eu
check=$1
cd "$2"
LC_ALL=C
export LC_ALL

sources() { find "$@" \( -name '*.cpp' -o -name '*.h' \) | sort; }

case $check in
  includes)
    # A folder of src/ includes its own headers, the public ones, and those of runtime/. The public
    # headers include each other. The command-line host knows the library by its public headers only.
    sources include/raxel src host | xargs awk '
      /^ *# *include *"/ {
        split($0, quoted, "\"")
        split(FILENAME, path, "/")
        target = quoted[2]; split(target, parts, "/")
        allowed = parts[1] == "raxel"
        if (path[1] == "src") allowed = allowed || parts[1] == "runtime" || parts[1] == path[2]
        if (path[1] == "host") allowed = allowed || parts[1] !~ /^(entry|raster|tiff|color|setup|runtime)$/
        if (!allowed) { print FILENAME ":" FNR ": may not include " target; bad = 1 }
        ++seen
      }
      END { exit bad || seen == 0 }'
    ;;
  circles)
    # Takes away every header that includes no header left, until nothing changes; a circle remains.
    sources include src | xargs awk '
      FNR == 1 { name = FILENAME; sub(/^(include|src)\//, "", name); files[name] }
      /^ *# *include *"/ { split($0, quoted, "\""); edges[name, quoted[2]] }
      END {
        do {
          changed = 0
          for (file in files) {
            open = 0
            for (edge in edges) { split(edge, ends, SUBSEP); if (ends[1] == file && ends[2] in files) open = 1 }
            if (!open) { delete files[file]; changed = 1 }
          }
        } while (changed)
        for (file in files) { print file " is part of a circle of includes, or leads into one"; bad = 1 }
        exit bad
      }'
    ;;
  plain)
    # The library takes its memory from handles and throws nothing: no containers that allocate, no
    # streams; and it reads text in the C locale, whatever the host has set. Threads are made in one place.
    ! sources src | grep -v '^src/tiff/side_by_side\.' | xargs grep -nE \
      '# *include *<(vector|string|map|set|unordered_map|unordered_set|deque|list|queue|stack|functional|memory|iostream|sstream|fstream|ostream|istream|format|regex|thread|mutex|condition_variable|future|any|variant|exception|stdexcept|locale|clocale|cctype|ctype\.h)>'
    ;;
  environment)
    # Who runs a program with another user's rights does not say where that one's files are.
    ! sources src host | xargs grep -nE '(std::|[^_])getenv\('
    ;;
  unfinished)
    ! grep -rnwEI 'TO''DO|FIX''ME|XX''X' include src host tests bench fuzz docs dev README.md CONTRIBUTING.md
    ;;
  rooms)
    # A folder that holds rooms is not a room itself: what lies beside them is what they share.
    few() {
      count=$(find "$1" -maxdepth 1 -type f | wc -l)
      [ "$count" -le "$2" ] || { echo "$1 holds $count files beside its rooms, more than $2"; return 1; }
    }
    few host 10 && few src/color 20
    ;;
  codes)
    # Numbers that hosts and profiles agree on stand in the public headers, and in the tables that say what
    # they lead to. Everything else goes by their names.
    find src host examples tests fuzz bench \( -name '*.c' -o -name '*.cpp' -o -name '*.h' \) \
      ! -path src/raster/opcode_table.cpp \
      ! -path tests/library/codes.cpp ! -path tests/library/records.cpp | sort |
      xargs awk -f tests/structure/codes.awk
    ;;
  behaviour)
    # Each oddity of docs/behaviour.md has a name, and names what carries it and what holds it: both have to exist.
    if grep -n '^- ' docs/behaviour.md | grep -v ':- \*\*'; then
      echo "docs/behaviour.md: an entry lacks its name"
      exit 1
    fi
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    sources include src | xargs cat | tr -cs 'A-Za-z0-9_' '\n' | sort -u >"$work/words"
    find tests -name '*.cpp' | xargs sed -nE 's/^TEST(_F|_P)?\(([A-Za-z0-9_]+), *([A-Za-z0-9_]+).*/\2.\3/p' |
      sort -u >"$work/tests"
    tr '\n' ' ' <docs/behaviour.md | tr -s ' ' | grep -oE '\*In [^*]*; held by [^*]*\.\*' >"$work/entries"
    sed 's/; held by .*//' "$work/entries" | grep -oE '`[A-Za-z0-9_]+`' | tr -d '`' | sort -u >"$work/carriers"
    sed 's/.*; held by //' "$work/entries" | grep -oE '[A-Za-z0-9]+\.[A-Za-z0-9_]+' | sort -u >"$work/held"
    test "$(grep -c '^- \*\*' docs/behaviour.md)" -eq "$(wc -l <"$work/entries")" ||
      { echo "docs/behaviour.md: an entry lacks its line '*In ...; held by ...*'"; exit 1; }
    comm -23 "$work/carriers" "$work/words" | sed 's/^/docs\/behaviour.md: nothing is called /' >"$work/missing"
    comm -23 "$work/held" "$work/tests" | sed 's/^/docs\/behaviour.md: no test is called /' >>"$work/missing"
    cat "$work/missing"
    test ! -s "$work/missing"
    ;;
  sentences)
    # Programs show what the libraries say, and know no options: those belong to orders alone.
    library=$(grep -oE '[a-z_]+(/[a-z_]+)?\.cpp' host/library.cmake | sed 's,^,host/,' |
      grep -vE '^host/(order|pictures)/|^host/filter/(given|metadata|request|save)')
    test -n "$library"
    # shellcheck disable=SC2086 # names without blanks
    ! { sources src include; ls $library; } | xargs grep -nE '"([^"]*[^"-])?-(-[a-z]|[a-zA-Z][ ,;"])'
    ;;
  licence)
    # Every source, header, script, build file and page begins with its licence, after "#!" or the name of a manual
    # page where it has that.
    find .ci cmake debian dev docs bench examples fuzz host include python samples src tests CMakeLists.txt -type f \
      ! -path '*/__pycache__/*' 2>/dev/null | grep -E \
      '\.(cpp|h|c|py|pyi|sh|awk|cmake|cmake\.in|map|pc\.in|scd|rst)$|(^|/)CMakeLists\.txt$|^dev$|^\.ci/run$|^debian/(rules|tests/[a-z-]+)$' |
      LC_ALL=C sort | xargs awk '
      FNR == 1 { ++seen; wanted = /^#!/ || FILENAME ~ /\.scd$/ ? 2 : 1 }
      FNR == wanted && !/^(\/\/|#|;|\.\.) SPDX-License-Identifier: MIT$/ {
        print FILENAME ": its first line, or the one after #!, should be: SPDX-License-Identifier: MIT (as a comment)"
        bad = 1
      }
      END { exit bad || seen < 500 }'
    grep -q '^MIT License$' LICENSE && grep -q 'the raxel authors$' LICENSE
    ;;
  short)
    # A file of one purpose is short. Beyond this many lines it has a second one.
    sources include src host | xargs wc -l | awk '$2 != "total" && $1 > 400 { print; bad = 1 } END { exit bad }'
    ;;
  *)
    echo "structure.sh knows no check '$check'"
    exit 2
    ;;
esac
