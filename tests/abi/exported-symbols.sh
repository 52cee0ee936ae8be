#!/usr/bin/env bash
# Compares the names that the library exports, plain and mangled, with the committed list.
# Usage: exported-symbols.sh NM LIBRARY LIST, or with "-" for LIST to print them.
set -euo pipefail
nm=$1 library=$2 list=$3

# Kind (T function, D data) and name. Data without initial values (B) is data all the same.
exported() { "$nm" -D --defined-only "$library" | awk '{ sub("B", "D", $2); print $2, $3 }' | LC_ALL=C sort; }

if [ "$list" = - ]; then
  exported
  exit 0
fi
if ! diff -u "$list" <(exported) >&2; then
  echo "The exported names differ from $(basename "$list"); docs/binary-interface.md tells what to do." >&2
  exit 1
fi
