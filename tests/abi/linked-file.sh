#!/usr/bin/env bash
# What the linked library promises to the loader of a panel. Usage: linked-file.sh READELF LIBRARY
set -euo pipefail
readelf=$1 library=$2

dynamic=$("$readelf" -dW "$library")
segments=$("$readelf" -lW "$library")
failures=0
expect() { # expect WHAT TEXT PATTERN
  if ! grep -qE "$3" <<<"$2"; then
    echo "missing: $1" >&2
    failures=$((failures + 1))
  fi
}
refuse() { # refuse WHAT TEXT PATTERN
  if grep -E "$3" <<<"$2" >&2; then
    echo "present: $1" >&2
    failures=$((failures + 1))
  fi
}

expect 'soname libtavmir_kx_tcp.so.1' "$dynamic" 'SONAME.*\[libtavmir_kx_tcp\.so\.1\]'
expect 'binding at load' "$dynamic" 'BIND_NOW|FLAGS_1.*NOW'
expect 'tables read-only after load' "$segments" 'GNU_RELRO'
expect 'a stack that does not execute' "$segments" 'GNU_STACK.* RW +0x'
refuse 'a run path' "$dynamic" '\((RPATH|RUNPATH)\)'
refuse 'text relocations' "$dynamic" 'TEXTREL'
refuse 'a mark against unloading' "$dynamic" 'NODELETE'
refuse 'symbols that keep the loader from unloading it' \
  "$("$readelf" --dyn-syms -W "$library")" ' UNIQUE +(DEFAULT|PROTECTED) +[0-9]'
refuse 'a library besides QtCore, libstdc++, libgcc, libc' \
  "$(grep NEEDED <<<"$dynamic" | grep -vE '\[(libQt5Core\.so\.5|libQtCore\.so\.4|libstdc\+\+\.so\.6|libgcc_s\.so\.1|libc\.so\.6|libm\.so\.6|libpthread\.so\.0|ld-linux.*)\]' || true)" \
  NEEDED
[ "$failures" -eq 0 ]
