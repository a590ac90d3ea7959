#include "audio/PelkClasses.h"
#include "gui/GuiTestMain.h"
#include "gui/ModalAnswer.h"

#include <QtNumeric>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>
#include <numbers>
#include <numeric>
#include <type_traits>

static_assert(std::is_empty_v<PelkClasses> && std::is_default_constructible_v<PelkClasses>);

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr int smallest = std::numeric_limits<int>::min();
constexpr int largest = std::numeric_limits<int>::max();

const QString rampWarning = "Vector size must be at least twice of nPoints";
const QString rangeWarning = "min cannot be larger than max";
const QString divisorWarning = "max cannot be min - 1; return min";
const QString forcedWarning = "min cannot be larger than max; force min = max";

struct Ramp
{
    const char *name;
    QList<double> (*byValue)(QList<double>, int);
    void (*inPlace)(QList<double> *, int);
    double (*weight)(double i, double nPoints);
    int nTimes; ///< how often the weight is applied
    long double (*exactWeight)(long double x);

    /// @p sample, weighted as the one that lies @p i samples from an end.
    double weighted(double sample, int i, int nPoints) const
    {
        for (int time = 0; time < nTimes && i < nPoints; ++time)
            sample *= weight(i, nPoints);
        return sample;
    }
};

double cosWeight(double i, double nPoints)
{
    return (1.0 - std::cos(i / nPoints * 3.141592653589793)) * 0.5;
}

double linearWeight(double i, double nPoints)
{
    return i / nPoints;
}

/// The raised cosine by the half angle.
long double exactCosWeight(long double x)
{
    const long double root = std::sin(x * std::numbers::pi_v<long double> / 2);
    return root * root;
}

const std::array<Ramp, 3> ramps = {{
    {"cos", cosRamp, cosRamp, cosWeight, 1, exactCosWeight},
    {"cos2", cos2Ramp, cos2Ramp, cosWeight, 2,
     [](long double x) { return exactCosWeight(x) * exactCosWeight(x); }},
    {"linear", linearRamp, linearRamp, linearWeight, 1, [](long double x) { return x; }},
}};

enum Shape { Cos, Cos2, Linear };

/// Both forms of a ramp, which must agree; nothing when they do not.
QList<double> ramped(const Ramp &ramp, const QList<double> &samples, int nPoints)
{
    QList<double> changed = samples;
    ramp.inPlace(&changed, nPoints);
    const QList<double> returned = ramp.byValue(samples, nPoints);
    return changed == returned ? changed : QList<double>();
}

/// The @p n samples of a signal without symmetry or zeros.
QList<double> asymmetric(int n)
{
    QList<double> samples;
    for (int i = 0; i < n; ++i)
        samples.append(1.0 + i / 3.0);
    return samples;
}

/// Whether @p a and @p b are at most one unit in the last place apart.
bool withinOneUlp(double a, double b)
{
    return a == b || std::nextafter(a, b) == b;
}

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

/// What @p draw returns when it is told the second in which it runs; it runs again when the clock
/// has moved on meanwhile.
template<typename Draw>
auto withinOneSecond(Draw draw)
{
    while (true) {
        const std::time_t second = std::time(nullptr);
        const auto result = draw(static_cast<unsigned int>(second));
        if (std::time(nullptr) == second)
            return result;
    }
}

/// The rule of both random functions in 64 bits: @p draw as it falls into @p min .. @p max.
int inRange(int draw, int min, int max)
{
    const auto divisor = static_cast<qint32>(qint64{max} - min + 1);
    return static_cast<qint32>(min + (divisor == 0 ? draw : qint64{draw} % divisor));
}

QList<int> expectedIntegers(unsigned int seed, int count, int min, int max)
{
    QList<int> integers;
    std::srand(seed);
    for (int i = 0; i < count; ++i)
        integers.append(inRange(std::rand(), min, max));
    return integers;
}

} // namespace

