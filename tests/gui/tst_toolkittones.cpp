// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PelkClasses.h"
#include "support/GuiTestMain.h"
#include "support/ToolkitTest.h"

#include <QtNumeric>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <numeric>

namespace {

double mean(const QList<double> &samples)
{
    return std::accumulate(samples.cbegin(), samples.cend(), 0.0) /
           static_cast<double>(samples.size());
}

double meanSquare(const QList<double> &samples)
{
    return std::inner_product(samples.cbegin(), samples.cend(), samples.cbegin(), 0.0) /
           static_cast<double>(samples.size());
}

double peak(const QList<double> &samples)
{
    double largestSoFar = 0.0;
    for (const double sample : samples)
        largestSoFar = std::max(largestSoFar, std::abs(sample));
    return largestSoFar;
}

/// The mean of sin(i step + phase) over i = 0 .. n-1 in closed form; step in radians, not a
/// multiple of 2 pi.
double meanOfSines(int n, double step, double phase)
{
    return std::sin(n * step / 2) / std::sin(step / 2) * std::sin(phase + (n - 1) * step / 2) / n;
}

double radians(double degrees)
{
    return degrees / 180 * std::numbers::pi;
}

} // namespace

class TestToolkitTones : public ToolkitTest
{
    Q_OBJECT

private slots:
    void noiseIsUniformFromZeroToOne();
    void noiseIsSeededByTheSecond();
    void noiseChangesWithTheSecond();
    void noiseOfNoSamplesStillSeedsTheGenerator_data();
    void noiseOfNoSamplesStillSeedsTheGenerator();
    void aTonesLengthIsTheProductCutToAnInt_data();
    void aTonesLengthIsTheProductCutToAnInt();
    void aSineStartsAtItsPhase();
    void aSineFollowsItsFormulaToTheLastBit_data();
    void aSineFollowsItsFormulaToTheLastBit();
    void aSineHasTheMeanPeakAndPowerOfItsClosedForm_data();
    void aSineHasTheMeanPeakAndPowerOfItsClosedForm();
    void aModulatedToneStartsAtItsEnvelopePeak();
    void aModulatedToneFollowsItsFormulaToTheLastBit_data();
    void aModulatedToneFollowsItsFormulaToTheLastBit();
    void aModulatedToneHasTheMeanAndPowerOfItsClosedForm_data();
    void aModulatedToneHasTheMeanAndPowerOfItsClosedForm();
    void aModulatedToneIsNormalisedToItsEnvelopePeak_data();
    void aModulatedToneIsNormalisedToItsEnvelopePeak();
    void normalisingByZeroGivesNoFiniteSample();
};

// Catches noise that is centred, scaled otherwise or not uniform. The bounds are five standard
// deviations of the mean and of the variance: 1 / sqrt(12 n) and 1 / sqrt(180 n).
void TestToolkitTones::noiseIsUniformFromZeroToOne()
{
    constexpr int n = 1'000'000;
    const QList<double> noise = whiteNoise(n);
    QCOMPARE(noise.size(), n);
    const auto [least, most] = std::minmax_element(noise.cbegin(), noise.cend());
    QVERIFY(*least >= 0.0 && *least < 0.001);
    QVERIFY(*most <= 1.0 && *most > 0.999);
    const double average = mean(noise);
    const double variance = meanSquare(noise) - average * average;
    QVERIFY2(std::abs(average - 0.5) < 5 / std::sqrt(12.0 * n),
             qPrintable(QString::number(average)));
    QVERIFY2(std::abs(variance - 1 / 12.0) < 5 / std::sqrt(180.0 * n),
             qPrintable(QString::number(variance)));
}

// Catches another generator, seed or divisor, and a second call that goes on with the first one's
// sequence.
void TestToolkitTones::noiseIsSeededByTheSecond()
{
    const QList<QList<double>> noises = withinOneSecond([](unsigned int second) {
        const QList<double> first = whiteNoise(1000);
        const QList<double> again = whiteNoise(1000);
        QList<double> expected;
        std::srand(second);
        for (int i = 0; i < 1000; ++i)
            expected.append(std::rand() / 2147483647.0);
        return QList<QList<double>>{first, again, expected};
    });
    QCOMPARE(noises.at(0), noises.at(2));
    QCOMPARE(noises.at(1), noises.at(2));
}

