// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/Spectrum.h"

#include <QTest>

#include <cmath>

class TestSpectrumSize : public QObject
{
    Q_OBJECT

private slots:
    void theSpectrumSizeFollowsFromTokenAndFrequency_data();
    void theSpectrumSizeFollowsFromTokenAndFrequency();
    void theLengthIsTheNextPowerOfTwo();
};

void TestSpectrumSize::theSpectrumSizeFollowsFromTokenAndFrequency_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::addColumn<double>("fs");
    QTest::addColumn<double>("upperFrequency");
    QTest::addColumn<qint64>("nFFT");
    QTest::addColumn<int>("nFreqPoints");

    QTest::newRow("defaults") << 12000 << 48000.0 << 2000.0 << qint64(16384) << 682;
    QTest::newRow("half a second") << 24000 << 48000.0 << 2000.0 << qint64(32768) << 1365;
    QTest::newRow("power of two") << 16384 << 48000.0 << 2000.0 << qint64(16384) << 682;
    QTest::newRow("one above") << 16385 << 48000.0 << 2000.0 << qint64(32768) << 1365;
    QTest::newRow("1000 samples") << 1000 << 48000.0 << 2000.0 << qint64(1024) << 42;
    QTest::newRow("1024 samples") << 1024 << 48000.0 << 2000.0 << qint64(1024) << 42;
    QTest::newRow("1025 samples") << 1025 << 48000.0 << 2000.0 << qint64(2048) << 85;
    QTest::newRow("half the rate is all bins") << 1024 << 48000.0 << 24000.0 << qint64(1024) << 512;
    QTest::newRow("above half the rate") << 1024 << 48000.0 << 30000.0 << qint64(1024) << 512;
    QTest::newRow("far above half the rate") << 1024 << 48000.0 << 1e18 << qint64(1024) << 512;
    QTest::newRow("no frequencies") << 1024 << 48000.0 << 0.0 << qint64(1024) << 0;
    QTest::newRow("one sample") << 1 << 48000.0 << 48000.0 << qint64(1) << 0;
    QTest::newRow("two samples") << 2 << 48000.0 << 48000.0 << qint64(2) << 1;
    QTest::newRow("three samples") << 3 << 48000.0 << 48000.0 << qint64(4) << 2;
    QTest::newRow("no samples") << 0 << 48000.0 << 2000.0 << qint64(0) << 0;
    QTest::newRow("largest count")
        << 2147483647 << 48000.0 << 48000.0 << qint64(2147483648) << 1073741824;
}

// Catches a length that is too short or doubled at a power of two, rounded bins and a missing cap.
void TestSpectrumSize::theSpectrumSizeFollowsFromTokenAndFrequency()
{
    QFETCH(const int, nSamples);
    QFETCH(const double, fs);
    QFETCH(const double, upperFrequency);
    QFETCH(const qint64, nFFT);
    const SpectrumSize result = spectrumSize(nSamples, fs, upperFrequency);
    QCOMPARE(result.nFFT, nFFT);
    QCOMPARE(result.duration, static_cast<double>(nFFT) / fs);
    QTEST(result.nFreqPointsToPlot, "nFreqPoints");
}

// Catches a length that differs from the logarithm's at and beside every power of two.
void TestSpectrumSize::theLengthIsTheNextPowerOfTwo()
{
    for (int exponent = 1; exponent <= 28; ++exponent) {
        for (const int nSamples : {(1 << exponent) - 1, 1 << exponent, (1 << exponent) + 1}) {
            const double byLogarithm =
                std::pow(2.0, std::ceil(std::log(nSamples) / 0.6931471805599453));
            QCOMPARE(spectrumSize(nSamples, 48000.0, 2000.0).nFFT,
                     static_cast<qint64>(byLogarithm));
        }
    }
}

QTEST_APPLESS_MAIN(TestSpectrumSize)
#include "tst_spectrumsize.moc"
