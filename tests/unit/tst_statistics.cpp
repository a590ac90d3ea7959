// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/Statistics.h"

#include <QTest>

class TestStatistics : public QObject
{
    Q_OBJECT

private slots:
    void valuesAreSummarized_data();
    void valuesAreSummarized();
};

void TestStatistics::valuesAreSummarized_data()
{
    QTest::addColumn<QList<double>>("values");
    QTest::addColumn<double>("mean");
    QTest::addColumn<double>("median");
    QTest::addColumn<double>("sd");
    QTest::addColumn<double>("least");
    QTest::addColumn<double>("most");
    QTest::addColumn<QString>("text");

    QTest::newRow("none") << QList<double>() << 0.0 << 0.0 << 0.0 << 0.0 << 0.0 << "none";
    QTest::newRow("one") << QList<double>{-3.25} << -3.25 << -3.25 << 0.0 << -3.25 << -3.25
                         << "-3.25";
    QTest::newRow("two") << QList<double>{1, 2} << 1.5 << 1.5 << 0.7071067811865476 << 1.0 << 2.0
                         << "+1.50, 0.71, +1.00 .. +2.00";
    QTest::newRow("equal") << QList<double>{2, 2, 2} << 2.0 << 2.0 << 0.0 << 2.0 << 2.0
                           << "+2.00, 0.00, +2.00 .. +2.00";
    QTest::newRow("both signs, not sorted")
        << QList<double>{4, -2, 1, -3} << 0.0 << -0.5 << 3.1622776601683795 << -3.0 << 4.0
        << "+0.00, 3.16, -3.00 .. +4.00";
    QTest::newRow("three, not sorted") << QList<double>{6, 1, 2} << 3.0 << 2.0 << 2.6457513110645907
                                       << 1.0 << 6.0 << "+3.00, 2.65, +1.00 .. +6.00";
}

// Catches a standard deviation over n, a median of values that are not sorted, a mean or range of
// the wrong values, and a division by zero when there is no value or one.
void TestStatistics::valuesAreSummarized()
{
    QFETCH(const QList<double>, values);
    Statistics statistics;
    for (const double value : values)
        statistics.add(value);
    QCOMPARE(statistics.count(), static_cast<size_t>(values.size()));
    QFETCH(const double, mean);
    QFETCH(const double, sd);
    QVERIFY(qAbs(statistics.mean() - mean) < 1e-12);
    QVERIFY(qAbs(statistics.sd() - sd) < 1e-12);
    QTEST(statistics.median(), "median");
    QTEST(statistics.least(), "least");
    QTEST(statistics.most(), "most");
    QTEST(statistics.text(), "text");
}

QTEST_APPLESS_MAIN(TestStatistics)
#include "tst_statistics.moc"
