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
for bench in "$OMBRIX_ROOT"/build-bench/bench/bench_*; do
  [ -f "$bench" ] && [ -x "$bench" ] || continue
  echo
  echo "## $(basename "$bench")"
  "$bench"
done
