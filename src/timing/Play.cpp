// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/Play.h"

#include "timing/MatchedFilter.h"
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

HeardPlay findByMatching(const StampedRecording &recording, const Play &play)
{
    const size_t from = recording.positionAt(play.due);
    const size_t to = recording.positionAt(play.ended + longestRecordedDelay);
    const auto found = matchToken(recording.samples().subspan(from, to - from), play.token);
    if (!found)
        return {.token = {.length = play.token.size()}};
    const double end = static_cast<double>(from) + found->end;
    return {.token = found->token,
            .first = recording.timeOf(static_cast<double>(from + found->token.first + 1)),
            .end = recording.timeOf(end)};
}

PlayResult playResult(const Play &play, const HeardPlay &heard)
{
    PlayResult result{.length = play.token.size(),
                      .nHeard = heard.token.nSamples,
                      .whole = heard.token.whole,
                      .timerError = play.begun - play.due,
                      .block = play.timing.block};
    if (heard.token.toItsEnd)
        result.zeroError = play.ended - heard.end;
    return result;
}
