// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/Spectrum.h"

#include <QTest>

#include <cmath>
#include <numbers>

using std::numbers::pi;

namespace {

/// @p n samples of a sine of amplitude 1 with @p cycles cycles in @p period samples.
QList<double> sine(qsizetype n, double cycles, double period, double phase = 0)
{
    QList<double> samples(n);
    for (qsizetype i = 0; i < n; ++i)
        samples[i] = std::sin(2 * pi * cycles * static_cast<double>(i) / period + phase);
    return samples;
}

bool near(double value, double expected, double bound = 1e-12)
{
    return std::abs(value - expected) <= bound;
}

} // namespace

class TestSpectrum : public QObject
{
    Q_OBJECT

private slots:
    void aWindowWeightsTheSamplesByItsType_data();
    void aWindowWeightsTheSamplesByItsType();
    void aWindowShorterThanTheListRepeats();
    void aWindowOverNoSamplesDoesNothing();

    void aSpectrumHasHalfAsManyBinsAsPoints_data();
    void aSpectrumHasHalfAsManyBinsAsPoints();
    void frequenciesRiseFromZeroInEqualSteps();
    void aSineOnABinShowsItsAmplitudeInThatBin_data();
    void aSineOnABinShowsItsAmplitudeInThatBin();
    void aCosineShowsItsPhaseInRadians();
    void theFirstBinTakesInTheNyquistTerm_data();
    void theFirstBinTakesInTheNyquistTerm();
    void amplitudesAreScaledByHalfTheTokensLength_data();
    void amplitudesAreScaledByHalfTheTokensLength();
    void aShortTokenIsPaddedWithZeros();
    void samplesBehindTheTransformDoNotCount();
};

void TestSpectrum::aWindowWeightsTheSamplesByItsType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QList<double>>("weights");

    QTest::newRow("none") << 0 << QList<double>{1, 1, 1, 1, 1};
    QTest::newRow("Hann") << 1 << QList<double>{0, 0.5, 1, 0.5, 0};
    QTest::newRow("unknown") << 2 << QList<double>{0, 0, 0, 0, 0};
    QTest::newRow("negative") << -1 << QList<double>{0, 0, 0, 0, 0};
}

// Catches weights of another kind of window, and a kind that does not exist taken for one that
// does.
void TestSpectrum::aWindowWeightsTheSamplesByItsType()
{
    QFETCH(const int, type);
    QFETCH(const QList<double>, weights);
    const QList<double> samples = {0.5, -0.5, 0.25, 1, -1};
    QList<double> weighted = samples;
    applyWindow(weighted, 5, type);
    QCOMPARE(weighted.size(), samples.size());
    for (qsizetype i = 0; i < samples.size(); ++i)
        QVERIFY2(near(weighted[i], samples[i] * weights[i]), QByteArray::number(i));
}

// Catches a window as long as the list: it has the token's length, and repeats behind it.
void TestSpectrum::aWindowShorterThanTheListRepeats()
{
    QList<double> weighted(8, 1.0);
    applyWindow(weighted, 5, 1);
    const QList<double> weights = {0, 0.5, 1, 0.5, 0, 0.5, 1, 0.5};
    QCOMPARE(weighted.size(), weights.size());
    for (qsizetype i = 0; i < weights.size(); ++i)
        QVERIFY2(near(weighted[i], weights[i]), QByteArray::number(i));
}

// Catches a division by a length of 0 and a list that grows.
void TestSpectrum::aWindowOverNoSamplesDoesNothing()
{
    QList<double> samples;
    for (const int type : {0, 1, 2}) {
        applyWindow(samples, 0, type);
        QVERIFY(samples.isEmpty());
    }
}

void TestSpectrum::aSpectrumHasHalfAsManyBinsAsPoints_data()
{
    QTest::addColumn<qint64>("nFFT");
    QTest::addColumn<qsizetype>("nBins");

    QTest::newRow("no transform") << qint64{0} << qsizetype{0};
    QTest::newRow("one point") << qint64{1} << qsizetype{0};
    QTest::newRow("two points") << qint64{2} << qsizetype{1};
    QTest::newRow("four points") << qint64{4} << qsizetype{2};
    QTest::newRow("default") << qint64{16384} << qsizetype{8192};
}

// Catches lists that do not have one value for each bin below half the rate.
void TestSpectrum::aSpectrumHasHalfAsManyBinsAsPoints()
{
    QFETCH(const qint64, nFFT);
    QFETCH(const qsizetype, nBins);
    const Spectrum spectrum =
        amplitudeSpectrum(QList<double>(nFFT, 0.5), static_cast<qint32>(nFFT), nFFT, 1);
    QCOMPARE(spectrum.frequencies.size(), nBins);
    QCOMPARE(spectrum.amplitudes.size(), nBins);
    QCOMPARE(spectrum.phases.size(), nBins);
}

// Catches a bin that is counted from 1, or another distance between two.
void TestSpectrum::frequenciesRiseFromZeroInEqualSteps()
{
    const Spectrum spectrum = amplitudeSpectrum(QList<double>(8, 0.0), 8, 8, 48000.0 / 8);
    QCOMPARE(spectrum.frequencies, (QList<double>{0, 6000, 12000, 18000}));
}

