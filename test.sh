#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite with CTest.
set -euo pipefail
OMBRIX_ROOT=$(cd "$(dirname "$0")" && pwd)
source "$OMBRIX_ROOT/scripts/deps.sh"
ombrix_install_deps
ombrix_build "$OMBRIX_ROOT/build" -DBUILD_TESTING=ON
cd "$OMBRIX_ROOT/build"
ctest --output-on-failure -j"$(nproc)" "$@"
