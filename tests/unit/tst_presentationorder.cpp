// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PresentationOrder.h"

#include <QMap>
#include <QTest>

#include <algorithm>
#include <limits>

namespace {

/// Pearson's statistic of @p counts against @p expected of each.
double chiSquare(const QList<int> &counts, double expected)
{
    double sum = 0.0;
    for (const int count : counts)
        sum += (count - expected) * (count - expected) / expected;
    return sum;
}

} // namespace

class TestPresentationOrder : public QObject
{
    Q_OBJECT

private slots:
    void thePresentationCountIsTheProductUpToALimit_data();
    void thePresentationCountIsTheProductUpToALimit();
    void eachTokenComesAsOftenAsAsked_data();
    void eachTokenComesAsOftenAsAsked();
    void theOrderIsEmptyWithoutTokensOrTimes();
    void theSeedAloneDecidesTheOrder();
    void allOrdersAreEquallyLikely();
    void eachTokenIsEquallyLikelyInEachPlace();
    void aTokenMayFollowItself();
};

void TestPresentationOrder::thePresentationCountIsTheProductUpToALimit_data()
{
    constexpr int largest = std::numeric_limits<int>::max();
    QTest::addColumn<int>("nTokens");
    QTest::addColumn<int>("nTimes");
    QTest::addColumn<int>("expected"); // -1: too many

    QTest::newRow("three tokens twice") << 3 << 2 << 6;
    QTest::newRow("three tokens four times") << 3 << 4 << 12;
    QTest::newRow("no tokens") << 0 << 5 << 0;
    QTest::newRow("no tokens, huge count") << 0 << largest << 0;
    QTest::newRow("not once") << 3 << 0 << 0;
    QTest::newRow("negative") << 3 << -1 << 0;
    QTest::newRow("at the limit") << 1 << maxPresentations << maxPresentations;
    QTest::newRow("at the limit, by tokens") << 1000 << 1000 << maxPresentations;
    QTest::newRow("one too many") << 1 << maxPresentations + 1 << -1;
    QTest::newRow("product wraps to 0 in 32 bits") << 65536 << 65536 << -1;
    QTest::newRow("product wraps to a small number") << 3 << 1431655766 << -1;
    QTest::newRow("largest of both") << largest << largest << -1;
}

// Catches a product formed in 32 bits, and a limit that is off by one.
void TestPresentationOrder::thePresentationCountIsTheProductUpToALimit()
{
    QFETCH(const int, nTokens);
    QFETCH(const int, nTimes);
    QTEST(presentationCount(nTokens, nTimes).value_or(-1), "expected");
}

void TestPresentationOrder::eachTokenComesAsOftenAsAsked_data()
{
    QTest::addColumn<int>("nTokens");
    QTest::addColumn<int>("nTimes");

    QTest::newRow("one once") << 1 << 1;
    QTest::newRow("one four times") << 1 << 4;
    QTest::newRow("two once") << 2 << 1;
    QTest::newRow("three twice") << 3 << 2;
    QTest::newRow("forty times twenty-five") << 40 << 25;
}

// Catches a shuffle that loses, repeats or invents a token.
void TestPresentationOrder::eachTokenComesAsOftenAsAsked()
{
    QFETCH(const int, nTokens);
    QFETCH(const int, nTimes);
    for (const quint32 seed : {0U, 1U, 4294967295U}) {
        const QList<int> order = presentationOrder(nTokens, nTimes, seed);
        QCOMPARE(order.size(), qsizetype(nTokens) * nTimes);
        for (int token = 0; token < nTokens; ++token)
            QCOMPARE(order.count(token), nTimes);
    }
}

// Catches a read of the first element, or an endless loop, where there is nothing to shuffle.
void TestPresentationOrder::theOrderIsEmptyWithoutTokensOrTimes()
{
    QVERIFY(presentationOrder(0, 3, 1).isEmpty());
    QVERIFY(presentationOrder(3, 0, 1).isEmpty());
    QVERIFY(presentationOrder(3, -2, 1).isEmpty());
    QVERIFY(presentationOrder(0, 0, 1).isEmpty());
}

// Catches a seed that is not used, and a hidden second source of chance.
void TestPresentationOrder::theSeedAloneDecidesTheOrder()
{
    const QList<int> order = presentationOrder(20, 1, 42);
    QCOMPARE(presentationOrder(20, 1, 42), order);
    QVERIFY(presentationOrder(20, 1, 43) != order);

    QList<int> unshuffled = order;
    std::sort(unshuffled.begin(), unshuffled.end());
    QVERIFY(order != unshuffled);
}

// Catches a biased shuffle: drawing from all places at every step makes some of the 24 orders of
// four tokens almost twice as frequent as others, a statistic of several hundred. A fair one stays
// below 60 in all but one of 30,000 series.
void TestPresentationOrder::allOrdersAreEquallyLikely()
{
    constexpr int perOrder = 1000;
    constexpr int nOrders = 24;
    QMap<QList<int>, int> counts;
    for (quint32 seed = 1; seed <= perOrder * nOrders; ++seed)
        ++counts[presentationOrder(4, 1, seed)];

    QCOMPARE(counts.size(), nOrders);
    const double statistic = chiSquare(counts.values(), perOrder);
    QVERIFY2(statistic < 60.0, qPrintable(QString::number(statistic)));
}

// Catches a last place that keeps its token, and a draw that leaves out one of its ends.
void TestPresentationOrder::eachTokenIsEquallyLikelyInEachPlace()
{
    constexpr int nTokens = 10;
    constexpr int perPlace = 1000;
    QList<QList<int>> counts(nTokens, QList<int>(nTokens));
    for (quint32 seed = 1; seed <= perPlace * nTokens; ++seed) {
        const QList<int> order = presentationOrder(nTokens, 1, seed);
        for (int place = 0; place < nTokens; ++place)
            ++counts[place][order.at(place)];
    }
    // With 9 degrees of freedom a fair shuffle exceeds 40 once in 130,000 places.
    for (int place = 0; place < nTokens; ++place) {
        const double statistic = chiSquare(counts.at(place), perPlace);
        QVERIFY2(statistic < 40.0, qPrintable(QString("place %1: %2").arg(place).arg(statistic)));
    }
}

// Catches a shuffle within each round only, which would keep the halves apart.
void TestPresentationOrder::aTokenMayFollowItself()
{
    int adjacent = 0;
    int repeatedInFirstHalf = 0;
    for (quint32 seed = 1; seed <= 300; ++seed) {
        const QList<int> order = presentationOrder(3, 2, seed);
        adjacent += std::adjacent_find(order.begin(), order.end()) != order.end() ? 1 : 0;
        const QList<int> half = order.first(3);
        repeatedInFirstHalf += half.count(0) > 1 || half.count(1) > 1 || half.count(2) > 1 ? 1 : 0;
    }
    // By counting orders: 2 of 3 have neighbours that agree, 3 of 5 a repeat in the first half.
    QVERIFY(adjacent > 150 && adjacent < 250);
    QVERIFY(repeatedInFirstHalf > 130 && repeatedInFirstHalf < 230);
}

QTEST_APPLESS_MAIN(TestPresentationOrder)
#include "tst_presentationorder.moc"
