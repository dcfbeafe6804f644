# SPDX-License-Identifier: MIT
# Sums up a CTest log (Testing/Temporary/LastTest.log): prints the output of the tests that failed,
# then one line "PRESET: 412 passed, 0 failed".
#
# A GoogleTest program counts as the tests that it reports; any other test counts as one. A program
# that ended without a report (a crash, a time limit) counts as one failure.

/^[0-9]+\/[0-9]+ Testing: / { start_section(); title = $0; sub(/^[^:]*: /, "", title); next }
/^\[  PASSED  \] [0-9]+ tests?/  { reported = 1; passes += $4 }
/^\[  FAILED  \] [0-9]+ tests?/  { reported = 1; failures += $4 }
/^\[  SKIPPED \] [0-9]+ tests?/  { skips += $4 }
/^Test time = /                  { next }
/^Test (Passed|Failed|Skipped)\.$|^Test not run|^Test Timeout|^Test Exception|^Test Not Run/ { end_section($2 == "Passed." || $2 == "Skipped.", $2 == "Skipped."); next }
# Of the frame and of the tests that went well no line is kept.
/^(Command|Directory|Output): ?|^".*" start time: |^-+$|^<end of output>$|^\[(-|=)+\]|^$/ { next }
title != "" {
  if (/^\[ RUN      \] /) pending = $0 "\n"
  else if (/^\[       OK \] /) pending = ""
  else { output = output pending $0 "\n"; pending = "" }
}

function start_section() { title = output = pending = ""; reported = passes = failures = skips = 0 }

function end_section(ok, skipped) {
  if (skipped) skips = 1
  else if (ok && !reported) passes = 1
  else if (!ok && failures == 0) failures = 1
  if (!ok) printf "---- %s failed ----\n%s%s\n", title, output, pending
  passed += passes; failed += failures; left_out += skips
  start_section()
}

END {
  printf "%s: %d passed, %d failed%s\n", preset, passed, failed, left_out ? ", " left_out " skipped" : ""
  exit failed > 0
}
