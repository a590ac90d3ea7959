// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PelkClasses.h"
#include "support/GuiTestMain.h"
#include "support/ToolkitTest.h"

#include <QtNumeric>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <type_traits>

static_assert(std::is_empty_v<PelkClasses> && std::is_default_constructible_v<PelkClasses>);

namespace {

const QString rangeWarning = "min cannot be larger than max";
const QString divisorWarning = "max cannot be min - 1; return min";
const QString forcedWarning = "min cannot be larger than max; force min = max";

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

class TestToolkitNumbers : public ToolkitTest
{
    Q_OBJECT

private slots:
    void aRandomIntegerIsTheDrawFoldedIntoTheRange_data();
    void aRandomIntegerIsTheDrawFoldedIntoTheRange();
    void aReversedRangeWarnsAndIsUsedAsItStands_data();
    void aReversedRangeWarnsAndIsUsedAsItStands();
    void aRangeOfDivisorZeroWarnsTwiceAndGivesMin_data();
    void aRangeOfDivisorZeroWarnsTwiceAndGivesMin();
    void randomIntegersReachEveryValueOfTheRange();
    void randomIntegersAreSeededByTheSecond_data();
    void randomIntegersAreSeededByTheSecond();
    void integersOfAReversedRangeAreForcedToMax_data();
    void integersOfAReversedRangeAreForcedToMax();
    void rmsOfIntegersWrapsItsSquaresTo32Bits_data();
    void rmsOfIntegersWrapsItsSquaresTo32Bits();
    void rmsOfDoublesSumsTheSquaresInOrder_data();
    void rmsOfDoublesSumsTheSquaresInOrder();
};

void TestToolkitNumbers::aRandomIntegerIsTheDrawFoldedIntoTheRange_data()
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
void TestToolkitNumbers::aRandomIntegerIsTheDrawFoldedIntoTheRange()
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

void TestToolkitNumbers::aReversedRangeWarnsAndIsUsedAsItStands_data()
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
void TestToolkitNumbers::aReversedRangeWarnsAndIsUsedAsItStands()
{
    QFETCH(const int, min);
    QFETCH(const int, max);
    QStringList texts;
    QList<int> drawn;
    std::srand(7);
    for (int i = 0; i < 3; ++i) {
        expectBoxes(1);
        texts.append(rangeWarning);
        drawn.append(randomInteger(min, max));
    }
    QVERIFY(shown(texts));
    QCOMPARE(drawn, expectedIntegers(7, 3, min, max));
}

void TestToolkitNumbers::aRangeOfDivisorZeroWarnsTwiceAndGivesMin_data()
{
    QTest::addColumn<int>("min");
    QTest::addColumn<int>("max");
    QTest::newRow("small") << 3 << 2;
    QTest::newRow("around zero") << 0 << -1;
    QTest::newRow("smallest") << smallest + 1 << smallest;
    QTest::newRow("largest") << largest << largest - 1;
}

// Catches a division by zero, and an error that is not reported.
void TestToolkitNumbers::aRangeOfDivisorZeroWarnsTwiceAndGivesMin()
{
    QFETCH(const int, min);
    QFETCH(const int, max);
    expectBoxes(2);
    QCOMPARE(randomInteger(min, max), min);
    QVERIFY(shown({rangeWarning, divisorWarning}));
}

// Catches a range without one of its ends. A value is missed once in 10^66 times.
void TestToolkitNumbers::randomIntegersReachEveryValueOfTheRange()
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

void TestToolkitNumbers::randomIntegersAreSeededByTheSecond_data()
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
void TestToolkitNumbers::randomIntegersAreSeededByTheSecond()
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

void TestToolkitNumbers::integersOfAReversedRangeAreForcedToMax_data()
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
void TestToolkitNumbers::integersOfAReversedRangeAreForcedToMax()
{
    QFETCH(const int, count);
    QFETCH(const int, min);
    QFETCH(const int, max);
    expectBoxes(1);
    QCOMPARE(randomIntegers(count, min, max), QList<int>(count, max));
    QVERIFY(shown({forcedWarning}));
}

void TestToolkitNumbers::rmsOfIntegersWrapsItsSquaresTo32Bits_data()
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
void TestToolkitNumbers::rmsOfIntegersWrapsItsSquaresTo32Bits()
{
    QFETCH(const QList<int>, values);
    QFETCH(const double, expected);
    const double actual = rms(values);
    QVERIFY2(actual == expected || (qIsNaN(actual) && qIsNaN(expected)),
             qPrintable(QString::number(actual, 'g', 17)));
}

void TestToolkitNumbers::rmsOfDoublesSumsTheSquaresInOrder_data()
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
void TestToolkitNumbers::rmsOfDoublesSumsTheSquaresInOrder()
{
    QFETCH(const QList<double>, values);
    QFETCH(const double, expected);
    const double actual = rms(values);
    QVERIFY2(actual == expected || (qIsNaN(actual) && qIsNaN(expected)),
             qPrintable(QString::number(actual, 'g', 17)));
}

GUI_TEST_MAIN(TestToolkitNumbers)
#include "tst_toolkitnumbers.moc"
