#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks that every file a
# desktop needs is there and valid: programs, desktop entry, icon, metainfo,
# MIME type, man pages and the demo project.
# Usage: install_tree.sh BUILD_DIR
set -euo pipefail
build=$1
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
prefix=$tmp/prefix
"${CMAKE:-cmake}" --install "$build" --prefix "$prefix" > /dev/null

app_id=example.tarnwell.Ombrix
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
expect_file() { [ -f "$prefix/$1" ] || fail "missing $1"; }

for file in bin/ombrix bin/ombrix-cli \
    share/applications/$app_id.desktop \
    share/icons/hicolor/256x256/apps/ombrix.png \
    share/icons/hicolor/scalable/apps/ombrix.svg \
    share/metainfo/$app_id.metainfo.xml \
    share/mime/packages/ombrix.xml \
    share/man/man1/ombrix.1.gz share/man/man1/ombrix-cli.1.gz \
    share/ombrix/demo/dashboard_signals.def share/ombrix/demo/layouts/demo.json \
    lib/systemd/system/ombrix-bridge@.service share/doc/ombrix/examples/bridge-example.conf \
    share/doc/ombrix/copyright share/doc/ombrix/changelog.Debian.gz; do
  expect_file "$file"
done

desktop=$prefix/share/applications/$app_id.desktop
desktop-file-validate "$desktop" || fail "desktop-file-validate $app_id.desktop"
appstreamcli validate --no-net "$prefix/share/metainfo/$app_id.metainfo.xml" \
  || fail "appstreamcli validate $app_id.metainfo.xml"

# The entry starts an installed program, with an installed icon, for types the MIME file defines.
exec_program=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$desktop")
[ -x "$prefix/bin/$exec_program" ] || fail "Exec=$exec_program is not an installed program"
icon=$(sed -n 's/^Icon=//p' "$desktop")
ls "$prefix"/share/icons/hicolor/*/apps/"$icon".* > /dev/null 2>&1 || fail "Icon=$icon is not installed"
for type in $(sed -n 's/^MimeType=//p' "$desktop" | tr ';' ' '); do
  grep -q "type=\"$type\"" "$prefix/share/mime/packages/ombrix.xml" || fail "MimeType $type is not defined"
done

# The MIME database compiles, and a *.rec file is a recording.
cp -r "$prefix/share/mime" "$tmp/mime"
XDG_DATA_DIRS=$tmp update-mime-database "$tmp/mime" || fail "update-mime-database"
grep -q ':application/x-ombrix-recording:\*\.rec' "$tmp/mime/globs2" || fail "*.rec is not a recording"

# Man pages made from --help: every option of the program is in its page.
for program in ombrix ombrix-cli; do
  page=$(zcat "$prefix/share/man/man1/$program.1.gz")
  grep -q "^\.SH NAME" <<< "$page" || fail "$program.1 has no NAME section"
  grep -q "^$program \\\\- " <<< "$page" || fail "$program.1 does not name $program"
done
# The bridge unit runs the bridge command with what its configuration file names.
grep -q '^ExecStart=ombrix-cli bridge --port ${PORT} --to ${BROKER}' "$prefix/lib/systemd/system/ombrix-bridge@.service" \
  || fail "ombrix-bridge@.service does not run the bridge"
zcat "$prefix/share/man/man1/ombrix-cli.1.gz" | grep -q "bridge" || fail "ombrix-cli.1 does not name bridge"
for option in project def layout port baud fps version; do
  zcat "$prefix/share/man/man1/ombrix.1.gz" | grep -q -- "\\\\-\\\\-$option" || fail "ombrix.1 lacks --$option"
done

# The installed programs run without a display.
QT_QPA_PLATFORM=xcb DISPLAY= WAYLAND_DISPLAY= "$prefix/bin/ombrix" --version | grep -q '^Ombrix [0-9]' \
  || fail "ombrix --version"
"$prefix/bin/ombrix-cli" --version | grep -q '^ombrix-cli [0-9]' || fail "ombrix-cli --version"

[ "$failures" -eq 0 ] && echo "install tree complete and valid"
exit "$failures"
