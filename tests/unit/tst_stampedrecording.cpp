// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/StampedRecording.h"

#include <QTest>

#include <algorithm>

namespace {

constexpr int fragmentSize = 64;
constexpr double fragmentDuration = 1000.0 * fragmentSize / recordingRate;
constexpr int period = 32; ///< fragments, 43 ms

/// @p nFragments of sound that begins at @p begin; each sample is its own number. The fragments of
/// a period arrive at once when it is over, and later by what @p delay says of the period.
template<typename Delay>
std::vector<Fragment> arrived(double begin, int nFragments, Delay delay)
{
    std::vector<Fragment> fragments(static_cast<size_t>(nFragments));
    for (int i = 0; i < nFragments; ++i) {
        Fragment &fragment = fragments[static_cast<size_t>(i)];
        const int periodsOver = i / period + 1;
        fragment.arrival =
            begin + periodsOver * period * fragmentDuration + delay(i / period) + i % period * 0.01;
        for (int j = 0; j < fragmentSize; ++j)
            fragment.samples[static_cast<size_t>(j)] = static_cast<float>(i * fragmentSize + j);
    }
    return fragments;
}

double none(int)
{
    return 0;
}

} // namespace

class TestStampedRecording : public QObject
{
    Q_OBJECT

private slots:
    void samplesAreTimedByTheEarliestArrivalAround();
    void aPeriodThatArrivesLateIsSeen();
    void positionsCountFromWhatIsKept();
    void theClockIsMonotonicAndInMilliseconds();
};

// Catches a time that is off by a sample, a fragment or a period, and one that follows a recording
// process which was held up.
void TestStampedRecording::samplesAreTimedByTheEarliestArrivalAround()
{
    StampedRecording recording;
    recording.append(arrived(5000, 20 * period, [](int i) { return i % 3 == 0 ? 0.31 : 5.0 + i; }));
    for (const double position : {1.0, 700.0, 9000.5, 20.0 * period * fragmentSize}) {
        const double error = recording.timeOf(position) - (5000 + position * 1000 / recordingRate);
        QVERIFY2(error >= 0.3 && error < 0.7, qPrintable(QString::number(error)));
    }
}

// Catches a delay of the server that goes unseen, one outside of the time asked for that counts,
// and regular arrivals that are taken for a delay.
void TestStampedRecording::aPeriodThatArrivesLateIsSeen()
{
    StampedRecording regular;
    regular.append(arrived(1000, 20 * period, [](int i) { return i % 2 == 0 ? 0.0 : 0.8; }));
    QVERIFY(regular.isRegular(1000, 1800));

    StampedRecording late;
    late.append(arrived(1000, 20 * period, [](int i) { return i == 10 ? 3.0 : 0.0; }));
    const double at = 1000 + 11 * period * fragmentDuration;
    QVERIFY(!late.isRegular(1000, 1800));
    QVERIFY(!late.isRegular(at - 20, at + 20));
    QVERIFY(late.isRegular(1000, at - 60));
    QVERIFY(late.isRegular(at + 60, 1800));
}

// Catches samples and arrivals that no longer belong together when the beginning is discarded.
void TestStampedRecording::positionsCountFromWhatIsKept()
{
    StampedRecording recording;
    const std::vector<Fragment> all = arrived(0, 10 * period, none);
    recording.append(std::span(all).first(100));
    recording.append(std::span(all).subspan(100));
    QCOMPARE(recording.samples().size(), all.size() * fragmentSize);
    QCOMPARE(recording.samples()[fragmentSize * 100], float(fragmentSize * 100));
    QCOMPARE(recording.positionAt(0), size_t{0});
    QCOMPARE(recording.positionAt(1e9), recording.samples().size());

    const double second = 1.5 * period * fragmentDuration;
    QCOMPARE(recording.positionAt(second), size_t{period * fragmentSize});
    const double before = recording.timeOf(3.0 * period * fragmentSize);
    recording.discardUntil(second);
    QCOMPARE(recording.positionAt(second), size_t{0});
    QCOMPARE(recording.samples().front(), float(period * fragmentSize));
    QCOMPARE(recording.samples().size(), (all.size() - period) * fragmentSize);
    QCOMPARE(recording.timeOf(2.0 * period * fragmentSize), before);

    recording.discardUntil(1e9);
    QVERIFY(recording.samples().empty());
}

// Catches another unit.
void TestStampedRecording::theClockIsMonotonicAndInMilliseconds()
{
    const double before = monotonicMs();
    QTest::qSleep(50);
    const double passed = monotonicMs() - before;
    QVERIFY2(passed >= 50 && passed < 5000, qPrintable(QString::number(passed)));
}

QTEST_APPLESS_MAIN(TestStampedRecording)
#include "tst_stampedrecording.moc"
