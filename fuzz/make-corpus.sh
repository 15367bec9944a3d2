#!/usr/bin/env bash
# Writes the seed corpora fuzz/corpus/<target>/ from the demo project and the
# simulator, replacing what is there:
#   fuzz/make-corpus.sh build/ombrix-cli
# The seeds are kept small (a few dozen files of a few lines each): the
# fuzzer takes the grammar from them, not the bulk.
set -euo pipefail
cli=$(realpath "$1")
fuzz=$(cd "$(dirname "$0")" && pwd)
demo=$fuzz/../examples/demo
corpus=$fuzz/corpus
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export QT_QPA_PLATFORM=offscreen

# Lines numbered from..to (1-based) of a file, as one seed.
slice() { sed -n "$2,$3p" "$1"; }
# The line numbers of a file's lines that match a pattern, at most n of them.
matches() { grep -n -E "$2" "$1" | head -n "$3" | cut -d: -f1; }

definitions() {
  local out=$corpus/fuzz_definitions
  mkdir -p "$out"
  cp "$demo/dashboard_signals.def" "$out/demo.def"
  local lines n=0
  lines=$(wc -l < "$demo/dashboard_signals.def")
  for ((from = 1; from <= lines; from += 8)); do
    slice "$demo/dashboard_signals.def" "$from" $((from + 7)) > "$out/demo-part$((++n)).def"
  done
}

# A line seed starts with one byte that chooses the size of the pieces the
# bytes arrive in; the rest is what the device sent.
lineparser() {
  local out=$corpus/fuzz_lineparser
  mkdir -p "$out"
  "$cli" simulate --project "$demo" --stdout --rate 0 --count 20000 --seed 2 > "$work/plain.txt"
  "$cli" simulate --project "$demo" --stdout --rate 0 --count 20000 --seed 2 --timestamps > "$work/stamped.txt"
  local n=0 file line
  for file in plain stamped; do
    { printf '\x07'; slice "$work/$file.txt" 1 4; } > "$out/$file-start"
    for line in $(matches "$work/$file.txt" 'ERR=|ST_| [a-z]' 6); do
      { printf '%b' "\\x$(printf %02x $((n * 7 % 64)))"; slice "$work/$file.txt" "$((line > 1 ? line - 1 : 1))" "$((line + 1))"; } \
        > "$out/$file-event$((++n))"
    done
  done
  # The same lines ended by CR LF, as some devices send them.
  { printf '\x03'; slice "$work/stamped.txt" 1 3 | sed 's/$/\r/'; } > "$out/crlf"
}

recording() {
  local out=$corpus/fuzz_recording project=$work/project
  mkdir -p "$out"
  cp -r "$demo" "$project"
  "$cli" simulate --project "$project" --link "$work/device" --rate 0 --seed 5 --timestamps --duration 30 \
    > /dev/null &
  local simulator=$!
  sleep 1
  "$cli" record --port "$work/device" --project "$project" --lines 20000 > /dev/null
  kill "$simulator" 2> /dev/null || true
  wait "$simulator" 2> /dev/null || true
  local rec n=0 line
  rec=$(ls "$project"/recordings/*.rec)
  slice "$rec" 1 6 > "$out/start.rec"
  for line in $(matches "$rec" 'RAW|ERR=|ST_' 10); do
    slice "$rec" "$((line > 1 ? line - 1 : 1))" "$((line + 2))" > "$out/event$((++n)).rec"
  done
  # A recording cut off mid-line, as a crash leaves it.
  slice "$rec" 100 103 | head -c -20 > "$out/cut.rec"
}

layout() {
  local out=$corpus/fuzz_layout
  mkdir -p "$out"
  cp "$demo/layouts/demo.json" "$out/demo.json"
  # Every item of the demo layout on its own: one seed per widget type.
  local n=0 start end
  while read -r start end; do
    { echo '{"items": ['; slice "$demo/layouts/demo.json" "$start" "$end" | sed '$ s/},$/}/'; echo ']}'; } \
      > "$out/item$((++n)).json"
  done < <(awk '/^        \{$/ { start = NR } /^        \},?$/ { print start, NR }' "$demo/layouts/demo.json")
  # The trend plot with markers of both kinds, as the window saves them.
  local trend
  trend=$(grep -l '"TrendPlot"' "$out"/item*.json | head -n 1)
  sed 's/"markers": \[\]/"markers": [{"kind": "screen", "t": 0, "xFrac": 0.25, "label": ""}, {"kind": "data", "t": 1500, "xFrac": 0.5, "label": "brake on"}]/' \
    "$trend" > "$out/trend-markers.json"
}

rm -rf "$corpus"
definitions
lineparser
recording
layout
find "$corpus" -type f | wc -l
