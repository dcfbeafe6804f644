#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# matching.sh FOLDER FILTER: runs the benchmarks in FOLDER whose names hold FILTER (a regular expression), and
# only those programs that have any. When there is none, says so and lists the names, each up to its first slash.
set -euo pipefail
folder=$1 filter=$2

found=0
for program in "$folder"/*_bench; do
  # A program without a match says so on its standard error and lists nothing.
  [[ -n $("$program" --benchmark_list_tests=true --benchmark_filter="$filter" 2>/dev/null) ]] || continue
  found=1
  printf 'bench: %s\n' "${program##*/}" >&2
  "$program" --benchmark_counters_tabular=true --benchmark_filter="$filter"
done
((found)) && exit 0

{
  printf "bench: no benchmark's name holds '%s'; there are\n" "$filter"
  for program in "$folder"/*_bench; do
    names=$("$program" --benchmark_list_tests=true | cut -d / -f 1 | sort -u | paste -s -d ' ')
    printf '  %s: %s\n' "${program##*/}" "$names"
  done
} >&2
exit 1
