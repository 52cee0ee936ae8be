#!/usr/bin/env bash
# Compares the library's binary interface (functions, globals, the types behind them) with the
# recorded one. Usage: recorded-interface.sh LIBRARY BASELINE
set -euo pipefail
library=$1 baseline=$2

if ! command -v abidiff >/dev/null; then
  echo "abidiff is missing: install Debian's abigail-tools" >&2
  exit 1
fi
status=0
abidiff --no-added-syms "$baseline" "$library" >&2 || status=$?
if [ "$status" -ne 0 ]; then
  echo "The binary interface differs from $(basename "$baseline") (abidiff: $status);" \
    "docs/binary-interface.md tells what to do." >&2
  exit 1
fi
