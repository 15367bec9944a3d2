#!/usr/bin/env bash
# Line coverage of src/ and tools/ by the plain test suite: builds with
# --coverage in build-coverage/, runs the tests (arguments go to CTest), and
# prints gcovr's summary and the non-blank lines of tests/ against those of
# src/ and tools/.
set -euo pipefail
OMBRIX_ROOT=$(cd "$(dirname "$0")/.." && pwd)
source "$OMBRIX_ROOT/scripts/deps.sh"
ombrix_install_deps "${OMBRIX_COVERAGE_PACKAGES[@]}"
build=$OMBRIX_ROOT/build-coverage
ombrix_build "$build" -DBUILD_TESTING=ON -DOMBRIX_BUILD_BENCHMARKS=OFF -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_CXX_FLAGS="--coverage" -DCMAKE_EXE_LINKER_FLAGS="--coverage"
find "$build" -name '*.gcda' -delete
(cd "$build" && ctest -j"$(nproc)" "$@")
# The build folder as a search path, not --object-directory: objects that
# ccache compiled with paths relative to their own build folder resolve only
# when gcovr looks for the sources upwards from each data file.
gcovr --root "$OMBRIX_ROOT" "$build" \
  --filter "$OMBRIX_ROOT/src/" --filter "$OMBRIX_ROOT/tools/" --exclude '.*/moc_.*' --exclude-directories '.*/CMakeFiles/[0-9.]+$' --print-summary -o /dev/null

lines() { find "$@" \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 cat | grep -cv '^\s*$'; }
tests=$(cd "$OMBRIX_ROOT" && lines tests)
code=$(cd "$OMBRIX_ROOT" && lines src tools)
echo "tests: $tests non-blank lines against $code of src/ and tools/ ($((1000 * tests / code / 10)).$((1000 * tests / code % 10))%)"
