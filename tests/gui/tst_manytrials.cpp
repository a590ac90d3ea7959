// SPDX-License-Identifier: GPL-3.0-or-later
// A session of many trials by the responses alone. OSTRINE_TEST_TOKENS tells how many tokens it has
// instead of 100; each is presented 20 times.

#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/ResidentMemory.h"
#include "support/SilentSession.h"
#include "support/WavFile.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QSignalSpy>

#include <vector>

namespace {

constexpr int nTimes = 20;

/// What was answered in a trial, as the one who answered knows it.
struct Answer
{
    int token;
    bool mother;
    bool correct;
    qint64 rt;
};

/// What a token's answers add up to, in whole numbers.
struct Tally
{
    qint64 nMother = 0;
    qint64 nStranger = 0;
    qint64 nCorrect = 0;
    qint64 rt = 0;
    qint64 rtCorrect = 0;
};

double mean(qint64 sum, qint64 count)
{
    return count == 0 ? 0.0 : static_cast<double>(sum) / static_cast<double>(count);
}

/// Answers that follow no pattern of the tokens or of the trials.
bool answersMother(int trial)
{
    return (static_cast<quint32>(trial) * 2654435761U) >> 31;
}

QByteArray category(bool mother)
{
    return mother ? "mother" : "stranger";
}

/// As a result file has numbers.
QByteArray number(double value)
{
    return QByteArray::number(value, 'g', 6);
}

} // namespace

class TestManyTrials : public QObject
{
    Q_OBJECT

private slots:
    void resultsAreThoseOfAnIndependentTally();
};