// Catches a constant seed.
void TestToolkitTones::noiseChangesWithTheSecond()
{
    const QList<double> noise = whiteNoise(1000);
    QTRY_VERIFY(whiteNoise(1000) != noise);
}

void TestToolkitTones::noiseOfNoSamplesStillSeedsTheGenerator_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::newRow("none") << 0;
    QTest::newRow("negative") << -1;
    QTest::newRow("most negative") << smallest;
}

// Catches a negative size taken as it is, and an empty noise that does not seed.
void TestToolkitTones::noiseOfNoSamplesStillSeedsTheGenerator()
{
    QFETCH(const int, nSamples);
    QVERIFY(whiteNoise(nSamples).isEmpty());
    const bool seeded = withinOneSecond([nSamples](unsigned int second) {
        std::srand(second);
        const int expected = std::rand();
        whiteNoise(nSamples);
        return std::rand() == expected;
    });
    QVERIFY(seeded);
}

void TestToolkitTones::aTonesLengthIsTheProductCutToAnInt_data()
{
    QTest::addColumn<double>("samplingRate");
    QTest::addColumn<double>("duration");
    QTest::addColumn<int>("expected");
    QTest::newRow("whole") << 44100.0 << 0.5 << 22050;
    QTest::newRow("a fraction is cut off") << 1000.0 << 0.0029 << 2;
    QTest::newRow("product just below 29") << 100.0 << 0.29 << 28;
    QTest::newRow("one") << 1.0 << 1.0 << 1;
    QTest::newRow("less than one") << 8000.0 << 0.0001 << 0;
    QTest::newRow("nothing") << 8000.0 << 0.0 << 0;
    QTest::newRow("negative") << 8000.0 << -1.0 << 0;
    QTest::newRow("just negative") << 8000.0 << -1e-9 << 0;
    QTest::newRow("both negative") << -8000.0 << -0.001 << 8;
    QTest::newRow("2^31") << 2147483648.0 << 1.0 << 0;
    QTest::newRow("far beyond an int") << 1e300 << 1e300 << 0;
    QTest::newRow("infinite") << 8000.0 << infinity << 0;
    QTest::newRow("minus infinite") << 8000.0 << -infinity << 0;
    QTest::newRow("not a number") << notANumber << 1.0 << 0;
}

// Catches rounding, and a conversion to int of what no int can hold.
void TestToolkitTones::aTonesLengthIsTheProductCutToAnInt()
{
    QFETCH(const double, samplingRate);
    QFETCH(const double, duration);
    QFETCH(const int, expected);
    QCOMPARE(sine(samplingRate, duration, 100, 1, 0).size(), expected);
    QCOMPARE(sam(samplingRate, duration, 100, 10, 1, 1, 0, 0, true).size(), expected);
}

// Catches a phase in radians, and a sample missing at the end.
void TestToolkitTones::aSineStartsAtItsPhase()
{
    const QList<double> tone = sine(8000, 0.001, 1000, 1, 90);
    QCOMPARE(tone.size(), 8);
    QVERIFY(tone.first() == 1.0);
}

void TestToolkitTones::aSineFollowsItsFormulaToTheLastBit_data()
{
    QTest::addColumn<double>("samplingRate");
    QTest::addColumn<double>("frequency");
    QTest::addColumn<double>("amplitude");
    QTest::addColumn<double>("phase");
    QTest::newRow("plain") << 44100.0 << 1000.0 << 1.0 << 0.0;
    QTest::newRow("odd numbers") << 22050.0 << 441.7 << 0.3 << 33.3;
    QTest::newRow("negative") << 48000.0 << -997.0 << -2.5 << -271.0;
    QTest::newRow("above half the sampling rate") << 8000.0 << 7100.0 << 1.0 << 10.0;
    QTest::newRow("constant") << 8000.0 << 0.0 << 3.0 << 30.0;
    QTest::newRow("silent") << 8000.0 << 100.0 << 0.0 << 30.0;
}

