#!/usr/bin/env bash
# The reference host as a program works with the simulated controller on the checked driver, and
# is told nothing: writing, reading, checking, polling, with a good line and with a bad one.
# Usage: reference-host.sh HOST CONTROLLER PROJECT DRIVER
set -euo pipefail
host=$1 controller=$2 example=$3 driver=$4

folder=$(mktemp -d)
project=$folder/plant.json # with a time-out that a busy machine does not reach
sed 's/"replyTimeoutMs": 500/"replyTimeoutMs": 20000/' "$example" >"$project"
export TAVMIR_CHECK=log:$folder/reports
running=
trap '[ -z "$running" ] || kill "$running" 2>/dev/null || true; rm -rf "$folder"' EXIT

start() { # start CONTROLLER_OPTION...: `place` is where it listens
  rm -f "$folder/said"
  mkfifo "$folder/said"
  "$controller" --listen 127.0.0.1:0 --project "$project" "$@" >"$folder/said" &
  running=$!
  exec 3<"$folder/said"
  local line
  read -r -t 60 line <&3
  place=${line#listening on }
}
stop() {
  kill "$running"
  wait "$running" || true
  running=
}
host() { # host COMMAND ARGUMENT...
  local command=$1
  shift
  "$host" "$command" "$project" --driver "$driver" --connect "$place" "$@" </dev/null
}

start
host write Main.Title=Checked
grep -q Checked <<<"$(host read Main.Title)"
host check >/dev/null
host run --duration 2 --format csv >/dev/null
stop
sed -i 's/"replyTimeoutMs": 20000/"replyTimeoutMs": 300/' "$project"
start --fault drop=0.1 --fault truncate=0.1 --fault cut=0.05 --fault duplicate=0.1 \
  --fault corrupt=0.1 --fault disconnect%23 --fault late=0.05 --late-ms 400
host run --duration 4 --format csv >/dev/null || true
stop

# The log is made by the checked driver's first call.
if [ ! -f "$folder/reports" ] || [ -s "$folder/reports" ]; then
  echo "reports, or no checked driver:" >&2
  cat "$folder/reports" >&2
  exit 1
fi