class TestSignalToolkit : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void noiseIsUniform();
    void noiseIsSeededByTheSecond();
    void noiseChangesWithTheSecond();
    void noNoise_data();
    void noNoise();
    void length_data();
    void length();
    void sineStartsAtItsPhase();
    void sineByFormula_data();
    void sineByFormula();
    void sineInClosedForm_data();
    void sineInClosedForm();
    void samStartsAtItsEnvelopePeak();
    void samByFormula_data();
    void samByFormula();
    void samInClosedForm_data();
    void samInClosedForm();
    void samNormalisedToItsPeak_data();
    void samNormalisedToItsPeak();
    void samNormalisedByZero();
    void rampExamples_data();
    void rampExamples();
    void rampWeights_data();
    void rampWeights();
    void rampMultiplies_data();
    void rampMultiplies();
    void nothingToRamp_data();
    void nothingToRamp();
    void rampsOverlap_data();
    void rampsOverlap();
    void rampsShareNothing_data();
    void rampsShareNothing();
    void integer_data();
    void integer();
    void integerBelowMin_data();
    void integerBelowMin();
    void integerDivisorZero_data();
    void integerDivisorZero();
    void integersReachEveryValue();
    void integers_data();
    void integers();
    void integersForced_data();
    void integersForced();
    void integerRms_data();
    void integerRms();
    void doubleRms_data();
    void doubleRms();

private:
    /// Expects one box of each ramp form.
    void expectTwoBoxes() { m_answers->press(QMessageBox::Ok).press(QMessageBox::Ok); }
    /// Whether exactly boxes of these texts were shown, as the toolkit shows them.
    bool shown(const QStringList &texts) const;

    std::unique_ptr<ModalAnswer> m_answers;
};

void TestSignalToolkit::init()
{
    m_answers = std::make_unique<ModalAnswer>();
}

// Catches, for every test, a box too many or one that did not open.
void TestSignalToolkit::cleanup()
{
    QCOMPARE(m_answers->problem(), "");
}

bool TestSignalToolkit::shown(const QStringList &texts) const
{
    QStringList shownTexts;
    for (const ModalAnswer::Box &box : m_answers->boxes()) {
        if (box.title != "Warning" || box.icon != QMessageBox::Warning ||
            box.buttons != QMessageBox::Ok || box.parent != nullptr)
            return false;
        shownTexts.append(box.text);
    }
    return shownTexts == texts;
}

// Catches noise that is centred, scaled otherwise or not uniform. The bounds are five standard
// deviations of the mean and of the variance: 1 / sqrt(12 n) and 1 / sqrt(180 n).
void TestSignalToolkit::noiseIsUniform()
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
void TestSignalToolkit::noiseIsSeededByTheSecond()
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
void TestSignalToolkit::noiseChangesWithTheSecond()
{
    const QList<double> noise = whiteNoise(1000);
    QTRY_VERIFY(whiteNoise(1000) != noise);
}

void TestSignalToolkit::noNoise_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::newRow("none") << 0;
    QTest::newRow("negative") << -1;
    QTest::newRow("most negative") << smallest;
}

// Catches a negative size taken as it is, and an empty noise that does not seed.
void TestSignalToolkit::noNoise()
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

void TestSignalToolkit::length_data()
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
void TestSignalToolkit::length()
{
    QFETCH(const double, samplingRate);
    QFETCH(const double, duration);
    QFETCH(const int, expected);
    QCOMPARE(sine(samplingRate, duration, 100, 1, 0).size(), expected);
    QCOMPARE(sam(samplingRate, duration, 100, 10, 1, 1, 0, 0, true).size(), expected);
}

// Catches a phase in radians, and a sample missing at the end.
void TestSignalToolkit::sineStartsAtItsPhase()
{
    const QList<double> tone = sine(8000, 0.001, 1000, 1, 90);
    QCOMPARE(tone.size(), 8);
    QVERIFY(tone.first() == 1.0);
}

void TestSignalToolkit::sineByFormula_data()
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
void TestSignalToolkit::sineByFormula()
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

void TestSignalToolkit::sineInClosedForm_data()
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
void TestSignalToolkit::sineInClosedForm()
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
void TestSignalToolkit::samStartsAtItsEnvelopePeak()
{
    const QList<double> tone = sam(8000, 1, 2000, 64, 1, 0.7, 0, 0, true);
    QCOMPARE(tone.size(), 8000);
    QVERIFY(tone.first() == 0.0);
    QVERIFY(std::abs(tone.at(125) - 0.7) < 1e-12);
    QVERIFY(std::abs(peak(tone) - 0.7) < 1e-12);
    // Just after the start the envelope is still near its peak: the modulator is a cosine.
    QVERIFY(tone.at(1) > 0.69);
}

void TestSignalToolkit::samByFormula_data()
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
void TestSignalToolkit::samByFormula()
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

void TestSignalToolkit::samInClosedForm_data()
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
void TestSignalToolkit::samInClosedForm()
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

