#!/usr/bin/env bash
# Both programs work without a single right of root, and leave nothing on disk: neither where they
# were started, nor in the home folder, nor in the folder for temporary files.
# Usage: ordinary-user.sh CONTROLLER HOST PROJECT
set -euo pipefail
controller=$1 host=$2 example=$3

folder=$(mktemp -d)
project=$folder/plant.json # with a time-out that a busy machine does not reach
sed 's/"replyTimeoutMs": 500/"replyTimeoutMs": 20000/' "$example" >"$project"
mkfifo "$folder/said"
mkdir "$folder/empty"
cd "$folder/empty"
export HOME=$PWD TMPDIR=$PWD

# Root keeps its number here, so that it can still read the files of this build, and nothing else.
plain=()
if [ "$(id -u)" -eq 0 ]; then
  plain=(setpriv --bounding-set=-all --inh-caps=-all --securebits=+noroot --no-new-privs)
fi

"${plain[@]}" "$controller" --listen 127.0.0.1:0 --project "$project" >"$folder/said" &
running=$!
polling=
clean_up() {
  for pid in $running $polling; do kill "$pid" 2>/dev/null || true; done
  rm -rf "$folder"
}
trap clean_up EXIT
exec 3<"$folder/said"
read -r -t 60 line <&3
place=${line#listening on }

"${plain[@]}" "$host" write "$project" --connect "$place" "Main.Title=Ordinary" </dev/null
read_back=$("${plain[@]}" "$host" read "$project" --connect "$place" Main.Title </dev/null)
grep -q Ordinary <<<"$read_back"
"${plain[@]}" "$host" run "$project" --connect "$place" --format csv --interval 100 </dev/null >"$folder/rows" &
polling=$!
for _ in $(seq 600); do # a minute
  if grep -q ',good,' "$folder/rows" || ! kill -0 "$polling"; then break; fi
  sleep 0.1
done
kill "$polling"
wait "$polling"
polling=
grep -q ',good,' "$folder/rows"

rights=$(sed -n 's/^CapEff:[[:space:]]*//p' "/proc/$running/status")
if [ "$rights" != 0000000000000000 ]; then
  echo "the controller ran with rights: $rights" >&2
  exit 1
fi
kill "$running"
wait "$running"
left=$(find . -mindepth 1)
if [ -n "$left" ]; then
  echo "left behind: $left" >&2
  exit 1
fi
