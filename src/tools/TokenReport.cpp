// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TokenReport.h"

#include "tools/Command.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QTextStream>

#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

QString levelText(double value)
{
    return value > 0 ? QString::number(decibels(value), 'f', 1) : u"-inf"_s;
}

QJsonValue levelJson(double value)
{
    return value > 0 ? QJsonValue(decibels(value)) : QJsonValue();
}

QString unlessZero(qint64 value)
{
    return value != 0 ? QString::number(value) : QString();
}

QJsonValue unlessZeroJson(double value)
{
    return value != 0 ? QJsonValue(value) : QJsonValue();
}

QString timeText(double seconds)
{
    const auto whole = static_cast<qint64>(std::llround(seconds));
    return whole < 60 ? u"%1 s"_s.arg(whole) : u"%1 min %2 s"_s.arg(whole / 60).arg(whole % 60);
}

QString counted(qint64 n, const QString &one, const QString &several)
{
    return (n == 1 ? u"1 %1"_s.arg(one) : u"%1 %2"_s.arg(n).arg(several));
}

struct NamedReason
{
    LeftOut::Reason reason;
    const char *word;
    const char *description;
};

constexpr NamedReason reasons[] = {
    {LeftOut::OtherSuffix, "otherSuffix", "because their names do not end in .wav"},
    {LeftOut::Folder, "folder", "because they are folders"},
    {LeftOut::Hidden, "hidden", "because they are hidden"},
    {LeftOut::Undecodable, "undecodable", "because their names are not UTF-8"},
    {LeftOut::Special, "special", "because they are no files"},
};

QJsonArray findingsToJson(const QList<Finding> &findings)
{
    QJsonArray array;
    for (const Finding &finding : findings)
        array.append(QJsonObject{{"kind"_L1, findingWord(finding.kind)},
                                 {"fact"_L1, finding.fact},
                                 {"effect"_L1, finding.effect},
                                 {"cure"_L1, finding.cure}});
    return array;
}

QJsonObject tokenToJson(const CheckedToken &token)
{
    const SoundMeasures &sound = token.measures;
    return {{"number"_L1, token.number},
            {"name"_L1, token.name},
            {"category"_L1, categoryWord(token.category)},
            {"presented"_L1, token.isPresented()},
            {"rate"_L1, unlessZeroJson(token.rate)},
            {"bits"_L1, unlessZeroJson(token.bits)},
            {"channels"_L1, unlessZeroJson(token.channels)},
            {"durationMs"_L1, unlessZeroJson(token.duration * 1000)},
            {"peakDbfs"_L1, levelJson(sound.peak)},
            {"rmsDbfs"_L1, levelJson(sound.rms)},
            {"findings"_L1, findingsToJson(token.findings)}};
}

} // namespace

QString tokenColumnTitle(TokenColumn column)
{
    switch (column) {
    case TokenColumn::Number:
        return u"Number"_s;
    case TokenColumn::Name:
        return u"Name"_s;
    case TokenColumn::Category:
        return u"Category"_s;
    case TokenColumn::Rate:
        return u"Rate (Hz)"_s;
    case TokenColumn::Bits:
        return u"Bits"_s;
    case TokenColumn::Channels:
        return u"Channels"_s;
    case TokenColumn::Duration:
        return u"Duration (ms)"_s;
    case TokenColumn::Peak:
        return u"Peak (dBFS)"_s;
    case TokenColumn::Rms:
        return u"RMS (dBFS)"_s;
    case TokenColumn::Findings:
        return u"Findings"_s;
    }
    return {};
}

QString tokenField(const CheckedToken &token, TokenColumn column)
{
    switch (column) {
    case TokenColumn::Number:
        return QString::number(token.number);
    case TokenColumn::Name:
        return tableText(token.name);
    case TokenColumn::Category:
        return categoryWord(token.category);
    case TokenColumn::Rate:
        return unlessZero(token.rate);
    case TokenColumn::Bits:
        return unlessZero(token.bits);
    case TokenColumn::Channels:
        return unlessZero(token.channels);
    case TokenColumn::Duration:
        return token.isPresented() ? QString::number(token.duration * 1000, 'f', 3) : QString();
    case TokenColumn::Peak:
        return token.isPresented() ? levelText(token.measures.peak) : QString();
    case TokenColumn::Rms:
        return token.isPresented() ? levelText(token.measures.rms) : QString();
    case TokenColumn::Findings:
        break;
    }
    return {};
}

void writeTokenTable(QTextStream &out, const FolderCheck &check)
{
    for (int column = 0; column < nTokenColumns; ++column)
        out << (column > 0 ? "\t" : "") << tokenColumnTitle(static_cast<TokenColumn>(column));
    out << '\n';
    for (const CheckedToken &token : check.tokens) {
        for (int column = 0; column < nTokenColumns - 1; ++column)
            out << tokenField(token, static_cast<TokenColumn>(column)) << '\t';
        QStringList sentences;
        for (const Finding &finding : token.findings)
            sentences.append(tableText(finding.text()));
        out << sentences.join(u' ') << '\n';
    }
}

QStringList folderSummary(const FolderCheck &check)
{
    QStringList sentences;
    sentences.append(u"%1: %2 of the mother and %3 of strangers."_s
                         .arg(counted(check.tokens.size(), u"token"_s, u"tokens"_s))
                         .arg(check.nMother)
                         .arg(check.nStranger));
    if (check.nPresentations)
        sentences.append(u"A session has %1 and lasts %2, without the time for the answers."_s.arg(
            counted(*check.nPresentations, u"presentation"_s, u"presentations"_s),
            timeText(check.sessionLength)));
    for (const NamedReason &reason : reasons) {
        QStringList names;
        for (const LeftOut &entry : check.leftOut) {
            if (entry.reason == reason.reason)
                names.append(tableText(entry.name));
        }
        if (!names.isEmpty())
            sentences.append(
                u"Left out %1: %2."_s.arg(QLatin1String(reason.description), names.join(u", "_s)));
    }
    return sentences;
}

QJsonObject toJson(const FolderCheck &check)
{
    QJsonArray tokens;
    for (const CheckedToken &token : check.tokens)
        tokens.append(tokenToJson(token));
    QJsonArray leftOut;
    for (const LeftOut &entry : check.leftOut) {
        for (const NamedReason &reason : reasons) {
            if (entry.reason == reason.reason)
                leftOut.append(QJsonObject{{"name"_L1, entry.name},
                                           {"reason"_L1, QLatin1String(reason.word)}});
        }
    }
    return {{"folder"_L1, check.folder},
            {"subjectCode"_L1, check.subCode},
            {"nTimes"_L1, check.nTimes},
            {"tokens"_L1, tokens},
            {"leftOut"_L1, leftOut},
            {"motherTokens"_L1, check.nMother},
            {"strangerTokens"_L1, check.nStranger},
            {"presentations"_L1,
             check.nPresentations ? QJsonValue(*check.nPresentations) : QJsonValue()},
            {"sessionSeconds"_L1, check.sessionLength},
            {"findings"_L1, findingsToJson(check.findings)}};
}
