// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TimingCommand.h"

#include "tools/Progress.h"
#include "tools/TimingMeasurement.h"

#include <QCommandLineParser>
#include <QEventLoop>
#include <QJsonDocument>
#include <QTextStream>
#include <QTimer>

#include <chrono>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Measures, and returns why that was not possible; empty when it was.
QString measure(TimingMeasurement &measurement, const TimingMeasurement::Options &options)
{
    TerminalProgress progress;
    QEventLoop loop;
    QString problem;
    QObject::connect(&measurement, &TimingMeasurement::finished, &loop, &QEventLoop::quit);
    QObject::connect(&measurement, &TimingMeasurement::failed, &loop, [&](const QString &reason) {
        problem = reason;
        loop.quit();
    });
    QTimer poll;
    poll.callOnTimeout(&loop, [&] {
        if (progress(measurement.report().all.nPlays, measurement.nPlays()))
            return;
        measurement.stop();
        problem = u"Stopped before the end."_s;
        loop.quit();
    });
    poll.start(100ms);
    // Started in the loop, so that a failure at once ends it as well.
    QTimer start;
    start.setSingleShot(true);
    start.callOnTimeout(&measurement, [&] { measurement.start(options); });
    start.start(0);
    loop.exec();
    return problem;
}

} // namespace

CommandResult timingCommand(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Measures on this machine when tokens are heard and when the reaction clock starts: plays "
        "noise on the default output, as a session does, and finds it in a recording. Ends with 1 "
        "when the result is not within the limits."_s);
    const QCommandLineOption plays(
        u"plays"_s,
        u"How often a token of each length is played: 1 to %1."_s.arg(TimingMeasurement::mostPlays),
        u"N"_s, QString::number(TimingMeasurement::defaultPlays));
    const QCommandLineOption input(
        u"input"_s,
        u"Record this input, such as a microphone at the loudspeaker, instead of what the sound "
        "server passes to the output. \"pactl list short sources\" names them."_s,
        u"DEVICE"_s);
    parser.addOptions({plays, input});
    if (const std::optional<CommandResult> result = parseArguments(parser, arguments, 0))
        return *result;

    QTextStream errors(stderr);
    bool isNumber = false;
    const int nPlays = parser.value(plays).toInt(&isNumber);
    if (!isNumber || nPlays < 1 || nPlays > TimingMeasurement::mostPlays) {
        errors << "The number of plays must be 1 to " << TimingMeasurement::mostPlays << ".\n";
        return CommandResult::CouldNotRun;
    }
    if (parser.isSet(input) && parser.value(input).isEmpty()) {
        errors << "The name of the input is empty.\n";
        return CommandResult::CouldNotRun;
    }

    TimingMeasurement measurement;
    const QString problem = measure(measurement, {nPlays, parser.value(input)});
    if (!problem.isEmpty()) {
        errors << problem << '\n';
        return CommandResult::CouldNotRun;
    }
    const TimingReport &report = measurement.report();
    QTextStream out(stdout);
    if (isJsonWanted(parser))
        out << QJsonDocument(toJson(report)).toJson();
    else
        out << toText(report);
    return verdict(report).isGood ? CommandResult::NothingFound : CommandResult::Findings;
}
