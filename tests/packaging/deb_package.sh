#!/usr/bin/env bash
# Makes the Debian package with the build's CPack settings, installs it with
# dpkg into a clean root and runs the programs installed there; apt then
# resolves its dependencies against this Debian system without installing.
# Usage: deb_package.sh BUILD_DIR
set -euo pipefail
build=$1
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# The tree `cmake --install` makes, packaged as `cpack -G DEB` would. Packing
# the install tree rather than the build spares the pass over every target
# that cpack's own install makes first, which costs more than the rest.
"${CMAKE:-cmake}" --install "$build" --prefix "$tmp/stage" --strip > /dev/null
"${CPACK:-cpack}" -G DEB --config "$build/CPackConfig.cmake" -B "$tmp/out" \
  -D CPACK_INSTALL_CMAKE_PROJECTS= -D "CPACK_INSTALLED_DIRECTORIES=$tmp/stage;usr" > "$tmp/cpack.log" \
  || { cat "$tmp/cpack.log"; exit 1; }
deb=$(ls "$tmp"/out/ombrix_*.deb)

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

# Dependencies found in the binaries by dpkg-shlibdeps, not written by hand.
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
for library in libqt6core6 libqt6widgets6 libqt6serialport6 libmosquitto1 libc6; do
  grep -q "$library" <<< "$depends" || fail "Depends lacks $library"
done

# dpkg unpacks it into an empty root of its own.
root=$tmp/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers"
touch "$root/var/lib/dpkg/status" "$root/var/lib/dpkg/available"
dpkg --root="$root" --log=/dev/null --force-not-root --force-depends --force-script-chrootless \
  --no-triggers -i "$deb" > "$tmp/dpkg.log" 2>&1 || { cat "$tmp/dpkg.log"; fail "dpkg -i"; }
dpkg --root="$root" -s ombrix 2>/dev/null | grep -q '^Status: install ok' || fail "dpkg does not list ombrix as installed"
for file in usr/bin/ombrix usr/bin/ombrix-cli usr/share/applications/example.tarnwell.Ombrix.desktop \
    usr/share/man/man1/ombrix.1.gz usr/share/mime/packages/ombrix.xml usr/lib/systemd/system/ombrix-bridge@.service \
    usr/share/doc/ombrix/copyright usr/share/doc/ombrix/changelog.Debian.gz; do
  [ -f "$root/$file" ] || fail "the package lacks /$file"
done

# The installed programs run on this system's libraries, without a display.
QT_QPA_PLATFORM=xcb DISPLAY= WAYLAND_DISPLAY= "$root/usr/bin/ombrix" --version || fail "ombrix --version"
"$root/usr/bin/ombrix-cli" --version || fail "ombrix-cli --version"
"$root/usr/bin/ombrix-cli" check-def "$root/usr/share/ombrix/demo/dashboard_signals.def" || fail "ombrix-cli check-def on the demo"

# Debian's own checks find no error (warnings are for a maintainer to weigh).
lintian --fail-on error --suppress-tags-from-file /dev/null "$deb" > "$tmp/lintian.log" 2>&1 \
  || { cat "$tmp/lintian.log"; fail "lintian reports errors"; }

# Every dependency is satisfiable here: apt plans the install without doing it.
apt-get install --simulate --no-install-recommends "$deb" > "$tmp/apt.log" 2>&1 \
  && grep -q '^Inst ombrix ' "$tmp/apt.log" || { cat "$tmp/apt.log"; fail "apt cannot install the package"; }

[ "$failures" -eq 0 ] && echo "$(basename "$deb") installs and runs"
exit "$failures"
