#!/usr/bin/env bash
# Installs what is missing, builds a release without tests into build-package/
# and makes the Debian package there (cpack -G DEB).
set -euo pipefail
OMBRIX_ROOT=$(cd "$(dirname "$0")/.." && pwd)
source "$OMBRIX_ROOT/scripts/deps.sh"
ombrix_install_deps
ombrix_build "$OMBRIX_ROOT/build-package" -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DOMBRIX_BUILD_BENCHMARKS=OFF
cd "$OMBRIX_ROOT/build-package"
cpack -G DEB
ls "$OMBRIX_ROOT"/build-package/ombrix_*.deb
