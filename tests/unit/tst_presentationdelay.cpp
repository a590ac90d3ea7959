// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PresentationDelay.h"

#include <QTest>

class TestPresentationDelay : public QObject
{
    Q_OBJECT

private slots:
    void theDelayIsSoundPlusIntervalCutToMilliseconds_data();
    void theDelayIsSoundPlusIntervalCutToMilliseconds();
};

void TestPresentationDelay::theDelayIsSoundPlusIntervalCutToMilliseconds_data()
{
    QTest::addColumn<double>("soundDuration");
    QTest::addColumn<double>("silentInterval");
    QTest::addColumn<int>("expected");

    QTest::newRow("defaults") << 0.25 << 1.0 << 1250;
    QTest::newRow("two seconds") << 0.5 << 1.5 << 2000;
    QTest::newRow("fraction of a millisecond") << 0.250021 << 1.0 << 1250;
    QTest::newRow("truncated, not rounded") << 0.2509 << 1.0 << 1250;
    QTest::newRow("no interval") << 0.25 << 0.0 << 250;
    QTest::newRow("nothing") << 0.0 << 0.0 << 0;
}

// Catches rounding, a missing interval and a delay in another unit.
void TestPresentationDelay::theDelayIsSoundPlusIntervalCutToMilliseconds()
{
    QFETCH(const double, soundDuration);
    QFETCH(const double, silentInterval);
    QFETCH(const int, expected);
    QCOMPARE(presentationDelay(soundDuration, silentInterval), std::chrono::milliseconds(expected));
}

QTEST_APPLESS_MAIN(TestPresentationDelay)
#include "tst_presentationdelay.moc"
