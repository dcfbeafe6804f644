#!/bin/sh
# SPDX-License-Identifier: MIT
# initialisers.sh OBJECT...: nothing runs when the library is loaded or unloaded. A global that needs
# code to come into being puts a pointer into a section .init_array (or .ctors) of its object file, one
# that needs code to go away into .fini_array, or calls __cxa_atexit; none of the library's object files
# may have any of these. (The library itself has one such pointer, of the compiler's start-up code.)
set -eu
LC_ALL=C
export LC_ALL
[ $# -gt 0 ] || { echo "no object files given"; exit 1; }
status=0
for object in "$@"; do
  if readelf --sections --wide "$object" | grep -E '\.(preinit_array|init_array|fini_array|ctors|dtors)'; then
    echo "^ $object" && status=1
  fi
  if readelf --symbols --wide "$object" | grep -E '__cxa_atexit|__cxa_guard_acquire|_GLOBAL__sub_I|atexit'; then
    echo "^ $object" && status=1
  fi
done
exit $status