// Catches any other order of the operations, which would change the last bits of a token; and, by
// the comparison with a sine in turns and more digits, a formula that is itself wrong.
void TestToolkitTones::aSineFollowsItsFormulaToTheLastBit()
{
    QFETCH(const double, samplingRate);
    QFETCH(const double, frequency);
    QFETCH(const double, amplitude);
    QFETCH(const double, phase);
    const QList<double> tone = sine(samplingRate, 0.1, frequency, amplitude, phase);
    QCOMPARE(tone.size(), static_cast<int>(samplingRate / 10));
    const double turn = 6.283185307179586 * frequency;
    for (int i = 0; i < tone.size(); ++i) {
        const double sample =
            std::sin(i * turn / samplingRate + phase * 0.017453292519943295) * amplitude;
        QVERIFY2(tone.at(i) == sample, qPrintable(QString::number(i)));

        const long double turns =
            static_cast<long double>(frequency) * i / samplingRate + phase / 360.0L;
        const long double exact =
            amplitude * std::sin(2 * std::numbers::pi_v<long double> * std::fmod(turns, 1.0L));
        QVERIFY2(std::abs(static_cast<double>(tone.at(i) - exact)) <= 1e-12 * std::abs(amplitude),
                 qPrintable(QString::number(i)));
    }
}

void TestToolkitTones::aSineHasTheMeanPeakAndPowerOfItsClosedForm_data()
{
    QTest::addColumn<double>("samplingRate");
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("frequency");
    QTest::addColumn<double>("amplitude");
    QTest::addColumn<double>("phase");
    QTest::addColumn<double>("peakOfAmplitude");
    // A quarter of the sampling rate is sampled at phase, phase + 90, ..., and an eighth at every
    // 45 degrees, which tells the largest of the samples.
    QTest::newRow("whole periods") << 8000.0 << 0.1 << 2000.0 << 2.0 << 0.0 << 1.0;
    QTest::newRow("sampled beside its crests")
        << 8000.0 << 0.1 << 2000.0 << 0.5 << 45.0 << std::sqrt(0.5);
    QTest::newRow("30 degrees") << 8000.0 << 0.1 << 2000.0 << 1.0 << 30.0 << std::sqrt(0.75);
    QTest::newRow("22.5 degrees") << 8000.0 << 0.1 << 1000.0 << 1.0 << 22.5
                                  << std::cos(std::numbers::pi / 8);
    QTest::newRow("a period and a quarter") << 8000.0 << 0.00125 << 1000.0 << 3.0 << 0.0 << 1.0;
    QTest::newRow("half a period") << 8000.0 << 0.5 << 1.0 << 0.25 << 0.0 << 1.0;
    QTest::newRow("half a period, negative") << 8000.0 << 0.5 << 1.0 << 0.25 << 180.0 << 1.0;
}

// Catches an offset, a wrong amplitude or frequency and a missing period: the sums of sines and of
// their squares, of any part of a period, are geometric series.
void TestToolkitTones::aSineHasTheMeanPeakAndPowerOfItsClosedForm()
{
    QFETCH(const double, samplingRate);
    QFETCH(const double, duration);
    QFETCH(const double, frequency);
    QFETCH(const double, amplitude);
    QFETCH(const double, phase);
    QFETCH(const double, peakOfAmplitude);
    const QList<double> tone = sine(samplingRate, duration, frequency, amplitude, phase);
    const int n = static_cast<int>(tone.size());
    const double step = 2 * std::numbers::pi * frequency / samplingRate;
    const double dc = amplitude * meanOfSines(n, step, radians(phase));
    // sin^2 x = (1 - cos 2x) / 2 = (1 - sin(2x + 90 degrees)) / 2
    const double power = amplitude * amplitude *
                         (1 - meanOfSines(n, 2 * step, 2 * radians(phase) + radians(90))) / 2;
    QVERIFY(std::abs(mean(tone) - dc) < 1e-12 * amplitude);
    QVERIFY(std::abs(peak(tone) - peakOfAmplitude * amplitude) < 1e-12 * amplitude);
    QVERIFY(std::abs(rms(tone) - std::sqrt(power)) < 1e-12 * amplitude);
}

