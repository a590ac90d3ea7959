#include "audio/TrailingSilence.h"

#include <QTest>

using namespace std::chrono_literals;
using std::chrono::microseconds;

class TestTrailingSilence : public QObject
{
    Q_OBJECT

private slots:
    void ending_data();
    void ending();
    void restIsWaitedFor_data();
    void restIsWaitedFor();
    void nothingIsLeftToWaitFor();
    void waitsNoLongerThanTheBuffer();
    void fractionsAreRoundedUp();
};

void TestTrailingSilence::ending_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<double>("silence");
    QTest::addColumn<bool>("idleBeforePlayed");

    QTest::newRow("older than all") << "5.15.2" << 0.040 << true;
    QTest::newRow("first") << "6.0.0" << 0.040 << true;
    QTest::newRow("measured 6.4") << "6.4.2" << 0.040 << true;
    QTest::newRow("last that discards") << "6.6.3" << 0.040 << true;
    QTest::newRow("begins to drain") << "6.7.0" << 0.0 << false;
    QTest::newRow("measured 6.8") << "6.8.2" << 0.0 << false;
    QTest::newRow("last that drains") << "6.8.9" << 0.0 << false;
    QTest::newRow("loses the last quantum") << "6.9.0" << 0.012 << false;
    QTest::newRow("two digits are a number") << "6.10.0" << 0.012 << false;
    QTest::newRow("measured 6.11") << "6.11.2" << 0.012 << false;
    QTest::newRow("newer than all") << "7.0.0" << 0.012 << false;
}

// Catches a version put into the wrong group, and one compared as text.
void TestTrailingSilence::ending()
{
    QFETCH(const QString, version);
    const SinkEnding result = sinkEnding(QVersionNumber::fromString(version));
    QTEST(result.trailingSilence, "silence");
    QTEST(result.idleBeforePlayed, "idleBeforePlayed");
}

void TestTrailingSilence::restIsWaitedFor_data()
{
    QTest::addColumn<int>("duration"); // all in ms
    QTest::addColumn<int>("processed");

    QTest::newRow("most of a buffer unplayed") << 250 << 150;
    QTest::newRow("a little unplayed") << 250 << 240;
    QTest::newRow("just played, as the sink says") << 250 << 250;
    QTest::newRow("shorter than the buffer") << 50 << 0;
    QTest::newRow("long token") << 60000 << 59900;
}

// Catches a token cut off before its end, and an answer clock that starts noticeably after it: the
// tolerance of 20 ms is one tick of the sink.
void TestTrailingSilence::restIsWaitedFor()
{
    QFETCH(const int, duration);
    QFETCH(const int, processed);
    const auto rest = microseconds(1000) * (duration - processed);
    const auto waited =
        timeUntilHeard(microseconds(1000) * duration, microseconds(1000) * processed, 145ms);
    QVERIFY(waited >= rest);
    QVERIFY(waited <= rest + 20ms);
}

// Catches a negative time, which a timer would refuse.
void TestTrailingSilence::nothingIsLeftToWaitFor()
{
    QCOMPARE(timeUntilHeard(250ms, 290ms, 145ms).count(), 0);
    QCOMPARE(timeUntilHeard(0ms, 40ms, 145ms).count(), 0);
    QCOMPARE(timeUntilHeard(250ms, 100ms, 0ms).count(), 0);
    QCOMPARE(timeUntilHeard(250ms, 100ms, -1ms).count(), 0);
}

// Catches a wait for the whole token where the sink does not say what it has played.
void TestTrailingSilence::waitsNoLongerThanTheBuffer()
{
    QCOMPARE(timeUntilHeard(250ms, 0ms, 145ms).count(), 145);
    QCOMPARE(timeUntilHeard(60000ms, 0ms, 145ms).count(), 145);
    QCOMPARE(timeUntilHeard(250ms, -5ms, 20ms).count(), 20);
}

// Catches a fraction of a millisecond cut off, which would be the end of the token.
void TestTrailingSilence::fractionsAreRoundedUp()
{
    QCOMPARE(timeUntilHeard(250ms, 0ms, 1us).count(), 1);
    QCOMPARE(timeUntilHeard(250ms, 0ms, 100001us).count(), 101);
    QCOMPARE(timeUntilHeard(250ms, 0ms, 100000us).count(), 100);
}

QTEST_APPLESS_MAIN(TestTrailingSilence)
#include "tst_trailingsilence.moc"
