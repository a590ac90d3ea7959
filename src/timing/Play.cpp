// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/Play.h"

#include "timing/StampedRecording.h"

HeardPlay findExactly(const StampedRecording &recording, const Play &play)
{
    constexpr double longestDelay = 400; // ms
    const size_t from = recording.positionAt(play.due);
    const size_t to = recording.positionAt(play.ended + longestDelay);
    HeardPlay heard;
    heard.token = findToken(recording.samples().subspan(from, to - from), play.token);
    if (heard.token.nSamples > 0) {
        heard.first = recording.timeOf(static_cast<double>(from + heard.token.first + 1));
        heard.end = recording.timeOf(static_cast<double>(from + heard.token.last + 1));
    }
    return heard;
}
