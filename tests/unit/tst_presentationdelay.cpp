// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PresentationDelay.h"

#include <QTest>

#include <limits>

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
    // A header may declare a rate of 1 Hz.
    constexpr int longest = std::numeric_limits<int>::max();
    QTest::newRow("longest") << 2147482.647 << 1.0 << longest;
    QTest::newRow("longer than an int counts") << 2147483.0 << 1.0 << longest;
    QTest::newRow("longest token of all") << 2147483647.0 << 1.0 << longest;
}

// Catches rounding, a missing interval, a delay in another unit and one that becomes negative.
void TestPresentationDelay::theDelayIsSoundPlusIntervalCutToMilliseconds()
{
    QFETCH(const double, soundDuration);
    QFETCH(const double, silentInterval);
    QFETCH(const int, expected);
    QCOMPARE(presentationDelay(soundDuration, silentInterval), std::chrono::milliseconds(expected));
}

QTEST_APPLESS_MAIN(TestPresentationDelay)
#include "tst_presentationdelay.moc"
