#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# matching.sh PROGRAM: bench/matching.sh runs the programs that have a benchmark of the name, and no others.
# The two programs here list and run as those with Google Benchmark's main do.
set -euo pipefail
matching=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# program NAME BENCHMARK...
program() {
  cat >"$folder/$1" <<END
#!/usr/bin/env bash
list= filter=.
for argument; do
  case \$argument in
    --benchmark_list_tests=true) list=1 ;;
    --benchmark_filter=*) filter=\${argument#*=} ;;
  esac
done
names=\$(printf '%s\n' ${*:2} | grep -E -- "\$filter") || { echo "Failed to match any benchmarks" >&2; exit 0; }
[[ -n \$list ]] || { echo "$1 ran:"; echo "$1" >>"$folder/ran"; }
echo "\$names"
END
  chmod +x "$folder/$1"
}
program coins_bench copper/large copper/small silver/large
program stamps_bench blue/large red/large

# is WHAT FOUND WANTED
is() {
  [[ $2 == "$3" ]] || { printf '%s: found\n%s\nwanted\n%s\n' "$1" "$2" "$3" >&2; exit 1; }
}

is 'one program' "$(bash "$matching" "$folder" copper 2>&1)" 'bench: coins_bench
coins_bench ran:
copper/large
copper/small'
is 'both' "$(bash "$matching" "$folder" large 2>/dev/null | grep ran:)" 'coins_bench ran:
stamps_bench ran:'
rm "$folder/ran"
status=0
said=$(bash "$matching" "$folder" gold 2>&1) || status=$?
is 'the code for an unknown name' "$status" 1
is 'an unknown name' "$said" "bench: no benchmark's name holds 'gold'; there are
  coins_bench: copper silver
  stamps_bench: blue red"
[[ ! -e $folder/ran ]] || { echo 'an unknown name ran something' >&2; exit 1; }
