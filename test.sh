#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite with CTest:
# first the plain build (build/), then the same tests under AddressSanitizer
# and UndefinedBehaviorSanitizer with the fuzz targets, each fuzzing for 20
# seconds (build-fuzz/). Arguments go to both CTest runs.
set -euo pipefail
OMBRIX_ROOT=$(cd "$(dirname "$0")" && pwd)
source "$OMBRIX_ROOT/scripts/deps.sh"
ombrix_install_deps "${OMBRIX_SANITIZER_PACKAGES[@]}"
ombrix_build "$OMBRIX_ROOT/build" -DBUILD_TESTING=ON
(cd "$OMBRIX_ROOT/build" && ctest --output-on-failure -j"$(nproc)" "$@")

ombrix_configure_sanitized "$OMBRIX_ROOT/build-fuzz" -DOMBRIX_FUZZ_SECONDS=20
cmake --build "$OMBRIX_ROOT/build-fuzz" -j"$(nproc)"
cd "$OMBRIX_ROOT/build-fuzz"
ctest --output-on-failure -j"$(nproc)" "$@"
