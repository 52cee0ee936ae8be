#!/usr/bin/env bash
# Looks at a folder of Debian packages: contents, dependencies, stripping, lintian; installs them
# into an empty root with dpkg, runs what is there, shows the manual pages, removes everything.
# Usage: packages.sh amd64|armhf FOLDER
#
# What is piped into grep is read to its end, without -q: a writer that is left alone fails.
set -euo pipefail
processor=$1
folder=$(realpath "$2")
cd "$(dirname "$0")/../.."
packages=(libtavmir-kx-tcp1 libtavmir-kx-tcp-dev libtavmir-kx-tcp1-checked tavmir-tools
  tavmir-wireshark)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

case $processor in
amd64) triplet=x86_64-linux-gnu run=(env) ;;
armhf)
  triplet=arm-linux-gnueabihf
  sysroot=$(scripts/make-armhf-sysroot)
  run=(qemu-arm-static -L "$sysroot" -E)
  ;;
esac

fail() {
  printf 'packages.sh (%s): %s\n' "$processor" "$1" >&2
  exit 1
}
file_of() { # file_of PACKAGE: the one file that holds it
  local found=("$folder/$1"_*_"$processor.deb")
  [ ${#found[@]} -eq 1 ] && [ -f "${found[0]}" ] || fail "not one package $1"
  printf '%s\n' "${found[0]}"
}

debs=()
for package in "${packages[@]}"; do
  deb=$(file_of "$package")
  debs+=("$deb")
  [ "$(dpkg-deb -f "$deb" Architecture)" = "$processor" ] || fail "$package: architecture"
done

echo "-- lintian"
lintian --fail-on error --tag-display-limit 0 "${debs[@]}" || fail "lintian found errors"

echo "-- libraries that the files name, and packages that bring them"
brings() { # brings SONAME: the package
  case $1 in
  libtavmir_kx_tcp.so.1) echo libtavmir-kx-tcp1 ;;
  libQt5Core.so.5) echo libqt5core5a ;;
  libQt5Network.so.5) echo libqt5network5 ;;
  libncursesw.so.6) echo libncursesw6 ;;
  libtinfo.so.6) echo libtinfo6 ;;
  libpcap.so.0.8) echo libpcap0.8 ;;
  libsqlite3.so.0) echo libsqlite3-0 ;;
  libtins.so.4.0) echo libtins4.0 ;;
  libstdc++.so.6) echo libstdc++6 ;;
  libgcc_s.so.1) echo libgcc-s1 ;;
  libc.so.6 | libm.so.6 | ld-linux*) echo libc6 ;;
  *) fail "unknown library $1" ;;
  esac
}
for package in libtavmir-kx-tcp1 libtavmir-kx-tcp1-checked tavmir-tools; do
  dpkg-deb -x "$(file_of $package)" "$work/$package"
  depends=$(dpkg-deb -f "$(file_of $package)" Depends)
  while read -r file; do
    readelf -SW "$file" | grep -E ' \.(symtab|debug_info) ' >/dev/null && fail "not stripped: $file"
    readelf -dW "$file" | grep -E '\((RPATH|RUNPATH)\)' >/dev/null && fail "run path: $file"
    for library in $(readelf -dW "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
      grep -qE "(^|, )$(brings "$library" | sed 's/[.+]/\\&/g')( |,|$)" <<<"$depends" ||
        fail "$package does not depend on $library's"
    done
    asked=$(readelf -VW "$file" | sed -n 's/.*Name: GLIBC_\([0-9.]*\) .*/\1/p' | sort -V | tail -1)
    promised=$(sed -n 's/.*libc6 (>= \([0-9.]*\)).*/\1/p' <<<"$depends")
    dpkg --compare-versions "$asked" le "$promised" ||
      fail "$file asks for libc6 $asked, $package for $promised"
  done < <(find "$work/$package" -type f \( -path '*/bin/*' -o -name '*.so.*' \))
done
version=$(dpkg-deb -f "$(file_of libtavmir-kx-tcp1)" Version)
library=usr/lib/$triplet/libtavmir_kx_tcp.so.${version%-*}
tests/abi/linked-file.sh readelf "$work/libtavmir-kx-tcp1/$library"
checked=usr/lib/$triplet/tavmir/checked/libtavmir_kx_tcp.so.1
tests/abi/linked-file.sh readelf "$work/libtavmir-kx-tcp1-checked/$checked"
for program in tavmir-controller tavmir-host tavmir-probe; do
  tests/abi/linked-program.sh readelf "$work/tavmir-tools/usr/bin/$program"
done

echo "-- debug symbols, apart"
for package in libtavmir-kx-tcp1 libtavmir-kx-tcp1-checked tavmir-tools; do
  symbols=("$folder/$package-dbgsym"_*.ddeb)
  [ -f "${symbols[0]}" ] || fail "no debug symbols of $package"
  dpkg-deb -x "${symbols[0]}" "$work/symbols"
done
id=$(readelf -nW "$work/libtavmir-kx-tcp1/$library" |
  sed -n 's/.*Build ID: \(..\)\(.*\)/\1\/\2/p')
readelf -SW "$work/symbols/usr/lib/debug/.build-id/$id.debug" | grep ' \.debug_info ' >/dev/null ||
  fail "the library's debug symbols are missing"

echo "-- install, run, remove"
root=$work/root
mkdir -p "$root/var/lib/dpkg/"{info,updates,triggers}
touch "$root/var/lib/dpkg/status"
# Small machines tell dpkg to leave documentation out; here it is looked at.
in_root=(dpkg --root="$root" --force-not-root --force-depends --force-architecture --force-bad-path
  --log=/dev/null --path-include='/usr/share/*')
[ "$processor" = amd64 ] || dpkg --root="$root" --force-not-root --add-architecture "$processor"
"${in_root[@]}" --install "${debs[@]}" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail install; }
for package in "${packages[@]}"; do
  [ "$(dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${db:Status-Status}' "$package")" = installed ] ||
    fail "$package is not installed"
  [ "$(head -1 "$root/usr/share/doc/$package/copyright")" = "No licence has been chosen for this project." ] ||
    fail "$package: copyright"