void TestSignalToolkit::samNormalisedToItsPeak_data()
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
void TestSignalToolkit::samNormalisedToItsPeak()
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
void TestSignalToolkit::samNormalisedByZero()
{
    const QList<double> tone = sam(8000, 0.01, 1000, 10, -1, 1, 0, 0, true);
    QCOMPARE(tone.size(), 80);
    QVERIFY(std::none_of(tone.cbegin(), tone.cend(), [](double x) { return qIsFinite(x); }));
}

void TestSignalToolkit::rampExamples_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<QList<double>>("onset");
    QTest::newRow("cos") << int{Cos}
                         << QList<double>{0, 0.0954915, 0.3454915, 0.6545085, 0.9045085};
    QTest::newRow("cos2") << int{Cos2}
                          << QList<double>{0, 0.0091186, 0.1193644, 0.4283814, 0.8181356};
    QTest::newRow("linear") << int{Linear} << QList<double>{0, 0.2, 0.4, 0.6, 0.8};
}

// Catches another shape, a ramp that reaches 1, and an offset that does not mirror the onset. Ten
// samples are exactly twice the ramp, which is not warned of.
void TestSignalToolkit::rampExamples()
{
    QFETCH(const int, shape);
    QFETCH(const QList<double>, onset);
    const QList<double> weighted = ramped(ramps.at(shape), QList<double>(10, 1.0), 5);
    QCOMPARE(weighted.size(), 10);
    for (int i = 0; i < 5; ++i) {
        QVERIFY(std::abs(weighted.at(i) - onset.at(i)) <= 0.5e-7);
        QVERIFY(std::abs(weighted.at(9 - i) - onset.at(i)) <= 0.5e-7);
    }
}

void TestSignalToolkit::rampWeights_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<int>("nPoints");
    QTest::addColumn<int>("nSamples");
    for (int shape = Cos; shape <= Linear; ++shape) {
        const char *name = ramps.at(shape).name;
        QTest::addRow("%s 1 of 2", name) << shape << 1 << 2;
        QTest::addRow("%s 1 of 3", name) << shape << 1 << 3;
        QTest::addRow("%s 7 of 100", name) << shape << 7 << 100;
        QTest::addRow("%s 441 of 883", name) << shape << 441 << 883;
        QTest::addRow("%s 50000 of 100000", name) << shape << 50000 << 100000;
    }
}

// Catches weights beside the formula, a difference between onset and offset, and a touched middle.
void TestSignalToolkit::rampWeights()
{
    QFETCH(const int, shape);
    QFETCH(const int, nPoints);
    QFETCH(const int, nSamples);
    const Ramp &ramp = ramps.at(shape);
    const QList<double> weights = ramped(ramp, QList<double>(nSamples, 1.0), nPoints);
    QCOMPARE(weights.size(), nSamples);
    for (int i = 0; i < nSamples; ++i)
        QVERIFY(weights.at(i) == weights.at(nSamples - 1 - i));
    for (int i = 0; i < nPoints; ++i) {
        const double weight = weights.at(i);
        QVERIFY2(withinOneUlp(weight, ramp.weighted(1.0, i, nPoints)),
                 qPrintable(QString::number(i)));
        const long double exact = ramp.exactWeight(static_cast<long double>(i) / nPoints);
        QVERIFY2(std::abs(weight - exact) < 1e-15L, qPrintable(QString::number(i)));
    }
    for (int i = nPoints; i < nSamples - nPoints; ++i)
        QVERIFY(weights.at(i) == 1.0);
}

void TestSignalToolkit::rampMultiplies_data()
{
    QTest::addColumn<int>("shape");
    for (int shape = Cos; shape <= Linear; ++shape)
        QTest::newRow(ramps.at(shape).name) << shape;
}

// Catches samples that are replaced by the weights or taken from the wrong end, and a weight that
// is squared where it should be applied twice, which would change the last bits of a token.
void TestSignalToolkit::rampMultiplies()
{
    QFETCH(const int, shape);
    const Ramp &ramp = ramps.at(shape);
    const QList<double> samples = asymmetric(50);
    const QList<double> weighted = ramped(ramp, samples, 20);
    QCOMPARE(weighted.size(), 50);
    for (int i = 0; i < 50; ++i) {
        const double expected = ramp.weighted(samples.at(i), std::min(i, 49 - i), 20);
        QVERIFY2(weighted.at(i) == expected, qPrintable(QString::number(i)));
    }
}

