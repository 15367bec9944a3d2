#!/bin/sh
# Renders the icon sources in resources/icons/src/*.svg to the PNGs the
# resource file lists. The PNGs are committed, so a build never needs this;
# run it after editing an SVG. Needs rsvg-convert (Debian: librsvg2-bin).
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
src="$root/resources/icons/src"
out="$root/resources/icons"

command -v rsvg-convert >/dev/null 2>&1 || {
    echo "render-icons: rsvg-convert not found (apt-get install librsvg2-bin)" >&2
    exit 1
}

for svg in "$src"/*.svg; do
    name=$(basename "$svg" .svg)
    size=48
    # The application icon is also shown by docks and task bars: render it larger.
    [ "$name" = ombrix ] && size=256
    rsvg-convert --width "$size" --height "$size" --keep-aspect-ratio "$svg" -o "$out/$name.png"
    echo "$name.png (${size}x${size})"
done