done
# The page has a chart built in.
for words in 'uPlot' 'Copyright (c) [0-9]* Leon Sorokin' 'Permission is hereby granted' 'THE SOFTWARE IS PROVIDED'; do
  grep -q "$words" "$root/usr/share/doc/tavmir-tools/copyright" || fail "tavmir-tools: copyright lacks \"$words\""
done

for document in libtavmir-kx-tcp-dev/{panel,binary-interface,host-duties,integration,protocol}.md \
  libtavmir-kx-tcp-dev/examples/minimal-host/{minimal_host.cpp,CMakeLists.txt,README.md} \
  libtavmir-kx-tcp1-checked/host-duties.md tavmir-wireshark/wireshark.md \
  tavmir-tools/{project-file,check-host,protocol,page}.md tavmir-tools/page{,-why}.png \
  tavmir-tools/examples/plant.json \
  tavmir-tools/examples/check-host/standard.script; do
  [ -s "$root/usr/share/doc/$document" ] || fail "no document $document"
done

# The probe needs no search path to find the library of its installation.
"${run[@]}" TZ=UTC "$root/usr/bin/tavmir-probe" >"$work/probe" 2>/dev/null ||
  { cat "$work/probe" >&2; fail "the installed probe failed"; }
grep -qx "library    $root/$library" "$work/probe" || fail "the probe loaded another library"
# The checked library is one file, which any host can be given.
"${run[@]}" TZ=UTC "$root/usr/bin/tavmir-probe" --library "$root/$checked" >"$work/probe" 2>/dev/null ||
  { cat "$work/probe" >&2; fail "the probe does not take the checked library"; }
search=LD_LIBRARY_PATH=$root/usr/lib/$triplet
for program in tavmir-controller tavmir-host; do
  "${run[@]}" "$search" "$root/usr/bin/$program" --help >"$work/help" 2>&1 || fail "$program --help"
  grep -q Usage "$work/help" || fail "$program --help says nothing"
done

echo "-- the page is in its program, and in no other package"
most=$((100 * 1024)) # bytes of the driver's package; the page would be more than all of it
size=$(stat -c %s "$(file_of libtavmir-kx-tcp1)")
[ "$size" -le "$most" ] || fail "libtavmir-kx-tcp1 has $size bytes, more than $most"
grep -qF '<title>tavmir-host</title>' "$root/usr/bin/tavmir-host" || fail "the host has no page in it"
for package in libtavmir-kx-tcp1 libtavmir-kx-tcp-dev libtavmir-kx-tcp1-checked tavmir-tools; do
  pages=$(dpkg-deb -c "$(file_of $package)" | grep -E '\.(js|css|html)$' || true)
  [ -z "$pages" ] || fail "$package has files of the page: $pages"
done

echo "-- the dissector is where tshark looks for it"
plugins=usr/lib/$triplet/wireshark/plugins
if [ "$processor" = amd64 ]; then
  looks=$(tshark -G folders 2>/dev/null | sed -n 's/^Global Lua Plugins:[[:space:]]*//p')
  [ "$looks" = "/$plugins" ] || fail "tshark looks for scripts in $looks"
  # What is not installed on this machine it takes from the user's own folder.
  mkdir -p "$work/home/.local/lib/wireshark"
  cp -r "$root/$plugins" "$work/home/.local/lib/wireshark/"
  HOME=$work/home tshark -G protocols >"$work/protocols" 2>/dev/null
  cut -f3 "$work/protocols" | grep -x tavmir >/dev/null || fail "tshark does not know the protocol"
else
  [ -s "$root/$plugins/tavmir.lua" ] || fail "no dissector"
fi

echo "-- manual pages"
for page in "$root"/usr/share/man/man*/*.gz; do
  name=$(basename "$page" .gz)
  MANPATH=$root/usr/share/man man --warnings -E UTF-8 "${name##*.}" "${name%.*}" \
    >"$work/page" 2>"$work/warnings" || fail "man does not show $name"
  [ -s "$work/warnings" ] && { cat "$work/warnings" >&2; fail "$name"; }
  grep -qi "^SEE ALSO" "$work/page" || fail "$name is cut short"
done

"${in_root[@]}" --purge "${packages[@]}" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail remove; }
left=$(find "$root" -path "$root/var" -prune -o -not -type d -print)
[ -z "$left" ] || fail "left behind: $left"
echo "-- packages for $processor are good"
