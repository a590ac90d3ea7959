// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/PlotPoints.h"

#include <QTest>

class TestPlotPoints : public QObject
{
    Q_OBJECT

private slots:
    void pointsPairTheFirstValuesOfBothLists_data();
    void pointsPairTheFirstValuesOfBothLists();
    void theRangeGoesFromTheLeastToTheLargestValue_data();
    void theRangeGoesFromTheLeastToTheLargestValue();
};

void TestPlotPoints::pointsPairTheFirstValuesOfBothLists_data()
{
    QTest::addColumn<QList<double>>("x");
    QTest::addColumn<QList<double>>("y");
    QTest::addColumn<qsizetype>("n");
    QTest::addColumn<QList<QPointF>>("points");

    const QList<double> x = {0, 0.5, 1};
    const QList<double> y = {3, -4, 5};
    QTest::newRow("all") << x << y << qsizetype{3} << QList<QPointF>{{0, 3}, {0.5, -4}, {1, 5}};
    QTest::newRow("the first") << x << y << qsizetype{2} << QList<QPointF>{{0, 3}, {0.5, -4}};
    QTest::newRow("none") << x << y << qsizetype{0} << QList<QPointF>{};
    QTest::newRow("more than there are")
        << x << y << qsizetype{4} << QList<QPointF>{{0, 3}, {0.5, -4}, {1, 5}};
    QTest::newRow("fewer x") << QList<double>{7} << y << qsizetype{3} << QList<QPointF>{{7, 3}};
    QTest::newRow("fewer y") << x << QList<double>{7, 8} << qsizetype{3}
                             << QList<QPointF>{{0, 7}, {0.5, 8}};
    QTest::newRow("no y") << x << QList<double>{} << qsizetype{3} << QList<QPointF>{};
}

// Catches a read beyond the shorter list, a point too many or too few, and exchanged coordinates.
void TestPlotPoints::pointsPairTheFirstValuesOfBothLists()
{
    QFETCH(const QList<double>, x);
    QFETCH(const QList<double>, y);
    QFETCH(const qsizetype, n);
    QTEST(plotPoints(x, y, n), "points");
}

void TestPlotPoints::theRangeGoesFromTheLeastToTheLargestValue_data()
{
    QTest::addColumn<QList<double>>("values");
    QTest::addColumn<Range>("range");

    QTest::newRow("none") << QList<double>{} << Range{0, 0};
    QTest::newRow("one") << QList<double>{-2} << Range{-2, -2};
    QTest::newRow("extremes at the ends") << QList<double>{3, 1, -5} << Range{-5, 3};
    QTest::newRow("extremes inside") << QList<double>{0, -7, 9, 1} << Range{-7, 9};
    QTest::newRow("all above zero") << QList<double>{0.5, 0.25} << Range{0.25, 0.5};
}

// Catches a range that always takes in 0, an extreme that is missed at an end, and a read from an
// empty list.
void TestPlotPoints::theRangeGoesFromTheLeastToTheLargestValue()
{
    QFETCH(const QList<double>, values);
    QTEST(valueRange(values), "range");
}

QTEST_GUILESS_MAIN(TestPlotPoints)
#include "tst_plotpoints.moc"
