// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/WindowGeometry.h"

#include <QTest>

class TestWindowGeometry : public QObject
{
    Q_OBJECT

private slots:
    void aWindowTakesItsShareOfTheScreenWithinLimits_data();
    void aWindowTakesItsShareOfTheScreenWithinLimits();
};

void TestWindowGeometry::aWindowTakesItsShareOfTheScreenWithinLimits_data()
{
    QTest::addColumn<QSize>("available");
    QTest::addColumn<bool>("center");
    QTest::addColumn<QPoint>("topLeft");
    QTest::addColumn<double>("widthFraction");
    QTest::addColumn<double>("heightFraction");
    QTest::addColumn<QRect>("expected");

    const QPoint origin;
    const QSize screen(1440, 900);
    QTest::newRow("operator's window")
        << screen << true << origin << 0.8 << 0.9 << QRect(144, 45, 1152, 810);
    QTest::newRow("subject's window")
        << QSize(1920, 1080) << true << origin << 0.4 << 0.4 << QRect(576, 324, 768, 432);
    QTest::newRow("sizes are truncated")
        << QSize(1001, 999) << true << origin << 0.5 << 0.5 << QRect(250, 250, 500, 499);
    QTest::newRow("margins are truncated")
        << QSize(1003, 1001) << true << origin << 0.8 << 0.8 << QRect(100, 100, 802, 800);
    QTest::newRow("whole area") << screen << true << origin << 1.0 << 1.0 << QRect(0, 0, 1440, 900);
    QTest::newRow("above one") << screen << true << origin << 1.5 << 7.0 << QRect(0, 0, 1440, 900);
    QTest::newRow("below zero") << screen << true << origin << -0.1 << -3.0
                                << QRect(720, 450, 0, 0);
    QTest::newRow("centred whatever the corner")
        << screen << true << QPoint(300, 200) << 0.5 << 0.5 << QRect(360, 225, 720, 450);
    QTest::newRow("corner kept") << screen << false << QPoint(300, 200) << 0.5 << 0.5
                                 << QRect(300, 200, 720, 450);
    QTest::newRow("corner at the limit")
        << screen << false << QPoint(5, 40) << 0.5 << 0.5 << QRect(5, 40, 720, 450);
    QTest::newRow("corner moved in")
        << screen << false << origin << 0.5 << 0.5 << QRect(5, 40, 720, 450);
    QTest::newRow("only the left moved in")
        << screen << false << QPoint(-8, 60) << 0.5 << 0.5 << QRect(5, 60, 720, 450);
    QTest::newRow("only the top moved in")
        << screen << false << QPoint(60, 39) << 0.5 << 0.5 << QRect(60, 40, 720, 450);
    QTest::newRow("corner kept and above one")
        << screen << false << QPoint(10, 50) << 2.0 << 2.0 << QRect(10, 50, 1440, 900);
}

// Catches rounding in place of truncation, missing limits, and a swapped width and height.
void TestWindowGeometry::aWindowTakesItsShareOfTheScreenWithinLimits()
{
    QFETCH(const QSize, available);
    QFETCH(const bool, center);
    QFETCH(const QPoint, topLeft);
    QFETCH(const double, widthFraction);
    QFETCH(const double, heightFraction);
    QTEST(windowGeometry(available, center, topLeft, widthFraction, heightFraction), "expected");
}

QTEST_APPLESS_MAIN(TestWindowGeometry)
#include "tst_windowgeometry.moc"