void TestSignalToolkit::nothingToRamp_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<int>("nPoints");
    QTest::addColumn<int>("nSamples");
    for (int shape = Cos; shape <= Linear; ++shape) {
        const char *name = ramps.at(shape).name;
        QTest::addRow("%s 0", name) << shape << 0 << 9;
        QTest::addRow("%s -1", name) << shape << -1 << 9;
        QTest::addRow("%s most negative", name) << shape << smallest << 9;
        QTest::addRow("%s 0 of none", name) << shape << 0 << 0;
        QTest::addRow("%s -1 of none", name) << shape << -1 << 0;
    }
}

// Catches a ramp length taken as unsigned, a needless warning and a division by zero.
void TestSignalToolkit::nothingToRamp()
{
    QFETCH(const int, shape);
    QFETCH(const int, nPoints);
    QFETCH(const int, nSamples);
    QList<double> samples = asymmetric(nSamples);
    ramps.at(shape).inPlace(&samples, nPoints);
    QCOMPARE(samples, asymmetric(nSamples));
    QCOMPARE(ramps.at(shape).byValue(asymmetric(nSamples), nPoints), asymmetric(nSamples));
}

void TestSignalToolkit::rampsOverlap_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<int>("nPoints");
    QTest::addColumn<int>("nSamples");
    for (int shape = Cos; shape <= Linear; ++shape) {
        const char *name = ramps.at(shape).name;
        QTest::addRow("%s middle twice", name) << shape << 5 << 9;
        QTest::addRow("%s overlap of 2", name) << shape << 5 << 8;
        QTest::addRow("%s as long as the list", name) << shape << 8 << 8;
        QTest::addRow("%s one longer", name) << shape << 9 << 8;
        QTest::addRow("%s twice as long", name) << shape << 14 << 7;
        QTest::addRow("%s 2^30, whose double wraps", name) << shape << (1 << 30) << 8;
        QTest::addRow("%s longest", name) << shape << largest << 8;
        QTest::addRow("%s one sample", name) << shape << 1 << 1;
        QTest::addRow("%s no sample", name) << shape << 1 << 0;
    }
}

// Catches a missing warning, a sample in both ramps weighted once, and - under the address
// sanitizer or by a crash - an access outside the list.
void TestSignalToolkit::rampsOverlap()
{
    QFETCH(const int, shape);
    QFETCH(const int, nPoints);
    QFETCH(const int, nSamples);
    const Ramp &ramp = ramps.at(shape);
    expectTwoBoxes();
    QList<double> changed = asymmetric(nSamples);
    ramp.inPlace(&changed, nPoints);
    const QList<double> returned = ramp.byValue(asymmetric(nSamples), nPoints);
    QVERIFY(shown({rampWarning, rampWarning}));

    QCOMPARE(changed.size(), nSamples);
    QVERIFY(returned == changed);
    for (int i = 0; i < nSamples; ++i) {
        // The ramps go inwards together: the nearer end's comes first.
        const auto [nearer, farther] = std::minmax({i, nSamples - 1 - i});
        const double once = ramp.weighted(asymmetric(nSamples).at(i), nearer, nPoints);
        const double expected = ramp.weighted(once, farther, nPoints);
        QVERIFY2(changed.at(i) == expected, qPrintable(QString::number(i)));
    }
}

void TestSignalToolkit::rampsShareNothing_data()
{
    rampMultiplies_data();
}

// Catches a ramp in place that reaches into a copy, one by value that changes its argument, and a
// list that is copied where it could be moved through.
void TestSignalToolkit::rampsShareNothing()
{
    QFETCH(const int, shape);
    QList<double> samples(10, 1.0);
    const QList<double> copy = samples;
    QList<double> returned = ramps.at(shape).byValue(samples, 5);
    QCOMPARE(samples, copy);
    ramps.at(shape).inPlace(&samples, 5);
    QCOMPARE(samples, returned);
    QCOMPARE(copy, QList<double>(10, 1.0));

    const double *storage = returned.constData();
    const QList<double> moved = ramps.at(shape).byValue(std::move(returned), 2);
    QCOMPARE(moved.constData(), storage);
}

