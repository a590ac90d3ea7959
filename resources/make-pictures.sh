#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# Draws the two feedback pictures from their SVG sources; needs rsvg-convert (librsvg2-bin).
# The pictures are committed, so that building the program needs no drawing program.
set -eu
cd "$(dirname "$0")/imageFiles"
for picture in correct incorrect; do
    rsvg-convert --width=400 --height=225 --format=png --output="$picture.png" "$picture.svg"
done
