// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/WaveformSpan.h"

#include <QTest>

class TestWaveformSpan : public QObject
{
    Q_OBJECT

private slots:
    void theSpanIsCutUnlessTheEntireTokenIsWanted_data();
    void theSpanIsCutUnlessTheEntireTokenIsWanted();
    void applyingTheRuleAgainChangesNothing();
};

void TestWaveformSpan::theSpanIsCutUnlessTheEntireTokenIsWanted_data()
{
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("fs");
    QTest::addColumn<int>("nSamples");
    QTest::addColumn<bool>("entireToken");
    QTest::addColumn<int>("nPoints");
    QTest::addColumn<double>("expectedDuration");

    QTest::newRow("token fits, cut") << 0.25 << 48000.0 << 12000 << false << 12000 << 0.25;
    QTest::newRow("token fits, entire") << 0.25 << 48000.0 << 12000 << true << 12000 << 0.25;
    QTest::newRow("longer, cut") << 0.25 << 48000.0 << 24000 << false << 12000 << 0.25;
    QTest::newRow("longer, entire") << 0.25 << 48000.0 << 24000 << true << 24000 << 0.5;
    QTest::newRow("shorter, cut") << 0.25 << 48000.0 << 6000 << false << 6000 << 0.125;
    QTest::newRow("shorter, entire") << 0.25 << 48000.0 << 6000 << true << 6000 << 0.125;
    QTest::newRow("one sample longer, cut") << 0.25 << 48000.0 << 12001 << false << 12000 << 0.25;
    QTest::newRow("one sample longer, entire")
        << 0.25 << 48000.0 << 12001 << true << 12001 << 12001 / 48000.0;
    QTest::newRow("one sample shorter")
        << 0.25 << 48000.0 << 11999 << false << 11999 << 11999 / 48000.0;
    QTest::newRow("floor of the product")
        << 0.250021 << 48000.0 << 12001 << false << 12001 << 0.250021;
    QTest::newRow("fraction of a sample dropped")
        << 0.2500999 << 48000.0 << 20000 << false << 12004 << 0.2500999;
    QTest::newRow("other rate") << 0.25 << 44100.0 << 44100 << true << 44100 << 1.0;
    QTest::newRow("no samples") << 0.25 << 48000.0 << 0 << true << 0 << 0.0;
    QTest::newRow("no span, cut") << 0.0 << 48000.0 << 12000 << false << 0 << 0.0;
    QTest::newRow("no span, entire") << 0.0 << 48000.0 << 12000 << true << 12000 << 0.25;
}

// Catches rounding to the nearest sample, and a flag that is ignored or applied to short tokens.
void TestWaveformSpan::theSpanIsCutUnlessTheEntireTokenIsWanted()
{
    QFETCH(const double, duration);
    QFETCH(const double, fs);
    QFETCH(const int, nSamples);
    QFETCH(const bool, entireToken);
    const WaveformSpan result = waveformSpan(duration, fs, nSamples, entireToken);
    QTEST(result.nPoints, "nPoints");
    QTEST(result.duration, "expectedDuration");
}

// Catches a span that keeps shrinking because samples / fs x fs falls just below a whole number:
// the rule runs again before each drawing, on its own result.
void TestWaveformSpan::applyingTheRuleAgainChangesNothing()
{
    for (const double fs : {8000.0, 22050.0, 44100.0, 48000.0}) {
        for (int nSamples = 1; nSamples < 60000; nSamples += 7) {
            const WaveformSpan first = waveformSpan(0.25, fs, nSamples, true);
            const WaveformSpan second = waveformSpan(first.duration, fs, nSamples, true);
            QCOMPARE(second.nPoints, nSamples);
            QCOMPARE(second.duration, first.duration);
        }
    }
}

QTEST_APPLESS_MAIN(TestWaveformSpan)
#include "tst_waveformspan.moc"
