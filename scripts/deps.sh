#!/usr/bin/env bash
# Installs the Debian packages Ombrix needs to build, test and run, when missing.
# Sourced by run.sh, test.sh and bench.sh.
set -euo pipefail

# help2man writes the man pages at build time; dpkg-dev and file let cpack
# find the Debian package's dependencies; the rest check what is installed
# (desktop entry, metainfo, MIME type). libmosquitto-dev is the MQTT client;
# the tests start their own mosquitto broker and talk to it with its clients.
# The package test runs lintian on the Debian package; the TLS test makes its
# certificates with openssl.
OMBRIX_PACKAGES=(cmake g++ make qt6-base-dev qt6-base-dev-tools qt6-serialport-dev qt6-svg-dev libgl-dev fonts-dejavu-core
                 help2man dpkg-dev file desktop-file-utils appstream shared-mime-info
                 libmosquitto-dev mosquitto mosquitto-clients lintian openssl)
# The sanitizer and fuzzing build (test.sh, fuzz.sh): clang and its runtimes
# (AddressSanitizer, UndefinedBehaviorSanitizer, libFuzzer).
OMBRIX_SANITIZER_PACKAGES=(clang-14 libclang-rt-14-dev)
# The line coverage report (scripts/coverage.sh).
OMBRIX_COVERAGE_PACKAGES=(gcovr)

ombrix_install_deps() {
  local missing=()
  for pkg in "${OMBRIX_PACKAGES[@]}" "$@"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "ok installed" || missing+=("$pkg")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  # A machine whose image was made while dpkg was busy refuses every install
  # until the half-done packages are configured; finish them first.
  if [ -n "$(dpkg --audit 2>/dev/null)" ] || [ -n "$(ls -A /var/lib/dpkg/updates 2>/dev/null)" ]; then
    echo "Finishing interrupted package configuration (dpkg --configure -a)"
    DEBIAN_FRONTEND=noninteractive $sudo dpkg --configure -a
  fi
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends \
    -o DPkg::Lock::Timeout=300 "${missing[@]}"
}

ombrix_build() {
  local dir=$1; shift
  cmake -S "$OMBRIX_ROOT" -B "$dir" "$@"
  cmake --build "$dir" -j"$(nproc)"
}

# The build with clang, AddressSanitizer, UndefinedBehaviorSanitizer and the
# fuzz targets: the tests, ombrix-cli and the fuzzers, no benchmarks.
ombrix_configure_sanitized() {
  local dir=$1; shift
  cmake -S "$OMBRIX_ROOT" -B "$dir" -DCMAKE_CXX_COMPILER=clang++-14 -DOMBRIX_BUILD_FUZZERS=ON \
    -DBUILD_TESTING=ON -DOMBRIX_BUILD_BENCHMARKS=OFF "$@"
}