void TestSignalToolkit::integer_data()
{
    QTest::addColumn<int>("min");
    QTest::addColumn<int>("max");
    QTest::newRow("a die") << 1 << 6;
    QTest::newRow("around zero") << -3 << 3;
    QTest::newRow("one value") << 5 << 5;
    QTest::newRow("0 to the largest, 2^31 values") << 0 << largest;
    QTest::newRow("smallest to -1, 2^31 values") << smallest << -1;
    QTest::newRow("2^31 + 1 values") << smallest << 0;
    QTest::newRow("3 * 2^30 values") << smallest << (1 << 30) - 1;
    QTest::newRow("2^32 - 2 values") << smallest + 1 << largest - 1;
    QTest::newRow("2^32 - 1 values") << smallest + 1 << largest;
    QTest::newRow("all 2^32 values") << smallest << largest;
    QTest::newRow("smallest alone") << smallest << smallest;
    QTest::newRow("largest alone") << largest << largest;
}

// Catches a generator that is seeded again, another remainder, a result outside the range and, by
// the sanitizer, an overflow.
void TestSignalToolkit::integer()
{
    QFETCH(const int, min);
    QFETCH(const int, max);
    std::srand(42);
    QList<int> drawn;
    for (int i = 0; i < 1000; ++i) {
        drawn.append(randomInteger(min, max));
        QVERIFY(drawn.last() >= min && drawn.last() <= max);
    }
    QCOMPARE(drawn, expectedIntegers(42, 1000, min, max));
}

void TestSignalToolkit::integerBelowMin_data()
{
    QTest::addColumn<int>("min");
    QTest::addColumn<int>("max");
    QTest::newRow("divisor -1") << 5 << 3;
    QTest::newRow("divisor -3") << 5 << 1;
    QTest::newRow("divisor -100") << -1 << -102;
    QTest::newRow("largest, 0") << largest << 0;
    QTest::newRow("0, smallest") << 0 << smallest;
    QTest::newRow("largest, smallest") << largest << smallest;
}

// Catches another text, a range that is put right, and the sign of the divisor taken by the
// remainder.
void TestSignalToolkit::integerBelowMin()
{
    QFETCH(const int, min);
    QFETCH(const int, max);
    QStringList texts;
    QList<int> drawn;
    std::srand(7);
    for (int i = 0; i < 3; ++i) {
        m_answers->press(QMessageBox::Ok);
        texts.append(rangeWarning);
        drawn.append(randomInteger(min, max));
    }
    QVERIFY(shown(texts));
    QCOMPARE(drawn, expectedIntegers(7, 3, min, max));
}

void TestSignalToolkit::integerDivisorZero_data()
{
    QTest::addColumn<int>("min");
    QTest::addColumn<int>("max");
    QTest::newRow("small") << 3 << 2;
    QTest::newRow("around zero") << 0 << -1;
    QTest::newRow("smallest") << smallest + 1 << smallest;
    QTest::newRow("largest") << largest << largest - 1;
}

// Catches a division by zero, and an error that is not reported.
void TestSignalToolkit::integerDivisorZero()
{
    QFETCH(const int, min);
    QFETCH(const int, max);
    m_answers->press(QMessageBox::Ok).press(QMessageBox::Ok);
    QCOMPARE(randomInteger(min, max), min);
    QVERIFY(shown({rangeWarning, divisorWarning}));
}

// Catches a range without one of its ends. A value is missed once in 10^66 times.
void TestSignalToolkit::integersReachEveryValue()
{
    const QList<int> many = randomIntegers(1000, -3, 3);
    QList<int> one;
    for (int i = 0; i < 1000; ++i)
        one.append(randomInteger(-3, 3));
    for (int value = -3; value <= 3; ++value) {
        QVERIFY(many.contains(value));
        QVERIFY(one.contains(value));
    }
}

void TestSignalToolkit::integers_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("min");
    QTest::addColumn<int>("max");
    QTest::newRow("none") << 0 << 1 << 6;
    QTest::newRow("a negative number") << -1 << 1 << 6;
    QTest::newRow("most negative number") << smallest << 1 << 6;
    QTest::newRow("a die") << 1000 << 1 << 6;
    QTest::newRow("one value") << 3 << 5 << 5;
    QTest::newRow("2^31 values") << 1000 << 0 << largest;
    QTest::newRow("2^31 + 1 values") << 1000 << smallest << 0;
    QTest::newRow("2^32 - 1 values") << 1000 << smallest + 1 << largest;
    QTest::newRow("all 2^32 values") << 1000 << smallest << largest;
}

