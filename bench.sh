#!/usr/bin/env bash
# Builds the benchmarks in release mode and runs each of them; every benchmark
# prints its own table rows.
set -euo pipefail
OMBRIX_ROOT=$(cd "$(dirname "$0")" && pwd)
source "$OMBRIX_ROOT/scripts/deps.sh"
ombrix_install_deps
ombrix_build "$OMBRIX_ROOT/build-bench" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF
export QT_QPA_PLATFORM=offscreen
echo "Machine: $(uname -m), $(nproc) cores, $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ //')"
echo "Date: $(date -u +%Y-%m-%d)"
# "./bench.sh NAME..." runs those (soak: the ten-minute soak); without
# names, every benchmark but the soak.
if [ $# -gt 0 ]; then
  BENCHES=()
  for name in "$@"; do BENCHES+=("$OMBRIX_ROOT/build-bench/bench/bench_$name"); done
else
  BENCHES=("$OMBRIX_ROOT"/build-bench/bench/bench_*)
fi
for bench in "${BENCHES[@]}"; do
  [ -f "$bench" ] && [ -x "$bench" ] || continue
  [ $# -eq 0 ] && [ "$(basename "$bench")" = bench_soak ] && continue
  echo
  echo "## $(basename "$bench")"
  "$bench"
done
