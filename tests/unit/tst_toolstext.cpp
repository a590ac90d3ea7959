// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Command.h"
#include "tools/Progress.h"
#include "tools/SessionQuality.h"

#include <QTest>

/// The texts in which the companion tells what it does and has found.
class TestToolsText : public QObject
{
    Q_OBJECT

private slots:
    void aBarShowsTheShareThatIsDone_data();
    void aBarShowsTheShareThatIsDone();
    void aFieldOfATableHasNoControlCharacter_data();
    void aFieldOfATableHasNoControlCharacter();
    void qualityCountsAnswersAndFindsTheMedian_data();
    void qualityCountsAnswersAndFindsTheMedian();
    void qualityTellsOfLateClocksAndServers();
};

void TestToolsText::aBarShowsTheShareThatIsDone_data()
{
    QTest::addColumn<qsizetype>("done");
    QTest::addColumn<qsizetype>("all");
    QTest::addColumn<QString>("expected");
    QTest::newRow("begin") << qsizetype(0) << qsizetype(3) << "[    ]   0 %";
    QTest::newRow("a third") << qsizetype(1) << qsizetype(3) << "[#   ]  33 %";
    QTest::newRow("almost") << qsizetype(999) << qsizetype(1000) << "[### ]  99 %";
    QTest::newRow("end") << qsizetype(3) << qsizetype(3) << "[####] 100 %";
    QTest::newRow("beyond") << qsizetype(4) << qsizetype(3) << "[####] 100 %";
    QTest::newRow("nothing to do") << qsizetype(0) << qsizetype(0) << "[    ]   0 %";
}

// Catches a bar that is too long for its frame, a division by zero and an end told too early.
void TestToolsText::aBarShowsTheShareThatIsDone()
{
    QFETCH(const qsizetype, done);
    QFETCH(const qsizetype, all);
    QFETCH(const QString, expected);
    QCOMPARE(progressBar(done, all, 4), expected);
}

void TestToolsText::aFieldOfATableHasNoControlCharacter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << QString::fromUtf8("Grüße 1.wav") << QString::fromUtf8("Grüße 1.wav");
    QTest::newRow("tab") << "a\tb"
                         << "a\\tb";
    QTest::newRow("line feed") << "a\nb"
                               << "a\\nb";
    QTest::newRow("carriage return") << "a\rb"
                                     << "a\\rb";
    QTest::newRow("escape") << "a\x1b[2J"
                            << "a\\x1b[2J";
    QTest::newRow("bell") << "\a"
                          << "\\x07";
    QTest::newRow("of Latin-1") << QString(QChar(0x85)) << "\\x85";
}

// Catches names that move the columns of a table, or give orders to the terminal.
void TestToolsText::aFieldOfATableHasNoControlCharacter()
{
    QFETCH(const QString, text);
    QFETCH(const QString, expected);
    QCOMPARE(tableText(text), expected);
}

namespace {

JournaledAnswer answer(double rt, bool correctness, const QJsonObject &presentation = {})
{
    JournaledAnswer answer;
    answer.entry.rt = rt;
    answer.entry.correctness = correctness;
    answer.presentation = presentation;
    return answer;
}

} // namespace

void TestToolsText::qualityCountsAnswersAndFindsTheMedian_data()
{
    QTest::addColumn<QList<double>>("times");
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << QList<double>() << "No answer of 9 was given.";
    QTest::newRow("one") << QList<double>{700}
                         << "1 of 9 answers, 100 % of them correct; median "
                            "reaction time 700 ms.";
    QTest::newRow("two") << QList<double>{900, 500}
                         << "2 of 9 answers, 50 % of them correct; median reaction time 700 ms.";
    QTest::newRow("three") << QList<double>{900, 5000, 100}
                           << "3 of 9 answers, 33 % of them correct; median reaction time 900 ms.";
}

// Catches a mean instead of the median, and shares of the presentations instead of the answers.
void TestToolsText::qualityCountsAnswersAndFindsTheMedian()
{
    QFETCH(const QList<double>, times);
    QFETCH(const QString, expected);
    JournaledSession session;
    session.order = QList<qint32>(9);
    for (const double rt : times)
        session.answers.append(answer(rt, session.answers.isEmpty()));
    const QString text = qualityText(sessionQuality(session));
    QVERIFY2(text.startsWith(expected), qPrintable(text));
}

// Catches a presentation with a problem that counts as good, and a good one as bad.
void TestToolsText::qualityTellsOfLateClocksAndServers()
{
    JournaledSession session;
    session.order = QList<qint32>(4);
    session.answers = {
        answer(1, true, {{"tokenEnd", 100.0}, {"clockStart", 104.9}, {"block", 40.0}}),
        answer(1, true, {{"tokenEnd", 100.0}, {"clockStart", 112.25}, {"block", 40.0}}),
        answer(1, true,
               {{"tokenEnd", 100.0}, {"clockStart", 99.0}, {"block", 40.0}, {"serverDelay", 21.0}}),
        answer(1, true)};
    const SessionQuality quality = sessionQuality(session);
    QCOMPARE(quality.longestClockDelay, 12.25);
    QCOMPARE(quality.nTimingProblems, 2);
    QCOMPARE(timingProblem(session.answers.at(0)), "");
    QVERIFY(timingProblem(session.answers.at(1)).contains("clock"));
    QVERIFY(timingProblem(session.answers.at(2)).contains("server"));
    QVERIFY(qualityText(quality).endsWith(
        "The reaction clock was started at most 12.3 ms after the end of the sound; presentations "
        "with a problem of timing: 2."));
}

QTEST_GUILESS_MAIN(TestToolsText)
#include "tst_toolstext.moc"
