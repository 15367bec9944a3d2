#!/usr/bin/env bash
# Installs what is missing, builds, starts the simulated device and the dashboard
# on a per-user copy of the demo project (the checkout itself is never written).
set -euo pipefail
OMBRIX_ROOT=$(cd "$(dirname "$0")" && pwd)
source "$OMBRIX_ROOT/scripts/deps.sh"
ombrix_install_deps
ombrix_build "$OMBRIX_ROOT/build" -DBUILD_TESTING=OFF

DATA_HOME=${XDG_DATA_HOME:-$HOME/.local/share}
PROJECT="$DATA_HOME/Ombrix/demo"
if [ ! -f "$PROJECT/dashboard_signals.def" ]; then
  mkdir -p "$PROJECT"
  cp -r "$OMBRIX_ROOT/examples/demo/." "$PROJECT/"
  echo "Demo project copied to $PROJECT"
fi

RUNTIME=${XDG_RUNTIME_DIR:-/tmp}
LINK="$RUNTIME/ombrix-demo-$$.tty"
"$OMBRIX_ROOT/build/ombrix-cli" simulate --project "$PROJECT" --rate 50 --link "$LINK" &
SIM_PID=$!
trap 'kill $SIM_PID 2>/dev/null || true; rm -f "$LINK"' EXIT
for _ in $(seq 50); do [ -e "$LINK" ] && break; sleep 0.1; done

ARGS=(--project "$PROJECT" --port "$LINK")
LAYOUT=$(ls "$PROJECT"/layouts/*.json 2>/dev/null | head -n 1 || true)
[ -n "$LAYOUT" ] && ARGS+=(--layout "$LAYOUT")
"$OMBRIX_ROOT/build/ombrix" "${ARGS[@]}" "$@"
