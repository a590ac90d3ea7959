// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/StreamProgress.h"

#include <QJsonObject>
#include <QString>

/// How accurately one presentation of a token was timed, as far as the program can tell. All values
/// are in milliseconds; the first four are points in time, counted from when the sound was due.
struct PresentationTiming
{
    double firstTaken = 0; ///< the sound server took the stream's first block
    double lastTaken = 0;  ///< it took the block in which the token ends
    double tokenEnd = 0;   ///< the token had been heard, as computed from that
    double clockStart = 0; ///< the reaction clock was started

    double block = 0;            ///< duration of what the server takes at a time
    double serverDelay = 0;      ///< how late the server was, at worst, in taking a block
    double longestBlindness = 0; ///< the longest time in which a delay could have gone unseen

    /// How late the reaction clock was started; the reaction time is too short by as much.
    double clockDelay() const { return clockStart - tokenEnd; }
};

/// The timing of the presentation that was due at @p due. @p progress has followed its stream until
/// the token had been heard; the reaction clock was started at @p clockStart.
PresentationTiming presentationTiming(const StreamProgress &progress, StreamProgress::Time due,
                                      StreamProgress::Time clockStart);

/// The members of @p timing under their names.
QJsonObject toJson(const PresentationTiming &timing);

/// The timing that toJson() has made @p json of. A member that is missing is 0.
PresentationTiming presentationTimingFromJson(const QJsonObject &json);

/// What the operator must know about @p timing, in one sentence; empty when all was well. The
/// reaction clock may be up to 5 ms late, and the sound server up to half a block; a server that is
/// later has probably left a gap in the sound.
QString timingProblem(const PresentationTiming &timing);
