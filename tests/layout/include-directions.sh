#!/usr/bin/env bash
# The rooms' includes point one way; and the check that says so fails on each kind of bad include.
# Usage: include-directions.sh SOURCE_TREE
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
python3 "$here/include_directions.py" "$1"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
expect_refused() { # FILE LINE WORDS
  rm -rf "$scratch/tree"
  mkdir -p "$scratch/tree/src" "$scratch/tree/tools/wire" "$scratch/tree/$(dirname "$1")"
  echo '#include "b.h"' >"$scratch/tree/tools/wire/a.h"
  echo '#include <cstdint>' >"$scratch/tree/tools/wire/b.h"
  python3 "$here/include_directions.py" "$scratch/tree" >/dev/null
  echo "$2" >>"$scratch/tree/$1"
  if python3 "$here/include_directions.py" "$scratch/tree" >"$scratch/said"; then
    echo "not noticed: $1 with $2" >&2
    exit 1
  fi
  grep -q "$3" "$scratch/said" || { cat "$scratch/said" >&2; exit 1; }
}
expect_refused tools/feed/x.cpp '#include "session/host_session.h"' 'arrow back from feed'
expect_refused tools/link/x.cpp '#include "driver/driver_loader.h"' 'arrow back from link'
expect_refused tools/controller/x.cpp '#include "link/tcp_link.h"' 'arrow back from controller'
expect_refused tools/controller/x.cpp '#include "capture/feed_capture.h"' 'arrow back from controller'
expect_refused tools/capture/x.cpp '#include "feed_capture.h"' 'arrow back from capture'
expect_refused tools/capture/x.cpp '#include <QtCore/QString>' 'capture does without Qt'
expect_refused tools/wire/x.cpp '#include <QtCore/QString>' 'wire does without Qt'
expect_refused tools/host/x.cpp '#include <QtNetwork/QTcpSocket>' 'only controller may know'
expect_refused tools/page/session.h '#include "wire/a.h"' 'arrow back from page/server'
expect_refused tools/page/token.cpp '#include "status_json.h"' 'arrow back from page/server'
expect_refused tools/page/query.cpp '#include <QtCore/QString>' 'page/server does without Qt'
expect_refused tools/page/status_json.cpp '#include <boost/asio.hpp>' 'only page/server may know'
expect_refused tools/attic/x.cpp '#include <cstdint>' 'nobody has said'
expect_refused tools/wire/b.h '#include "a.h"' 'a circle: tools/wire/a.h -> tools/wire/b.h -> tools/wire/a.h'
