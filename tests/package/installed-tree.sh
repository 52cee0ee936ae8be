#!/usr/bin/env bash
# Installs the build into an empty folder, moves it to show that nothing points back, and builds a
# minimal host against it with CMake's find_package and with pkg-config; both hosts must run, and
# the installed probe must find its library.
#
# Usage: installed-tree.sh BUILD CMAKE LIBRARY_FOLDER EMULATOR [CMAKE_OPTION...]
#   LIBRARY_FOLDER  of the installation, below its prefix
#   EMULATOR      what runs the built programs, or empty; with one, pkg-config is left out: its
#                 files of the sysroot describe another machine
#   CMAKE_OPTION  passed on to the configuration of the host's project
set -euo pipefail
build=$1 cmake=$2 library_folder=$3 emulator=$4
shift 4
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cmake" --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/tree"

# The probe takes the library of its own tree, whatever the loader would find.
# shellcheck disable=SC2086 # the emulator and its options are several words
said=$($emulator "$work/tree/bin/tavmir-probe" 2>/dev/null || true)
library=$work/tree/$library_folder/libtavmir_kx_tcp.so.1
if ! grep -qxF "library    $(realpath "$library")" <<<"$said" || ! grep -qx OK <<<"$said"; then
  printf 'the installed probe said:\n%s\n' "$said" >&2
  exit 1
fi

# A page leads to nothing that is not installed beside it.
while IFS=: read -r page link; do
  [ -e "$(dirname "$page")/$link" ] || { echo "$page leads to no $link" >&2; exit 1; }
done < <(grep -roP --include='*.md' '\]\(\K[^)#:]+(?=[)#])' "$work/tree/share/doc")

check() { # check PROGRAM: it must run one poll
  local said
  # shellcheck disable=SC2086 # the emulator and its options are several words
  said=$(LD_LIBRARY_PATH="$work/tree/$library_folder:${LD_LIBRARY_PATH-}" $emulator "$1" 2>/dev/null)
  if [ "$said" != "request 00000000000701660100000bb8"$'\n'"status 1, cached 1234" ]; then
    printf '%s said:\n%s\n' "$1" "$said" >&2
    exit 1
  fi
}

"$cmake" -S "$here/consumer" -B "$work/by-cmake" -DCMAKE_PREFIX_PATH="$work/tree" \
  -DCMAKE_FIND_ROOT_PATH="$work/tree" "$@" >"$work/log" || { cat "$work/log" >&2; exit 1; }
"$cmake" --build "$work/by-cmake" >"$work/log" || { cat "$work/log" >&2; exit 1; }
if [ -n "$emulator" ]; then
  emulator="$emulator -E LD_LIBRARY_PATH=$work/tree/$library_folder"
  check "$work/by-cmake/consumer"
  exit 0
fi
check "$work/by-cmake/consumer"

# The line that the manual page tells, as it stands there.
export PKG_CONFIG_PATH="$work/tree/$library_folder/pkgconfig:${PKG_CONFIG_PATH-}"
line=$(grep -x 'g++ .*host\.cpp .*' "$here/../../docs/man/tavmir_kx_tcp.7.scd")
mkdir "$work/by-hand"
cp "$here/consumer/main.cpp" "$work/by-hand/host.cpp"
(cd "$work/by-hand" && eval "$line")
check "$work/by-hand/host"
