#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# Generates the eight example tokens; needs espeak-ng and sox. The same versions of both always produce the same
# files: sox runs with -R and without dither.
#
# MOV001_* is the mother's voice for the subject code CHD001 (the names contain "001"), MOV002_* the stranger's.
set -eu
tokens="$(cd "$(dirname "$0")" && pwd)/tokens"
spoken="$(mktemp)"
trimmed="$(mktemp)"
trap 'rm -f "$spoken" "$trimmed"' EXIT
mkdir -p "$tokens"

# speak_words PREFIX VOICE PITCH: one file per word, 48 kHz mono 16 bit, as the reader expects it.
speak_words() {
    take=1
    for word in apple ball flower monkey; do
        espeak-ng -v "$2" -p "$3" -s 130 -a 100 -w "$spoken" "$word"
        # Removes the silence around the word: at its end it would delay the moment from which the reaction time
        # counts.
        sox -R -D "$spoken" -t wav "$trimmed" silence 1 0.005 0.5% reverse silence 1 0.005 0.5% reverse
        # The peak is 3 dB below full scale, and both ends are faded to avoid clicks.
        sox -R -D "$trimmed" -t wavpcm -b 16 -e signed-integer -r 48000 -c 1 \
            "$tokens/$1_0$take.wav" gain -n -3 fade h 0.01 0 0.03
        take=$((take + 1))
    done
}

speak_words MOV001 en+f3 60
speak_words MOV002 en+m3 35
