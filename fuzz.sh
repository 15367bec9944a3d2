#!/usr/bin/env bash
# Installs what is missing, builds the fuzz targets with clang, AddressSanitizer
# and UndefinedBehaviorSanitizer into build-fuzz/, and runs each target for
# SECONDS (default 60) after replaying its regression inputs. Fails on any
# finding; the input that caused it is kept in build-fuzz/fuzz/work/<target>/artifacts/.
#   ./fuzz.sh [SECONDS]
set -euo pipefail
OMBRIX_ROOT=$(cd "$(dirname "$0")" && pwd)
seconds=${1:-60}
source "$OMBRIX_ROOT/scripts/deps.sh"
ombrix_install_deps "${OMBRIX_SANITIZER_PACKAGES[@]}"
ombrix_configure_sanitized "$OMBRIX_ROOT/build-fuzz" -DOMBRIX_FUZZ_SECONDS="$seconds"
cmake --build "$OMBRIX_ROOT/build-fuzz" -j"$(nproc)" --target fuzzers
cd "$OMBRIX_ROOT/build-fuzz"
ctest -L fuzz --output-on-failure -j"$(nproc)"