void TestSpectrum::aSineOnABinShowsItsAmplitudeInThatBin_data()
{
    QTest::addColumn<qsizetype>("n");
    QTest::addColumn<qsizetype>("bin");

    for (const qsizetype n : {4, 8, 64, 1024, 16384, 32768}) {
        for (const qsizetype bin : {qsizetype{1}, n / 4, n / 2 - 1})
            QTest::addRow("%lld of %lld points", static_cast<long long>(bin),
                          static_cast<long long>(n))
                << n << bin;
    }
}

// Catches an amplitude or a phase of another scale, and a sine that leaks into other bins: one that
// fills the token is shown as it is.
void TestSpectrum::aSineOnABinShowsItsAmplitudeInThatBin()
{
    QFETCH(const qsizetype, n);
    QFETCH(const qsizetype, bin);
    const auto samples = sine(n, static_cast<double>(bin), static_cast<double>(n));
    const Spectrum spectrum = amplitudeSpectrum(samples, static_cast<qint32>(n), n, 1);
    for (qsizetype k = 0; k < n / 2; ++k)
        QVERIFY2(near(spectrum.amplitudes[k], k == bin ? 1 : 0, 1e-9),
                 QByteArray::number(k) + ": " + QByteArray::number(spectrum.amplitudes[k]));
    QVERIFY(near(spectrum.phases[bin], -pi / 2, 1e-9));
}

// Catches a phase of the other sign, in another unit or counted from the sine.
void TestSpectrum::aCosineShowsItsPhaseInRadians()
{
    for (const double phase : {0.0, 0.5, -0.5, 3.0, -3.0}) {
        const auto samples = sine(256, 7, 256, phase + pi / 2);
        const Spectrum spectrum = amplitudeSpectrum(samples, 256, 256, 1);
        QVERIFY2(near(spectrum.phases[7], phase), QByteArray::number(phase));
    }
}

void TestSpectrum::theFirstBinTakesInTheNyquistTerm_data()
{
    QTest::addColumn<QList<double>>("samples");
    QTest::addColumn<double>("amplitude");
    QTest::addColumn<double>("phase");

    QTest::newRow("constant") << QList<double>{1, 1, 1, 1} << 2.0 << 0.0;
    QTest::newRow("alternating") << QList<double>{1, -1, 1, -1} << 2.0 << -pi / 2;
    // The sum is 4 and the alternating sum 4: sqrt(16 + 16) / 2.
    QTest::newRow("both") << QList<double>{2, 0, 2, 0} << 2.8284271247461903 << -pi / 4;
    QTest::newRow("two samples") << QList<double>{3, 1} << std::sqrt(20.0) << std::atan2(-2, 4);
}

// Catches a first bin that leaves out what stands at half the rate, or shows it elsewhere.
void TestSpectrum::theFirstBinTakesInTheNyquistTerm()
{
    QFETCH(const QList<double>, samples);
    QFETCH(const double, amplitude);
    QFETCH(const double, phase);
    const Spectrum spectrum =
        amplitudeSpectrum(samples, static_cast<qint32>(samples.size()), samples.size(), 1);
    QVERIFY(near(spectrum.amplitudes[0], amplitude));
    QVERIFY(near(spectrum.phases[0], phase));
}

void TestSpectrum::amplitudesAreScaledByHalfTheTokensLength_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::addColumn<double>("divisor");

    QTest::newRow("2") << 2 << 1.0;
    QTest::newRow("3 is halved as an integer") << 3 << 1.0;
    QTest::newRow("4") << 4 << 2.0;
    QTest::newRow("12000, not the transform's length") << 12000 << 6000.0;
}

// Catches amplitudes divided by half the transform's length in place of half the token's, or by a
// half that is not rounded down.
void TestSpectrum::amplitudesAreScaledByHalfTheTokensLength()
{
    QFETCH(const int, nSamples);
    QFETCH(const double, divisor);
    const Spectrum spectrum = amplitudeSpectrum(QList<double>{1, 0, 0, 0}, nSamples, 4, 1);
    QVERIFY(near(spectrum.amplitudes[1], 1 / divisor));
}

// Catches a token shorter than the transform that is repeated or read beyond its end.
void TestSpectrum::aShortTokenIsPaddedWithZeros()
{
    // The transform of three ones at a quarter of the rate: 1 - i - 1.
    const Spectrum spectrum = amplitudeSpectrum(QList<double>{1, 1, 1}, 3, 4, 1);
    QVERIFY(near(spectrum.amplitudes[1], 1));
    QVERIFY(near(spectrum.phases[1], -pi / 2));
}

// Catches samples behind the transform's length that count.
void TestSpectrum::samplesBehindTheTransformDoNotCount()
{
    const Spectrum cut = amplitudeSpectrum(QList<double>{1, 2, 3, 4, 50, 60}, 4, 4, 1);
    const Spectrum whole = amplitudeSpectrum(QList<double>{1, 2, 3, 4}, 4, 4, 1);
    QCOMPARE(cut.amplitudes, whole.amplitudes);
    QCOMPARE(cut.phases, whole.phases);
}

QTEST_GUILESS_MAIN(TestSpectrum)
#include "tst_spectrum.moc"
