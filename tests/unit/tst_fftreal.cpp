// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/DynArray.h"
#include "plots/FFTReal.h"
#include "plots/Oscillator.h"
#include "support/ExactTransform.h"

#include <QList>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <numbers>
#include <numeric>
#include <random>
#include <type_traits>
#include <vector>

namespace {

int allocations = 0;

} // namespace

// Every allocation by new is counted. The forms for arrays are given as well, since the default
// ones need not call these where a sanitizer brings its own. The compiler must not look into them
// at their calls: GCC 16 takes malloc() and free() there for those of memory from new.
[[gnu::noinline]] void *operator new(std::size_t size)
{
    ++allocations;
    if (void *const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void *operator new[](std::size_t size)
{
    return operator new(size);
}

[[gnu::noinline]] void operator delete(void *memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete[](void *memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete[](void *memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

/// The kind of number that is transformed; each one makes a program of its own of this file.
using Real = OSTRINE_REAL;
using Values = QList<Real>;

/// The rounding unit that bounds are counted in.
constexpr Real epsilon = std::numeric_limits<Real>::epsilon();

static_assert(FFTReal<Real>::MAX_BIT_DEPTH == 30);
static_assert(FFTReal<Real>::TRIGO_BD_LIMIT == 12);
static_assert(std::has_virtual_destructor_v<FFTReal<Real>>);
static_assert(!std::is_copy_constructible_v<DynArray<Real>>);
static_assert(!std::is_copy_assignable_v<DynArray<Real>>);

/// The transform with its tables and its version for any processor in sight.
class OpenTransform : public FFTReal<Real>
{
public:
    using FFTReal::FFTReal;
    using FFTReal::transform_baseline;

    using FFTReal::_bit_rev_table;
    using FFTReal::_cos_table;
    using FFTReal::_length;
    using FFTReal::_nbr_bits;
    using FFTReal::_oscillators;
    using FFTReal::_scratch;
};

/// @p length numbers from -1 to 1, the same ones for the same @p seed.
Values noise(qsizetype length, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<Real> amplitude(-1.0, 1.0);
    Values values(length);
    std::generate(values.begin(), values.end(), [&] { return amplitude(generator); });
    return values;
}

/// What do_fft makes of @p input. Numbers it does not write stay NaN.
Values transformed(const Values &input)
{
    Values output(input.size(), std::numeric_limits<Real>::quiet_NaN());
    FFTReal<Real>(input.size()).do_fft(output.data(), input.constData());
    return output;
}

/// Whether the numbers are the same. The operator of the lists would compare the bytes, of which a
/// long double has some that mean nothing.
bool same(const Values &a, const Values &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

Real largestDifference(const Values &a, const Values &b)
{
    Real largest = 0;
    for (qsizetype i = 0; i < a.size(); ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

void addLengths(int lowestBits, int highestBits)
{
    QTest::addColumn<int>("bits");
    for (int bits = lowestBits; bits <= highestBits; ++bits)
        QTest::addRow("%lld", 1LL << bits) << bits;
}

} // namespace

class TestFFTReal : public QObject
{
    Q_OBJECT

private slots:
    void noiseAgreesWithTheDefinitionInEveryBin_data() { addLengths(0, 13); }
    void noiseAgreesWithTheDefinitionInEveryBin();
    void longNoiseAgreesWithTheDefinitionInSomeBins_data() { addLengths(14, 18); }
    void longNoiseAgreesWithTheDefinitionInSomeBins();

    void smallInputsGiveTheBinsWorkedOutByHand_data();
    void smallInputsGiveTheBinsWorkedOutByHand();
    void onesGiveTheirSumInTheFirstBinAlone_data() { addLengths(0, 15); }
    void onesGiveTheirSumInTheFirstBinAlone();
    void anImpulseTurnsThePhaseByItsPlace_data() { addLengths(1, 15); }
    void anImpulseTurnsThePhaseByItsPlace();
    void aWaveOnABinAppearsInThatBinAlone_data();
    void aWaveOnABinAppearsInThatBinAlone();
    void theTransformIsLinear_data() { addLengths(0, 15); }
    void theTransformIsLinear();
    void theBinsHoldTheEnergyOfTheInput_data() { addLengths(0, 16); }
    void theBinsHoldTheEnergyOfTheInput();

    void theTransformWritesAllOfTheOutputAndNothingElse_data() { addLengths(0, 15); }
    void theTransformWritesAllOfTheOutputAndNothingElse();
    void theSameInputGivesTheSameResultAgain();
    void aTransformAllocatesNothing_data() { addLengths(0, 16); }
    void aTransformAllocatesNothing();

    void theTablesHaveTheirSizesAndValues_data() { addLengths(0, 16); }
    void theTablesHaveTheirSizesAndValues();
    void theOscillatorTurnsWithoutDriftAndResets();
    void dynArrayResizesAndSharesNothing();

private:
    /// Compares the transform of noise with its definition in the given bins.
    static void compareWithDefinition(int bits, const std::vector<std::int64_t> &bins);
};

void TestFFTReal::compareWithDefinition(int bits, const std::vector<std::int64_t> &bins)
{
    const qsizetype length = qsizetype(1) << bits;
    const Values input = noise(length, 100U + static_cast<unsigned>(bits));
    const ExactTurn turn(length);
    std::vector<ExactBin> expected;
    for (const std::int64_t k : bins)
        expected.push_back(exactBin(turn, input.constData(), k));
    const double error = relativeError(transformed(input).constData(), length, bins, expected);
    qInfo("relative error %.2g", error);
    QVERIFY(error < tolerance<Real>(bits));

    if (bits >= 3) {
        Values output(length);
        OpenTransform(length).transform_baseline(output.data(), input.constData());
        QVERIFY(relativeError(output.constData(), length, bins, expected) < tolerance<Real>(bits));
    }
}

// Catches any error of a pass or a table, in the version for this processor and in that for all.
void TestFFTReal::noiseAgreesWithTheDefinitionInEveryBin()
{
    QFETCH(const int, bits);
    std::vector<std::int64_t> bins((std::size_t(1) << bits) / 2 + 1);
    std::iota(bins.begin(), bins.end(), 0);
    compareWithDefinition(bits, bins);
}

// Catches an oscillator that drifts or belongs to another pass, up to lengths of 2^18.
void TestFFTReal::longNoiseAgreesWithTheDefinitionInSomeBins()
{
    QFETCH(const int, bits);
    const std::int64_t length = std::int64_t(1) << bits;
    std::vector<std::int64_t> bins = {0,         1, 2, length / 4 - 1, length / 4, length / 2 - 1,
                                      length / 2};
    std::mt19937 generator(static_cast<unsigned>(bits));
    std::uniform_int_distribution<std::int64_t> bin(3, length / 2 - 2);
    while (bins.size() < 24)
        bins.push_back(bin(generator));
    compareWithDefinition(bits, bins);
}

void TestFFTReal::smallInputsGiveTheBinsWorkedOutByHand_data()
{
    QTest::addColumn<Values>("input");
    QTest::addColumn<Values>("expected");

    const Real r = std::numbers::sqrt2_v<Real> / 2;
    QTest::newRow("one value") << Values{-3.5} << Values{-3.5};
    QTest::newRow("two values") << Values{3, 5} << Values{8, -2};
    QTest::newRow("four values") << Values{1, 2, 4, 8} << Values{15, -3, -5, -6};
    QTest::newRow("sine of four values") << Values{0, 1, 0, -1} << Values{0, 0, 0, 2};
    QTest::newRow("cosine of four values") << Values{1, 0, -1, 0} << Values{0, 2, 0, 0};
    QTest::newRow("impulse behind the first of eight values")
        << Values{0, 1, 0, 0, 0, 0, 0, 0} << Values{1, r, 0, -r, -1, r, 1, r};
    QTest::newRow("impulse before the last of eight values")
        << Values{0, 0, 0, 0, 0, 0, 0, 1} << Values{1, r, 0, -r, -1, -r, -1, -r};
    QTest::newRow("highest frequency of eight values")
        << Values{1, -1, 1, -1, 1, -1, 1, -1} << Values{0, 0, 0, 0, 8, 0, 0, 0};
}

// Catches bins at other places, a scale, and imaginary parts with the other sign.
void TestFFTReal::smallInputsGiveTheBinsWorkedOutByHand()
{
    QFETCH(const Values, input);
    QFETCH(const Values, expected);
    QVERIFY(largestDifference(transformed(input), expected) < 4.5 * epsilon);
}

// Catches a normalisation, and rounding where there is none: the result is exact.
void TestFFTReal::onesGiveTheirSumInTheFirstBinAlone()
{
    QFETCH(const int, bits);
    const qsizetype length = qsizetype(1) << bits;
    Values expected(length, 0.0);
    expected[0] = static_cast<Real>(length);
    QVERIFY(same(transformed(Values(length, 1.0)), expected));
}

// Catches a value read from the place of another one: where it is, an impulse turns the phase.
void TestFFTReal::anImpulseTurnsThePhaseByItsPlace()
{
    QFETCH(const int, bits);
    const qsizetype length = qsizetype(1) << bits;
    for (const qsizetype place : {qsizetype(0), qsizetype(1), length / 2, length - 1}) {
        Values input(length, 0.0);
        input[place] = 1.0;
        Values expected(length);
        for (qsizetype k = 0; k <= length / 2; ++k) {
            const Exact angle = 2 * std::numbers::pi_v<Exact> *
                                static_cast<Exact>(k * place & (length - 1)) /
                                static_cast<Exact>(length);
            expected[k] = static_cast<Real>(std::cos(angle));
            if (k > 0 && k < length / 2)
                expected[length / 2 + k] = static_cast<Real>(std::sin(angle));
        }
        // The largest error, not the mean one, and that of the expected angle.
        QVERIFY(largestDifference(transformed(input), expected) < 4 * tolerance<Real>(bits));
    }
}

void TestFFTReal::aWaveOnABinAppearsInThatBinAlone_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<qsizetype>("cycles");
    for (const int bits : {2, 3, 4, 5, 8, 9, 10, 12, 13, 14, 15}) {
        const qsizetype length = qsizetype(1) << bits;
        QList<qsizetype> bins = {1, length / 4, length / 2 - 1};
        if (bits > 3)
            bins << 2 << 3 << length / 4 + 1;
        for (const qsizetype cycles : std::as_const(bins))
            QTest::addRow("%lld cycles in %lld values", cycles, length) << bits << cycles;
    }
}

// Catches real and imaginary parts taken for each other, and what leaks to other bins.
void TestFFTReal::aWaveOnABinAppearsInThatBinAlone()
{
    QFETCH(const int, bits);
    QFETCH(const qsizetype, cycles);
    const qsizetype length = qsizetype(1) << bits;
    const Real peak = static_cast<Real>(length) / 2;
    Values cosine(length);
    Values sine(length);
    for (qsizetype n = 0; n < length; ++n) {
        const Exact angle = 2 * std::numbers::pi_v<Exact> *
                            static_cast<Exact>(cycles * n & (length - 1)) /
                            static_cast<Exact>(length);
        cosine[n] = static_cast<Real>(std::cos(angle));
        sine[n] = static_cast<Real>(std::sin(angle));
    }
    Values expected(length, 0.0);
    expected[cycles] = peak;
    QVERIFY(largestDifference(transformed(cosine), expected) < tolerance<Real>(bits) * peak);
    expected[cycles] = 0.0;
    expected[length / 2 + cycles] = peak;
    QVERIFY(largestDifference(transformed(sine), expected) < tolerance<Real>(bits) * peak);
}

// Catches an operation that is no sum of the input's values.
void TestFFTReal::theTransformIsLinear()
{
    QFETCH(const int, bits);
    const qsizetype length = qsizetype(1) << bits;
    const Values a = noise(length, 1);
    const Values b = noise(length, 2);
    const Values transformedA = transformed(a);
    const Values transformedB = transformed(b);
    Values sum(length);
    Values expected(length);
    for (qsizetype n = 0; n < length; ++n) {
        sum[n] = Real(0.75) * a[n] - Real(2.5) * b[n];
        expected[n] = Real(0.75) * transformedA[n] - Real(2.5) * transformedB[n];
    }
    QVERIFY(largestDifference(transformed(sum), expected) <
            45 * epsilon * std::sqrt(static_cast<Real>(length)));
}

// Catches a bin that is missing or counted twice: Parseval's theorem.
void TestFFTReal::theBinsHoldTheEnergyOfTheInput()
{
    QFETCH(const int, bits);
    const qsizetype length = qsizetype(1) << bits;
    const Values input = noise(length, 3);
    const Values output = transformed(input);
    ExactSum ofInput;
    ExactSum ofOutput;
    for (qsizetype n = 0; n < length; ++n) {
        ofInput.add(Exact(input[n]) * input[n]);
        const bool once = n == 0 || n == length / 2;
        ofOutput.add(Exact(output[n]) * output[n] * (once ? 1 : 2));
    }
    const Exact expected = ofInput.value() * static_cast<Exact>(length);
    QVERIFY(std::abs(ofOutput.value() / expected - 1) < tolerance<Real>(bits));
}

// Catches a changed input, and values written beside the output or left out in it.
void TestFFTReal::theTransformWritesAllOfTheOutputAndNothingElse()
{
    QFETCH(const int, bits);
    const qsizetype length = qsizetype(1) << bits;
    const qsizetype margin = 16;
    const Real untouched = Real(4711.5);
    const Values noiseAround = noise(length + 2 * margin, 4);
    Values input = noiseAround;
    Values output(length + 2 * margin, untouched);
    FFTReal<Real>(length).do_fft(output.data() + margin, input.data() + margin);
    QVERIFY(same(input, noiseAround));
    QVERIFY(same(output.first(margin), Values(margin, untouched)));
    QVERIFY(same(output.last(margin), Values(margin, untouched)));
    QCOMPARE(output.count(untouched), 2 * margin);
}

// Catches a result that depends on what an earlier transform left in the scratch space.
void TestFFTReal::theSameInputGivesTheSameResultAgain()
{
    const qsizetype length = 16384;
    const Values input = noise(length, 5);
    const FFTReal<Real> transform(length);
    Values first(length);
    Values other(length);
    Values again(length);
    transform.do_fft(first.data(), input.constData());
    transform.do_fft(other.data(), noise(length, 6).constData());
    transform.do_fft(again.data(), input.constData());
    QVERIFY(!same(first, other));
    QVERIFY(same(first, again));
}

// Catches a buffer or table made at every transform. The constructor shows that the count works.
void TestFFTReal::aTransformAllocatesNothing()
{
    QFETCH(const int, bits);
    const qsizetype length = qsizetype(1) << bits;
    const Values input = noise(length, 7);
    Values output(length);
    Real *const f = output.data();
    const int before = allocations;
    const FFTReal<Real> transform(length);
    const int constructed = allocations;
    transform.do_fft(f, input.constData());
    const int done = allocations;
    QVERIFY(constructed > before);
    QCOMPARE(done, constructed);
}

// Catches tables of another size, order or content.
void TestFFTReal::theTablesHaveTheirSizesAndValues()
{
    QFETCH(const int, bits);
    const qsizetype length = qsizetype(1) << bits;
    const OpenTransform transform(length);
    QCOMPARE(transform._length, length);
    QCOMPARE(transform._nbr_bits, bits);
    QCOMPARE(transform._scratch.size(), length);

    QCOMPARE(transform._bit_rev_table.size(), bits >= 2 ? length / 4 : 0);
    for (qsizetype i = 0; i < transform._bit_rev_table.size(); ++i) {
        qsizetype reversed = 0;
        for (int bit = 0; bit < bits; ++bit)
            reversed |= (4 * i >> bit & 1) << (bits - 1 - bit);
        QCOMPARE(transform._bit_rev_table[i], reversed);
    }

    QCOMPARE(transform._cos_table.size(), bits > 3 ? length / 2 - 4 : 0);
    qsizetype pos = 0;
    for (int pass = 3; pass < bits; ++pass) {
        for (qsizetype i = 0; i < qsizetype(1) << (pass - 1); ++i) {
            const Exact angle =
                std::ldexp(static_cast<Exact>(i) * std::numbers::pi_v<Exact>, -pass);
            QVERIFY(std::abs(transform._cos_table[pos++] - std::cos(angle)) < 1.35L * epsilon);
        }
    }
    QCOMPARE(pos, transform._cos_table.size());

    QCOMPARE(transform._oscillators.size(), std::max(bits - 12, 0));
    for (int j = 0; j < transform._oscillators.size(); ++j) {
        Oscillator<Real> oscillator = transform._oscillators[j];
        QVERIFY(oscillator.cos() == 1);
        QVERIFY(oscillator.sin() == 0);
        oscillator.step();
        const Real angle = std::ldexp(std::numbers::pi_v<Real> / 2, -12 - j);
        QVERIFY(oscillator.cos() == std::cos(angle));
        QVERIFY(oscillator.sin() == std::sin(angle));
    }
}

// Catches a turn in the other direction, a drift beyond rounding and a reset that keeps an angle.
void TestFFTReal::theOscillatorTurnsWithoutDriftAndResets()
{
    const int steps = 4096;
    const Real angle = std::numbers::pi_v<Real> / 2 / steps;
    Oscillator<Real> oscillator;
    oscillator.set_step(angle);
    for (int round = 0; round < 2; ++round) {
        QVERIFY(oscillator.cos() == 1);
        QVERIFY(oscillator.sin() == 0);
        for (int i = 1; i <= steps; ++i) {
            oscillator.step();
            const Exact exact = static_cast<Exact>(angle) * i;
            QVERIFY(std::abs(oscillator.cos() - std::cos(exact)) < 4500 * epsilon);
            QVERIFY(std::abs(oscillator.sin() - std::sin(exact)) < 4500 * epsilon);
        }
        oscillator.reset();
    }
}

// Catches a size that lags behind the elements, and elements that two arrays share.
void TestFFTReal::dynArrayResizesAndSharesNothing()
{
    DynArray<int> array;
    QCOMPARE(array.size(), 0);
    array.resize(3);
    QCOMPARE(array.size(), 3);
    for (int i = 0; i < 3; ++i)
        array[i] = 10 * i;
    const DynArray<int> &constant = array;
    QCOMPARE(constant[0], 0);
    QCOMPARE(constant[1], 10);
    QCOMPARE(constant[2], 20);
    QCOMPARE(&constant[2] - &constant[0], 2);
    array.resize(0);
    QCOMPARE(array.size(), 0);
    array.resize(5);
    QCOMPARE(array.size(), 5);
    array[4] = 1;

    DynArray<int> sized(4);
    QCOMPARE(sized.size(), 4);
    sized[3] = 7;
    QVERIFY(&sized[0] != &array[0]);
}

QTEST_APPLESS_MAIN(TestFFTReal)
#include "tst_fftreal.moc"
