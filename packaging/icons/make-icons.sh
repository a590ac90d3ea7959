#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# Draws the icon in its three fixed sizes from the SVG source; needs rsvg-convert (librsvg2-bin).
# The pictures are committed, so that building the program needs no drawing program.
set -eu
cd "$(dirname "$0")"
for size in 48 128 256; do
    rsvg-convert --width="$size" --height="$size" --format=png --output="ostrine-$size.png" ostrine.svg
done
