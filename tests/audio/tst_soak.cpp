// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/Noise.h"
#include "support/ResidentMemory.h"
#include "support/SessionScores.h"
#include "support/SessionTest.h"
#include "support/WavFile.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

namespace {

constexpr int nTokens = 20;
constexpr int nTimes = 10;
constexpr int nTrials = nTokens * nTimes;

/// The first half of the tokens are the mother's: so they are sorted.
bool isMother(int token)
{
    return token < nTokens / 2;
}

QString tokenName(int token)
{
    return QString("MOV%1_%2.wav")
        .arg(isMother(token) ? "001" : "002")
        .arg(token, 2, 10, QChar('0'));
}

/// The order of the tokens is random, so that this mixes right and wrong answers to each.
bool answersMother(int trial)
{
    return trial % 3 != 1;
}

QList<QByteArray> lines(const QString &path)
{
    return contents(path).split('\n');
}

} // namespace

class TestSoak : public SessionTest
{
    Q_OBJECT

private slots:
    void hundredsOfTrialsLoseNothingAndDoNotGrow();
};

// Catches what only many trials show: memory that is not given back, a trial that is lost, counted
// twice or scored for another, and a session that gets slower or comes to a halt.
void TestSoak::hundredsOfTrialsLoseNothingAndDoNotGrow()
{
    constexpr int nSettled = 20;
    constexpr qint64 mostGrowth = 2'000'000;
    for (int token = 0; token < nTokens; ++token)
        QVERIFY(writeFile(path("tokens/" + tokenName(token)),
                          wavBytes(noise(1440 + 48 * token, token))));
    m_window->lineEditSi->setText("5.000");
    m_window->lineEditNTimes->setText(QString::number(nTimes));
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    const QList<int> sequence = m_window->randomSequence;
    QCOMPARE(sequence.size(), nTrials);
    for (int token = 0; token < nTokens; ++token) {
        QCOMPARE(m_window->data.records.at(token).filename, tokenName(token));
        QCOMPARE(sequence.count(token), nTimes);
    }
    click(m_window->pushButtonGo);

    const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
    const QSignalSpy done(m_window.get(), &MainWindow::doneDataCollection);
    ModalAnswer answers;
    answers.choose(path("soak.txt"));
    QList<bool> mothers;
    for (int token = 0; token < nTokens; ++token)
        mothers.append(isMother(token));
    SessionScores scores(mothers);
    QList<QByteArray> entryLines = {"filename\tstim\tresp\tcorrectness\trt"};
    qint64 settled = 0;
    QElapsedTimer clock;
    clock.start();
    click(subject("pushButtonIAmReady"));
    for (int trial = 0; trial < nTrials; ++trial) {
        QVERIFY2(awaitAnswering(), qPrintable(QString::number(trial)));
        QTest::qWait(2); // nobody answers in less
        const int token = sequence.at(trial);
        const bool mother = answersMother(trial);
        const bool correct = mother == isMother(token);
        click(subject(mother ? "pushButtonChoice2" : "pushButtonChoice4"));

        const Entry &entry = m_window->data.entries.at(trial);
        QCOMPARE(entry.filename, tokenName(token));
        QCOMPARE(entry.filePath, path("tokens"));
        scores.add(token, mother, entry.rt);
        QCOMPARE(scoreText(entry), scoreText(scores.entry()));
        QVERIFY2(entry.rt > 0 && entry.rt < 2000, qPrintable(QString::number(entry.rt)));
        const int rt = static_cast<int>(entry.rt);
        QCOMPARE(entry.rt, rt);
        entryLines.append((tokenName(token) + (isMother(token) ? "\tmother\t" : "\tstranger\t") +
                           (mother ? "mother\t" : "stranger\t") + (correct ? "1\t" : "0\t") +
                           QString::number(rt))
                              .toUtf8());
        if (trial == nSettled - 1)
            settled = residentMemory();
    }
    const qint64 growth = residentMemory() - settled;
    qInfo("%d trials in %lld s; since trial %d: %+lld KB resident", nTrials, clock.elapsed() / 1000,
          nSettled, growth / 1000);
    QCOMPARE(answers.problem(), "");
    QVERIFY(settled > 0);
    QVERIFY2(growth < mostGrowth, qPrintable(QString::number(growth)));
    QCOMPARE(sound.size(), 2 * nTrials);
    QCOMPARE(done.size(), 1);
    QVERIFY(subject("pushButtonDone")->isVisible());

    QList<QByteArray> recordLines = lines(path("soak.txt"));
    QCOMPARE(recordLines.size(), 1 + nTokens + 1);
    QCOMPARE(recordLines.first(), "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect");
    QCOMPARE(recordLines.last(), "");
    for (int token = 0; token < nTokens; ++token) {
        const Record &record = m_window->data.records.at(token);
        const Record expected = scores.record(token);
        QCOMPARE(scoreText(record), scoreText(expected));
        QCOMPARE(record.nMother + record.nStranger, nTimes);
        QCOMPARE(recordLines.at(1 + token), QString("%1\t%2\t%3\t%4\t%5\t%6")
                                                .arg(tokenName(token))
                                                .arg(expected.nMother)
                                                .arg(expected.nStranger)
                                                .arg(expected.rt)
                                                .arg(expected.rt_correct)
                                                .arg(expected.rt_incorrect)
                                                .toUtf8());
    }
    QCOMPARE(lines(path("soak_entries.txt")), entryLines);
    QVERIFY(lines(path("soak_parameters.txt")).contains("nTimes: " + QByteArray::number(nTimes)));
}

GUI_TEST_MAIN(TestSoak)

#include "tst_soak.moc"
