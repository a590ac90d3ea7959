// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/TrendTicks.h"

#include <QList>
#include <QString>
#include <QTest>

#include <cmath>

class TestTrendTicks : public QObject
{
    Q_OBJECT

private slots:
    void eachTokenHasATickUpToAThousand_data();
    void eachTokenHasATickUpToAThousand();
    void moreTokensHaveFewTicksWithWholeNumbers_data();
    void moreTokensHaveFewTicksWithWholeNumbers();
};

void TestTrendTicks::eachTokenHasATickUpToAThousand_data()
{
    QTest::addColumn<int>("nTokens");
    QTest::addColumn<int>("count");

    QTest::newRow("no token") << 0 << 2;
    QTest::newRow("one token") << 1 << 2;
    QTest::newRow("two tokens") << 2 << 2;
    QTest::newRow("three tokens") << 3 << 3;
    QTest::newRow("ten tokens") << 10 << 10;
    QTest::newRow("a thousand tokens") << 1000 << 1000;
}

// Catches a token without its tick, an axis with fewer ticks than one can have, and a limit that
// begins too early.
void TestTrendTicks::eachTokenHasATickUpToAThousand()
{
    QFETCH(const int, nTokens);
    QTEST(trendTicks(nTokens).count, "count");
    QCOMPARE(trendTicks(nTokens).labelFormat, QLatin1StringView("%g"));
}

void TestTrendTicks::moreTokensHaveFewTicksWithWholeNumbers_data()
{
    QTest::addColumn<int>("nTokens");
    QTest::addColumn<QStringList>("labels");

    QTest::newRow("1001") << 1001
                          << QStringList({"1", "101", "201", "301", "401", "501", "601", "701",
                                          "801", "901", "1001"});
    QTest::newRow("5000") << 5000
                          << QStringList({"1", "501", "1001", "1501", "2001", "2501", "3000",
                                          "3500", "4000", "4500", "5000"});
    QTest::newRow("a million") << 1000000
                               << QStringList({"1", "100001", "200001", "300001", "400001",
                                               "500001", "600000", "700000", "800000", "900000",
                                               "1000000"});
}

// Catches thousands of ticks, which take seconds, labels with parts of a token or in powers of ten,
// and an axis that does not name its ends.
void TestTrendTicks::moreTokensHaveFewTicksWithWholeNumbers()
{
    QFETCH(const int, nTokens);
    const TrendTicks ticks = trendTicks(nTokens);
    QStringList labels;
    for (int i = 0; i < ticks.count; ++i) {
        const double token = 1 + i * (nTokens - 1.0) / (ticks.count - 1);
        labels.append(QString::asprintf(ticks.labelFormat.data(), token));
    }
    QTEST(labels, "labels");
}

QTEST_APPLESS_MAIN(TestTrendTicks)
#include "tst_trendticks.moc"
