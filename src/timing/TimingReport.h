// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "timing/Play.h"
#include "timing/Statistics.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>

/// What a measurement depends on besides the sound.
struct Machine
{
    QString system;    ///< such as "Debian GNU/Linux 12 (bookworm)"
    QString kernel;    ///< and its version
    QString processor; ///< its model
    QString qt;        ///< the version with which the program runs
};

Machine thisMachine();

/// The plays of tokens of one length.
struct LengthResult
{
    qsizetype length = 0; ///< the token's samples
    int nPlays = 0;
    int nWhole = 0;            ///< plays of which every sample was heard, without a gap
    qint64 nSent = 0;          ///< samples of all plays
    qint64 nHeard = 0;         ///< samples of them that were heard
    Statistics zeroError = {}; ///< ms, of the plays whose end was heard
    Statistics timerError = {};

    /// How many percent of the samples were heard; 0 without plays.
    double heardShare() const;
};

/// A measurement of when tokens are heard and when the reaction clock starts.
struct TimingReport
{
    Machine machine;
    QString server;              ///< the sound server and its version
    QString device;              ///< the output, or the input with which its sound was recorded
    bool isInput = false;        ///< an input: sound card and loudspeaker are in the figures
    bool isExact = false;        ///< tokens were found sample by sample, otherwise by matching
    QList<LengthResult> lengths; ///< in the order of the lengths
    LengthResult all;            ///< of all plays; its length has no meaning
    QList<double> blocks;        ///< ms, one per play, in order of size

    void add(const PlayResult &result);
};

/// The period of the sound server, as far as the program can know it.
QString periodText(const TimingReport &report);

/// The limits of a good result, besides that every sample is heard. The mean of an input may be
/// below the negative limit, because it contains the delay of the sound card.
inline constexpr double largestMeanError = 3; // ms
inline constexpr double largestErrorSd = 1;   // ms
QString limitsText(const TimingReport &report);

/// Whether reaction times are right on this machine.
struct Verdict
{
    bool isGood = false;
    QString text; ///< in whole sentences
};

Verdict verdict(const TimingReport &report);

/// What to write about the measurement in a paper; empty when no token's end was heard.
QString paperText(const TimingReport &report);

struct HistogramBin
{
    double from = 0; ///< the smallest value that counts here
    double to = 0;   ///< the smallest value that does not
    int count = 0;

    bool operator==(const HistogramBin &) const = default;
};

/// The distribution of @p values, in at most 15 bins of 1, 2 or 5 times a power of ten, of 0.1 or
/// more, whose limits are multiples of that. The first and the last bin are not empty.
QList<HistogramBin> histogram(std::span<const double> values);

/// The duration of a token of @p length samples, as in "251.3 ms" and "1000 ms".
QString durationText(qsizetype length);

/// The table of a report: the headings, a row for each length, and one for all plays.
QList<QStringList> table(const TimingReport &report);

/// The report for the terminal, for scripts, and for a document.
QString toText(const TimingReport &report);
QJsonObject toJson(const TimingReport &report);
QString toHtml(const TimingReport &report);
