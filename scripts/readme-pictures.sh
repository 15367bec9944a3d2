#!/usr/bin/env bash
# Makes the README's pictures with ombrix-cli render: records 40 s of the
# simulated demo device into a copy of the demo project, then renders the
# demo layout at 36 s of that recording. Run ./test.sh (or ./run.sh) first,
# so that build/ombrix-cli exists.
set -euo pipefail
ROOT=$(cd "$(dirname "$0")/.." && pwd)
CLI="$ROOT/build/ombrix-cli"
WORK=$(mktemp -d)
SIM=""
trap '[ -n "$SIM" ] && kill "$SIM" 2>/dev/null; rm -rf "$WORK"' EXIT

cp -r "$ROOT/examples/demo" "$WORK/demo"
"$CLI" simulate --project "$WORK/demo" --rate 50 --link "$WORK/device" --timestamps --seed 3 >/dev/null &
SIM=$!
for _ in $(seq 50); do [ -e "$WORK/device" ] && break; sleep 0.1; done
"$CLI" record --port "$WORK/device" --project "$WORK/demo" --duration 40
RECORDING=$(ls "$WORK"/demo/recordings/*.rec)
"$CLI" render "$ROOT/examples/demo/layouts/demo.json" --project "$ROOT/examples/demo" \
    --recording "$RECORDING" --at 36 --size 1120x705 -o "$ROOT/docs/live-dashboard.png"