// Catches a modulator that is a sine as well, and a peak that is not normalised. At a quarter of
// the sampling rate every odd sample is a crest of the carrier, and with a modulator of 125 samples
// a period every second peak of the envelope falls on one.
void TestToolkitTones::aModulatedToneStartsAtItsEnvelopePeak()
{
    const QList<double> tone = sam(8000, 1, 2000, 64, 1, 0.7, 0, 0, true);
    QCOMPARE(tone.size(), 8000);
    QVERIFY(tone.first() == 0.0);
    QVERIFY(std::abs(tone.at(125) - 0.7) < 1e-12);
    QVERIFY(std::abs(peak(tone) - 0.7) < 1e-12);
    // Just after the start the envelope is still near its peak: the modulator is a cosine.
    QVERIFY(tone.at(1) > 0.69);
}

void TestToolkitTones::aModulatedToneFollowsItsFormulaToTheLastBit_data()
{
    QTest::addColumn<double>("modulationFrequency");
    QTest::addColumn<double>("depth");
    QTest::addColumn<double>("carrierPhase");
    QTest::addColumn<double>("modulatorPhase");
    QTest::addColumn<bool>("normalise");
    QTest::newRow("plain") << 40.0 << 1.0 << 0.0 << 0.0 << false;
    QTest::newRow("normalised") << 40.0 << 1.0 << 0.0 << 0.0 << true;
    QTest::newRow("odd numbers") << 37.7 << 0.3 << 33.3 << -71.9 << false;
    QTest::newRow("odd numbers, normalised") << 37.7 << 0.3 << 33.3 << -71.9 << true;
    QTest::newRow("overmodulated") << 8.0 << 2.5 << 10.0 << 20.0 << true;
    QTest::newRow("negative depth") << 8.0 << -0.5 << 10.0 << 20.0 << true;
    QTest::newRow("not modulated") << 8.0 << 0.0 << 10.0 << 20.0 << true;
    QTest::newRow("constant modulator") << 0.0 << 0.7 << 10.0 << 60.0 << false;
}

// Catches exchanged phases or frequencies, and any other order of the operations.
void TestToolkitTones::aModulatedToneFollowsItsFormulaToTheLastBit()
{
    QFETCH(const double, modulationFrequency);
    QFETCH(const double, depth);
    QFETCH(const double, carrierPhase);
    QFETCH(const double, modulatorPhase);
    QFETCH(const bool, normalise);
    constexpr double samplingRate = 22050;
    constexpr double carrierFrequency = 1001.3;
    constexpr double amplitude = 0.3;
    constexpr double degree = 0.017453292519943295;
    constexpr double carrierTurn = 6.283185307179586 * carrierFrequency;
    const double modulatorTurn = 6.283185307179586 * modulationFrequency;
    const QList<double> tone = sam(samplingRate, 0.1, carrierFrequency, modulationFrequency, depth,
                                   amplitude, carrierPhase, modulatorPhase, normalise);
    QCOMPARE(tone.size(), 2205);
    for (int i = 0; i < tone.size(); ++i) {
        const double carrier = std::sin(i * carrierTurn / samplingRate + carrierPhase * degree);
        const double modulator =
            std::cos(i * modulatorTurn / samplingRate + modulatorPhase * degree);
        double sample = carrier * ((modulator * depth + 1) * amplitude);
        if (normalise)
            sample *= 1 / (depth + 1);
        QVERIFY2(tone.at(i) == sample, qPrintable(QString::number(i)));
    }
}

void TestToolkitTones::aModulatedToneHasTheMeanAndPowerOfItsClosedForm_data()
{
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("depth");
    QTest::addColumn<double>("amplitude");
    QTest::addColumn<double>("carrierPhase");
    QTest::addColumn<double>("modulatorPhase");
    QTest::addColumn<bool>("normalise");
    QTest::newRow("whole periods") << 1.0 << 1.0 << 1.0 << 0.0 << 0.0 << false;
    QTest::newRow("whole periods, normalised") << 1.0 << 1.0 << 1.0 << 0.0 << 0.0 << true;
    QTest::newRow("shallow") << 1.0 << 0.25 << 2.0 << 30.0 << 60.0 << false;
    QTest::newRow("shallow, normalised") << 1.0 << 0.25 << 2.0 << 30.0 << 60.0 << true;
    QTest::newRow("part of a period") << 0.00825 << 0.8 << 0.5 << 20.0 << 110.0 << false;
    QTest::newRow("part of a period, normalised") << 0.00825 << 0.8 << 0.5 << 20.0 << 110.0 << true;
}

