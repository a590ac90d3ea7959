// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PresentationTiming.h"

#include <QStringList>

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

constexpr double largestClockDelay = 5;    ///< ms
constexpr double largestServerDelay = 0.5; ///< blocks

double milliseconds(StreamProgress::Time time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

} // namespace

PresentationTiming presentationTiming(const StreamProgress &progress, StreamProgress::Time due,
                                      StreamProgress::Time clockStart)
{
    return {.firstTaken = milliseconds(progress.firstTakenAt() - due),
            .lastTaken = milliseconds(progress.lastTakenAt() - due),
            .tokenEnd = milliseconds(progress.tokenHeardAt().value_or(clockStart) - due),
            .clockStart = milliseconds(clockStart - due),
            .block = milliseconds(progress.block()),
            .serverDelay = milliseconds(progress.serverDelay()),
            .longestBlindness = milliseconds(progress.longestBlindness())};
}

QJsonObject toJson(const PresentationTiming &timing)
{
    return {{"firstTaken"_L1, timing.firstTaken},
            {"lastTaken"_L1, timing.lastTaken},
            {"tokenEnd"_L1, timing.tokenEnd},
            {"clockStart"_L1, timing.clockStart},
            {"block"_L1, timing.block},
            {"serverDelay"_L1, timing.serverDelay},
            {"longestBlindness"_L1, timing.longestBlindness}};
}

PresentationTiming presentationTimingFromJson(const QJsonObject &json)
{
    return {.firstTaken = json.value("firstTaken"_L1).toDouble(),
            .lastTaken = json.value("lastTaken"_L1).toDouble(),
            .tokenEnd = json.value("tokenEnd"_L1).toDouble(),
            .clockStart = json.value("clockStart"_L1).toDouble(),
            .block = json.value("block"_L1).toDouble(),
            .serverDelay = json.value("serverDelay"_L1).toDouble(),
            .longestBlindness = json.value("longestBlindness"_L1).toDouble()};
}

QString timingProblem(const PresentationTiming &timing)
{
    QStringList problems;
    if (timing.clockDelay() > largestClockDelay)
        problems.append(u"the reaction clock was started %1 ms after the end of the sound"_s.arg(
            timing.clockDelay(), 0, 'f', 1));
    if (timing.serverDelay > largestServerDelay * timing.block)
        problems.append(
            u"the sound server was %1 ms late, which probably tore a gap into the sound"_s.arg(
                timing.serverDelay, 0, 'f', 1));
    return problems.join(u"; "_s);
}
