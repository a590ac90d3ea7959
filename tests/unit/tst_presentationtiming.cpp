// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PresentationTiming.h"

#include <QTest>

#include <chrono>

using namespace std::chrono_literals;

class TestPresentationTiming : public QObject
{
    Q_OBJECT

private slots:
    void theTimingIsTakenFromTheStreamsMoments();
    void aTimingBeyondItsLimitIsReported_data();
    void aTimingBeyondItsLimitIsReported();
};

// Catches a figure that is taken from another moment, counted from another one, or in another unit.
void TestPresentationTiming::theTimingIsTakenFromTheStreamsMoments()
{
    StreamProgress progress;
    const StreamProgress::Time due = 1h;
    progress.start(8192, due + 1ms);
    const StreamProgress::Time now = due + 20ms;
    // Blocks of 2048 samples, 42.7 ms, of which the fourth comes late; the third is seen late.
    progress.look(now, 2048, 0);
    progress.look(now + 43ms, 4096, 0);
    progress.look(now + 84ms, 4096, 0);
    progress.look(now + 86ms, 6144, 0);
    for (int ms = 87; ms < 150; ++ms)
        progress.look(now + ms * 1ms, 6144, 8192);
    progress.look(now + 150ms, 8192, 8192);
    const PresentationTiming timing = presentationTiming(progress, due, now + 200ms);
    QCOMPARE(timing.firstTaken, 20.0);
    QCOMPARE(timing.lastTaken, 170.0);
    QVERIFY(qAbs(timing.block - 2048 / 48.0) < 0.001);
    QVERIFY(qAbs(timing.tokenEnd - (170 + 2048 / 48.0)) < 0.001);
    QCOMPARE(timing.clockStart, 220.0);
    QVERIFY(qAbs(timing.clockDelay() - (50 - 2048 / 48.0)) < 0.001);
    QCOMPARE(timing.longestBlindness, 43.0);
}

void TestPresentationTiming::aTimingBeyondItsLimitIsReported_data()
{
    QTest::addColumn<double>("clockStart");
    QTest::addColumn<double>("serverDelay");
    QTest::addColumn<double>("block");
    QTest::addColumn<QString>("text");

    QTest::newRow("none") << 500.0 << 0.0 << 42.0 << "";
    QTest::newRow("clock 5 ms late") << 505.0 << 0.0 << 42.0 << "";
    QTest::newRow("clock later") << 505.1 << 0.0 << 42.0
                                 << "the reaction clock was started 5.1 ms after the end of the "
                                    "sound";
    QTest::newRow("server half a block late") << 500.0 << 21.0 << 42.0 << "";
    QTest::newRow("server later")
        << 500.0 << 21.1 << 42.0
        << "the sound server was 21.1 ms late, which probably tore a gap into the sound";
    QTest::newRow("server later than half a shorter block")
        << 500.0 << 6.1 << 12.0
        << "the sound server was 6.1 ms late, which probably tore a gap into the sound";
    QTest::newRow("both") << 600.0 << 100.0 << 42.0
                          << "the reaction clock was started 100.0 ms after the end of the sound; "
                             "the sound server was 100.0 ms late, which probably tore a gap into "
                             "the sound";
}

// Catches a limit moved to either side, and a figure that is left out.
void TestPresentationTiming::aTimingBeyondItsLimitIsReported()
{
    QFETCH(const double, clockStart);
    QFETCH(const double, serverDelay);
    QFETCH(const double, block);
    QTEST(timingProblem({.tokenEnd = 500,
                         .clockStart = clockStart,
                         .block = block,
                         .serverDelay = serverDelay}),
          "text");
}

QTEST_APPLESS_MAIN(TestPresentationTiming)
#include "tst_presentationtiming.moc"