// Catches a wrong depth, side band or scale: the tone is the sum of a carrier and, half the depth
// high, of two side bands, whose means are known in closed form, and over whole periods their
// powers too.
void TestToolkitTones::aModulatedToneHasTheMeanAndPowerOfItsClosedForm()
{
    QFETCH(const double, duration);
    QFETCH(const double, depth);
    QFETCH(const double, amplitude);
    QFETCH(const double, carrierPhase);
    QFETCH(const double, modulatorPhase);
    QFETCH(const bool, normalise);
    constexpr double samplingRate = 8000;
    constexpr double carrierFrequency = 1000;
    constexpr double modulationFrequency = 40;
    const QList<double> tone = sam(samplingRate, duration, carrierFrequency, modulationFrequency,
                                   depth, amplitude, carrierPhase, modulatorPhase, normalise);
    const int n = static_cast<int>(tone.size());
    const double scale = normalise ? amplitude / (1 + depth) : amplitude;
    const auto tonesMean = [n](double frequency, double phase) {
        return meanOfSines(n, 2 * std::numbers::pi * frequency / samplingRate, radians(phase));
    };
    const double dc =
        scale *
        (tonesMean(carrierFrequency, carrierPhase) +
         depth / 2 *
             (tonesMean(carrierFrequency + modulationFrequency, carrierPhase + modulatorPhase) +
              tonesMean(carrierFrequency - modulationFrequency, carrierPhase - modulatorPhase)));
    QVERIFY(std::abs(mean(tone) - dc) < 1e-12 * amplitude);
    if (duration == 1.0) {
        const double power = scale * scale * (1 + depth * depth / 2) / 2;
        QVERIFY(std::abs(rms(tone) - std::sqrt(power)) < 1e-12 * amplitude);
    }
}

void TestToolkitTones::aModulatedToneIsNormalisedToItsEnvelopePeak_data()
{
    QTest::addColumn<double>("depth");
    QTest::addColumn<double>("amplitude");
    QTest::newRow("full") << 1.0 << 1.0;
    QTest::newRow("half") << 0.5 << 0.8;
    QTest::newRow("none") << 0.0 << 2.0;
    QTest::newRow("overmodulated") << 3.0 << 0.1;
}

// Catches a normalisation of anything but the envelope's peak. The carrier is a cosine sampled at
// every 90 degrees, so that the even samples show the envelope.
void TestToolkitTones::aModulatedToneIsNormalisedToItsEnvelopePeak()
{
    QFETCH(const double, depth);
    QFETCH(const double, amplitude);
    const QList<double> plain = sam(8000, 0.5, 2000, 8, depth, amplitude, 90, 0, false);
    const QList<double> normalised = sam(8000, 0.5, 2000, 8, depth, amplitude, 90, 0, true);
    QVERIFY(std::abs(peak(plain) - amplitude * (1 + depth)) < 1e-12);
    QVERIFY(std::abs(peak(normalised) - amplitude) < 1e-12);
    // Half a modulator's period on, the envelope is at its least.
    QVERIFY(std::abs(normalised.at(500) - amplitude * (1 - depth) / (1 + depth)) < 1e-12);
}

// Catches a division that is skipped or ends the program.
void TestToolkitTones::normalisingByZeroGivesNoFiniteSample()
{
    const QList<double> tone = sam(8000, 0.01, 1000, 10, -1, 1, 0, 0, true);
    QCOMPARE(tone.size(), 80);
    QVERIFY(std::none_of(tone.cbegin(), tone.cend(), [](double x) { return qIsFinite(x); }));
}

GUI_TEST_MAIN(TestToolkitTones)
#include "tst_toolkittones.moc"
