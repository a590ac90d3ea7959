// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Journal.h"

#include <QString>

/// What tells at a glance whether a session is worth anything.
struct SessionQuality
{
    qsizetype nAnswers = 0;
    qsizetype nPresentations = 0;  ///< planned
    qsizetype nCorrect = 0;        ///< of the answers
    double medianTime = 0;         ///< reaction time in ms
    double longestClockDelay = 0;  ///< ms, of the reaction clock
    qsizetype nTimingProblems = 0; ///< answers whose presentation had one
};

SessionQuality sessionQuality(const JournaledSession &session);

/// That in sentences.
QString qualityText(const SessionQuality &quality);

/// What was wrong with the timing of the answer's presentation; empty when all was well.
QString timingProblem(const JournaledAnswer &answer);
