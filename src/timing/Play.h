// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/PresentationTiming.h"
#include "timing/NoiseToken.h"

#include <QList>

#include <optional>

class StampedRecording;

/// One play of a token by the program, with the times of monotonicMs().
struct Play
{
    double due = 0;                 ///< when the presentation was to begin
    double begun = 0;               ///< when it began: when the presentation timer fired
    double started = 0;             ///< soundPlaying(1)
    double ended = 0;               ///< soundPlaying(-1): when the reaction clock started
    QList<double> token = {};       ///< noise
    PresentationTiming timing = {}; ///< what the program says of it
};

/// What was heard of a play, and when.
struct HeardPlay
{
    HeardToken token;
    double first = 0; ///< when the first sample heard was over
    double end = 0;   ///< when the last one was over
};

/// Finds @p play in @p recording sample by sample. It must have been recorded for 400 ms after the
/// end of the play.
HeardPlay findExactly(const StampedRecording &recording, const Play &play);

/// The same by matchToken(), in a recording that is no exact copy of what was played, and for sound
/// that is heard up to longestRecordedDelay later.
HeardPlay findByMatching(const StampedRecording &recording, const Play &play);
inline constexpr double longestRecordedDelay = 600; // ms

/// The result of one play. Errors are in ms.
struct PlayResult
{
    qsizetype length = 0;                 ///< the token's samples
    qsizetype nHeard = 0;                 ///< how many of them were heard
    bool whole = false;                   ///< all of them, without a gap
    std::optional<double> zeroError = {}; ///< start of the reaction clock minus end of the token;
                                          ///< only if the token's end was heard
    double timerError = 0;                ///< how late the presentation timer fired
    double block = 0;                     ///< the duration of what the sound server took at a time
};

PlayResult playResult(const Play &play, const HeardPlay &heard);