// Catches a trial that is lost, counted twice or scored for another, sums that lose what is added
// to them, and memory that each trial keeps for good.
void TestManyTrials::resultsAreThoseOfAnIndependentTally()
{
    const int nTokens = qEnvironmentVariableIsSet("OSTRINE_TEST_TOKENS")
                            ? qEnvironmentVariableIntValue("OSTRINE_TEST_TOKENS")
                            : 100;
    QVERIFY(nTokens > 0);
    QLoggingCategory::setFilterRules("default.debug=false");
    const SilentSession session(nTokens, nTimes);
    const qint64 memoryBefore = residentMemory();
    OperatorWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const qint64 memoryOfWindow = residentMemory();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(session.prepare(window));
    const int nTrials = session.nTrials();
    const QList<int> order = window.randomSequence;
    QList<int> presented(nTokens, 0);
    for (const int token : order)
        ++presented[token];
    QCOMPARE(presented, QList<int>(nTokens, nTimes));

    const QSignalSpy done(&window, &MainWindow::doneDataCollection);
    ModalAnswer answers;
    answers.choose(session.path("many.txt"));
    const qint64 memoryPrepared = residentMemory();
    const qint64 prepared = clock.elapsed();
    std::vector<Answer> given;
    given.reserve(static_cast<std::size_t>(nTrials));
    clock.start(); // the reaction clock has been running for a moment
    const qint64 ahead = window.reactionTimer->elapsed();
    for (int trial = 0; trial < nTrials; ++trial) {
        const int token = order.at(trial);
        QCOMPARE(window.tokenIndex, token);
        const bool mother = answersMother(trial);
        const qint64 earliest = clock.elapsed() + ahead;
        SilentSession::answer(window, mother);
        const qint64 latest = clock.elapsed() + ahead + 1;
        const Entry &entry = window.data.entries.at(trial);
        const auto rt = static_cast<qint64>(entry.rt);
        QVERIFY2(rt >= earliest && rt <= latest, qPrintable(QString::number(trial)));
        given.push_back({token, mother, mother == SilentSession::isMother(token), rt});
        if (trial % 100 == 0)
            QCoreApplication::processEvents();
    }
    const qint64 memoryAfter = residentMemory();
    const qint64 perTrial = (memoryAfter - memoryPrepared) / nTrials;
    qInfo("%d tokens, %d trials: prepared in %lld ms, answered in %lld ms, %.0f us per trial; "
          "memory of the window %lld KB, of the prepared session %lld KB, of its trials %lld KB, "
          "%lld bytes per trial",
          nTokens, nTrials, prepared, clock.elapsed(),
          static_cast<double>(clock.nsecsElapsed()) / 1e3 / nTrials,
          (memoryOfWindow - memoryBefore) / 1000, (memoryPrepared - memoryOfWindow) / 1000,
          (memoryAfter - memoryPrepared) / 1000, perTrial);
    QCOMPARE(answers.problem(), "");
    QCOMPARE(done.size(), 1);
#ifndef __SANITIZE_ADDRESS__ // which keeps what has been freed
    constexpr qint64 mostMemoryPerTrial = 2048;
    constexpr qint64 mostMemoryBesides = 8'000'000;
    QVERIFY2(memoryAfter - memoryPrepared < mostMemoryPerTrial * nTrials + mostMemoryBesides,
             qPrintable(QString::number(memoryAfter - memoryPrepared)));
#endif

    QCOMPARE(window.data.entries.size(), nTrials);
    QList<QByteArray> entryLines = {"filename\tstim\tresp\tcorrectness\trt"};
    std::vector<Tally> tallies(static_cast<std::size_t>(nTokens));
    for (const Answer &answer : given) {
        Tally &tally = tallies.at(static_cast<std::size_t>(answer.token));
        ++(answer.mother ? tally.nMother : tally.nStranger);
        tally.nCorrect += answer.correct;
        tally.rt += answer.rt;
        tally.rtCorrect += answer.correct ? answer.rt : 0;
        entryLines.append(SilentSession::tokenName(answer.token).toUtf8() + '\t' +
                          category(SilentSession::isMother(answer.token)) + '\t' +
                          category(answer.mother) + '\t' + (answer.correct ? '1' : '0') + '\t' +
                          number(static_cast<double>(answer.rt)));
    }
    QCOMPARE(contents(session.path("many_entries.txt")).split('\n'), entryLines);

    QList<QByteArray> recordLines = {"filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect"};
    for (int token = 0; token < nTokens; ++token) {
        const Tally &tally = tallies.at(static_cast<std::size_t>(token));
        const qint64 nAnswers = tally.nMother + tally.nStranger;
        const double rt = mean(tally.rt, nAnswers);
        const double rtCorrect = mean(tally.rtCorrect, tally.nCorrect);
        const double rtIncorrect = mean(tally.rt - tally.rtCorrect, nAnswers - tally.nCorrect);
        const Record &record = window.data.records.at(token);
        QCOMPARE(nAnswers, nTimes);
        QCOMPARE(record.filename, SilentSession::tokenName(token));
        QCOMPARE(record.stim.toUtf8(), category(SilentSession::isMother(token)));
        QCOMPARE(record.nMother, tally.nMother);
        QCOMPARE(record.nStranger, tally.nStranger);
        QVERIFY(record.rt == rt && record.rt_correct == rtCorrect &&
                record.rt_incorrect == rtIncorrect);
        QCOMPARE(window.trendY.at(token), static_cast<double>(tally.nMother));
        recordLines.append(record.filename.toUtf8() + '\t' + QByteArray::number(tally.nMother) +
                           '\t' + QByteArray::number(tally.nStranger) + '\t' + number(rt) + '\t' +
                           number(rtCorrect) + '\t' + number(rtIncorrect));
    }
    QList<QByteArray> writtenRecords = contents(session.path("many.txt")).split('\n');
    QCOMPARE(writtenRecords.takeLast(), "");
    QCOMPARE(writtenRecords, recordLines);
    QVERIFY(contents(session.path("many_parameters.txt"))
                .contains("\nnTimes: " + QByteArray::number(nTimes) + '\n'));
}

GUI_TEST_MAIN(TestManyTrials)
#include "tst_manytrials.moc"
