#!/usr/bin/env bash
# What each program promises to the loader. Usage: linked-program.sh READELF PROGRAM...
set -euo pipefail
readelf=$1
shift

failures=0
expect() { # expect WHAT TEXT PATTERN
  if ! grep -qE "$3" <<<"$2"; then
    echo "$program: missing: $1" >&2
    failures=$((failures + 1))
  fi
}

for program in "$@"; do
  dynamic=$("$readelf" -dW "$program")
  segments=$("$readelf" -lW "$program")
  expect 'binding at load' "$dynamic" 'BIND_NOW|FLAGS_1.*NOW'
  expect 'tables read-only after load' "$segments" 'GNU_RELRO'
  expect 'a stack that does not execute' "$segments" 'GNU_STACK.* RW +0x'
done
[ "$failures" -eq 0 ]