// Catches another seed or rule, a second call that goes on with the first one's sequence, and a
// negative number of integers.
void TestSignalToolkit::integers()
{
    QFETCH(const int, count);
    QFETCH(const int, min);
    QFETCH(const int, max);
    const QList<QList<int>> lists = withinOneSecond([&](unsigned int second) {
        const QList<int> first = randomIntegers(count, min, max);
        const QList<int> again = randomIntegers(count, min, max);
        return QList<QList<int>>{first, again, expectedIntegers(second, count, min, max)};
    });
    QCOMPARE(lists.at(0), lists.at(2));
    QCOMPARE(lists.at(1), lists.at(2));
    QCOMPARE(lists.at(0).size(), std::max(count, 0));
    for (const int value : lists.at(0))
        QVERIFY(value >= min && value <= max);
}

void TestSignalToolkit::integersForced_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("min");
    QTest::addColumn<int>("max");
    QTest::newRow("7 to 2 is 2") << 3 << 7 << 2;
    QTest::newRow("one below, which would divide by zero") << 3 << 3 << 2;
    QTest::newRow("largest to smallest") << 3 << largest << smallest;
    QTest::newRow("none") << 0 << 7 << 2;
}

// Catches the other function's text, a bound taken from the wrong side and a division by zero.
void TestSignalToolkit::integersForced()
{
    QFETCH(const int, count);
    QFETCH(const int, min);
    QFETCH(const int, max);
    m_answers->press(QMessageBox::Ok);
    QCOMPARE(randomIntegers(count, min, max), QList<int>(count, max));
    QVERIFY(shown({forcedWarning}));
}

void TestSignalToolkit::integerRms_data()
{
    QTest::addColumn<QList<int>>("values");
    QTest::addColumn<double>("expected");
    QTest::newRow("3 and 4") << QList<int>{3, 4} << std::sqrt(12.5);
    QTest::newRow("empty") << QList<int>() << notANumber;
    QTest::newRow("one") << QList<int>{-5} << 5.0;
    QTest::newRow("zeros") << QList<int>{0, 0} << 0.0;
    QTest::newRow("not the mean") << QList<int>{7, -7, 7, -7} << 7.0;
    QTest::newRow("largest square") << QList<int>{46340} << 46340.0;
    QTest::newRow("sum beyond 32 bits") << QList<int>(10, -46340) << 46340.0;
    QTest::newRow("46341^2 wraps below zero") << QList<int>{46341} << notANumber;
    QTest::newRow("wrapped square is summed with its sign")
        << QList<int>{46341, 46340, 46340} << std::sqrt((-2147479015.0 + 2 * 2147395600.0) / 3);
    QTest::newRow("2^16 squared wraps to 0") << QList<int>{65536, 3} << std::sqrt(4.5);
    QTest::newRow("92682^2 wraps twice") << QList<int>{-92682} << std::sqrt(18532.0);
    QTest::newRow("largest squared wraps to 1") << QList<int>{largest} << 1.0;
    QTest::newRow("smallest squared wraps to 0") << QList<int>{smallest, 2} << std::sqrt(2.0);
}

// Catches squares or sums of another width, an integer division and, by the sanitizer, an overflow.
void TestSignalToolkit::integerRms()
{
    QFETCH(const QList<int>, values);
    QFETCH(const double, expected);
    const double actual = rms(values);
    QVERIFY2(actual == expected || (qIsNaN(actual) && qIsNaN(expected)),
             qPrintable(QString::number(actual, 'g', 17)));
}

void TestSignalToolkit::doubleRms_data()
{
    QTest::addColumn<QList<double>>("values");
    QTest::addColumn<double>("expected");
    QTest::newRow("3 and 4") << QList<double>{3, 4} << std::sqrt(12.5);
    QTest::newRow("empty") << QList<double>() << notANumber;
    QTest::newRow("fractions") << QList<double>{0.5, -0.5, 0.5} << 0.5;
    QTest::newRow("squares do not wrap") << QList<double>{65536, -65536} << 65536.0;
    QTest::newRow("in order") << QList<double>{1e8, 1, 1, 1, 1} << std::sqrt(1e16 / 5);
    QTest::newRow("square beyond a double") << QList<double>{1e200} << infinity;
    QTest::newRow("not a number") << QList<double>{1, notANumber} << notANumber;
}

// Catches squares that are rounded to integers, and another order of the sum.
void TestSignalToolkit::doubleRms()
{
    QFETCH(const QList<double>, values);
    QFETCH(const double, expected);
    const double actual = rms(values);
    QVERIFY2(actual == expected || (qIsNaN(actual) && qIsNaN(expected)),
             qPrintable(QString::number(actual, 'g', 17)));
}

GUI_TEST_MAIN(TestSignalToolkit)
#include "tst_signaltoolkit.moc"
