// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/SessionQuality.h"

#include "audio/PresentationTiming.h"
#include "timing/Statistics.h"

#include <algorithm>

using namespace Qt::StringLiterals;

SessionQuality sessionQuality(const JournaledSession &session)
{
    SessionQuality quality;
    quality.nAnswers = session.answers.size();
    quality.nPresentations = session.order.size();
    Statistics times;
    for (const JournaledAnswer &answer : session.answers) {
        times.add(answer.entry.rt);
        quality.nCorrect += answer.entry.correctness ? 1 : 0;
        const PresentationTiming timing = presentationTimingFromJson(answer.presentation);
        quality.longestClockDelay = std::max(quality.longestClockDelay, timing.clockDelay());
        quality.nTimingProblems += timingProblem(timing).isEmpty() ? 0 : 1;
    }
    quality.medianTime = times.median();
    return quality;
}

QString qualityText(const SessionQuality &quality)
{
    if (quality.nAnswers == 0)
        return u"No answer of %1 was given."_s.arg(quality.nPresentations);
    return u"%1 of %2 answers, %3 % of them correct; median reaction time %4 ms. "
           "The reaction clock was started at most %5 ms after the end of the sound; "
           "presentations with a problem of timing: %6."_s.arg(quality.nAnswers)
               .arg(quality.nPresentations)
               .arg(100.0 * static_cast<double>(quality.nCorrect) /
                        static_cast<double>(quality.nAnswers),
                    0, 'f', 0)
               .arg(quality.medianTime, 0, 'f', 0)
               .arg(quality.longestClockDelay, 0, 'f', 1)
               .arg(quality.nTimingProblems);
}

QString timingProblem(const JournaledAnswer &answer)
{
    return timingProblem(presentationTimingFromJson(answer.presentation));
}
