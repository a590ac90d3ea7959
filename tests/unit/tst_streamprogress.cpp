// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/StreamProgress.h"

#include <QList>
#include <QTest>

#include <chrono>
#include <ratio>

using namespace std::chrono_literals;

namespace {

using Time = StreamProgress::Time;

constexpr qint64 ordinaryPeriod = 576; // 12 ms

Time samples(qint64 n)
{
    return std::chrono::duration_cast<Time>(std::chrono::duration<qint64, std::ratio<1, 48000>>(n));
}

/// How long a token has still to be heard at the last of some looks, in samples.
using Unheard = std::optional<qint64>;

/// Looks at streams, a millisecond later each time unless another time is set.
class Looks
{
public:
    void start(qint64 tokenEnd) { progress.start(tokenEnd, now); }

    Unheard at(qint64 taken, qint64 played)
    {
        now += 1ms;
        progress.look(now, taken, played);
        const std::optional<Time> heardAt = progress.tokenHeardAt();
        if (!heardAt)
            return std::nullopt;
        return std::chrono::round<std::chrono::duration<qint64, std::ratio<1, 48000>>>(*heardAt -
                                                                                       now)
            .count();
    }

    Unheard at(qint64 taken) { return at(taken, taken); }

    /// Looks on for @p duration while nothing happens to the @p taken samples.
    void on(Time duration, qint64 taken)
    {
        for (const Time end = now + duration; now + 1ms <= end;)
            at(taken);
    }

    StreamProgress progress;
    Time now = 1h;
};

/// What is told as a server takes a stream in blocks of @p block samples, looked at twice in each,
/// until the token that ends at @p tokenEnd has been taken.
Unheard follow(Looks &looks, qint64 block, qint64 tokenEnd)
{
    looks.start(tokenEnd);
    for (qint64 taken = 0;; taken += block) {
        looks.at(taken);
        const std::optional<Time> heardAt = looks.progress.tokenHeardAt();
        if (!heardAt && taken > tokenEnd)
            return std::nullopt;
        const Unheard unheard = looks.at(taken);
        if (looks.progress.tokenHeardAt() != heardAt)
            return -1; // looking again must change nothing
        if (unheard)
            return *unheard + 48; // the second look is a millisecond later
    }
}

} // namespace

class TestStreamProgress : public QObject
{
    Q_OBJECT

private slots:
    void leadingSilenceMakesATokenEndWithABlock_data();
    void leadingSilenceMakesATokenEndWithABlock();
    void noEndIsToldBeforeAllIsTaken();
    void theEndIsToldByTheServersPeriod_data();
    void theEndIsToldByTheServersPeriod();
    void theNextTokenEndsWithABlockOfTheLastServer_data();
    void theNextTokenEndsWithABlockOfTheLastServer();
    void smallBlocksAtTheBeginningTeachNothing();
    void twoBlocksSeenAtOnceAreNotOneLongBlock();
    void aBlockSeenInTwoStepsKeepsTheLongPeriod();
    void anEmptyTokenEndsWithTheFirstBlock();
    void aTokenTakenBetweenTwoLooksEnds();
    void aStreamLeavesNothingForTheNext();
    void aServerThatPlaysLaterEndsTheTokenLater();
    void aLateLookDoesNotDelayTheEnd();
    void theEndIsNeverBeforeALookThatFoundSamplesUntaken();
    void aLateServerIsMeasuredAndALateLookIsNot_data();
    void aLateServerIsMeasuredAndALateLookIsNot();
    void theStartOfAStreamIsNoDelay();
    void aBlockSeenInTwoHalvesIsNoDelay();
    void theLongestTimeWithoutALookIsKept();
    void firstAndLastBlockAreTimedByTheLooksThatSeeThem();
};

void TestStreamProgress::leadingSilenceMakesATokenEndWithABlock_data()
{
    QTest::addColumn<qint64>("nSamples");
    QTest::addColumn<qint64>("silence");

    QTest::newRow("20 ms") << qint64{960} << qint64{64};
    QTest::newRow("250 ms") << qint64{12000} << qint64{288};
    QTest::newRow("whole blocks") << qint64{2048} << qint64{0};
    QTest::newRow("one sample more") << qint64{2049} << qint64{1023};
    QTest::newRow("one sample") << qint64{1} << qint64{1023};
    QTest::newRow("nothing") << qint64{0} << qint64{0};
}

// Catches a token that does not end with a block: before a server has been seen it is taken for the
// ordinary one.
void TestStreamProgress::leadingSilenceMakesATokenEndWithABlock()
{
    QFETCH(const qint64, nSamples);
    QTEST(StreamProgress().leadingSilence(nSamples), "silence");
}

// Catches a token ended while the buffer still holds some of it.
void TestStreamProgress::noEndIsToldBeforeAllIsTaken()
{
    Looks looks;
    looks.start(3072);
    for (const qint64 taken : {0, 0, 1024, 1024, 2048, 3071})
        QCOMPARE(looks.at(taken), std::nullopt);
    QVERIFY(looks.at(3072).has_value());
}

void TestStreamProgress::theEndIsToldByTheServersPeriod_data()
{
    QTest::addColumn<qint64>("block");
    QTest::addColumn<qint64>("tokenEnd");
    QTest::addColumn<qint64>("unheard");

    QTest::newRow("ordinary block") << qint64{1024} << qint64{12288} << ordinaryPeriod;
    // As PulseAudio does, which tells itself what has been played.
    QTest::newRow("shorter block") << qint64{960} << qint64{12480} << qint64{0};
    QTest::newRow("token ends within the block")
        << qint64{1024} << qint64{12188} << ordinaryPeriod - 100;
    QTest::newRow("long block is the period") << qint64{2048} << qint64{12288} << qint64{2048};
    QTest::newRow("token ends within a long block")
        << qint64{2048} << qint64{11264} << qint64{1024};
}

// Catches an end told too early or too late by a server with other blocks, whose period is not the
// block.
void TestStreamProgress::theEndIsToldByTheServersPeriod()
{
    QFETCH(const qint64, block);
    QFETCH(const qint64, tokenEnd);
    QFETCH(const qint64, unheard);
    Looks looks;
    QCOMPARE(follow(looks, block, tokenEnd), Unheard(unheard));
    QCOMPARE(looks.progress.block(), samples(block));
}

void TestStreamProgress::theNextTokenEndsWithABlockOfTheLastServer_data()
{
    QTest::addColumn<qint64>("block");
    QTest::addColumn<qint64>("silence");

    QTest::newRow("960") << qint64{960} << qint64{480};
    QTest::newRow("1024") << qint64{1024} << qint64{288};
    // A long block tells the period: the token may end anywhere in it.
    QTest::newRow("2048") << qint64{2048} << qint64{288};
}

// Catches blocks that are not learnt: the next token ends with a block of the server that took the
// last.
void TestStreamProgress::theNextTokenEndsWithABlockOfTheLastServer()
{
    QFETCH(const qint64, block);
    Looks looks;
    QVERIFY(follow(looks, block, 12000));
    QTEST(looks.progress.leadingSilence(12000), "silence");
}

// Catches the small blocks at the beginning of a stream taken for those of the whole of it.
void TestStreamProgress::smallBlocksAtTheBeginningTeachNothing()
{
    Looks looks;
    looks.start(12288);
    QCOMPARE(looks.at(256), std::nullopt);
    QCOMPARE(looks.at(768), std::nullopt);
    for (qint64 taken = 1024; taken < 12288; taken += 1024)
        QCOMPARE(looks.at(taken), std::nullopt);
    QCOMPARE(looks.at(12288), Unheard(ordinaryPeriod));
    QCOMPARE(looks.progress.leadingSilence(12000), 288);

    // A stream of nothing else teaches nothing.
    looks.start(1024);
    QCOMPARE(looks.at(512), std::nullopt);
    QCOMPARE(looks.at(1024), Unheard(ordinaryPeriod));
    QCOMPARE(looks.progress.leadingSilence(12000), 288);
}

// Catches two blocks taken for one long one when the program was held up between two looks.
void TestStreamProgress::twoBlocksSeenAtOnceAreNotOneLongBlock()
{
    Looks looks;
    looks.start(4096);
    QCOMPARE(looks.at(2048), std::nullopt);
    QCOMPARE(looks.at(3072), std::nullopt);
    QCOMPARE(looks.at(4096), Unheard(ordinaryPeriod));
}

// Catches a long period taken for an ordinary one because a look saw half of a block: with tokens
// of 5 s the clock started 30 ms early now and then.
void TestStreamProgress::aBlockSeenInTwoStepsKeepsTheLongPeriod()
{
    Looks looks;
    looks.start(12288);
    for (const qint64 taken : {2048, 4096, 5120, 6144, 8192, 10240})
        QCOMPARE(looks.at(taken), std::nullopt);
    QCOMPARE(looks.at(12288), Unheard(2048));
}

// Catches a look at the period when nothing has been taken yet.
void TestStreamProgress::anEmptyTokenEndsWithTheFirstBlock()
{
    Looks looks;
    looks.start(0);
    QCOMPARE(looks.at(0), std::nullopt);
    QVERIFY(looks.at(1024).value_or(1) <= 0);
}

// Catches a token that never ends because the server took all of it between two looks.
void TestStreamProgress::aTokenTakenBetweenTwoLooksEnds()
{
    Looks looks;
    looks.start(100);
    QCOMPARE(looks.at(0), std::nullopt);
    QVERIFY(looks.at(1024).value_or(1) <= 0);
}

// Catches what one stream leaves behind in the next.
void TestStreamProgress::aStreamLeavesNothingForTheNext()
{
    Looks looks;
    QCOMPARE(follow(looks, 2048, 4096), Unheard(2048));
    QCOMPARE(follow(looks, 1024, 4096), Unheard(ordinaryPeriod));

    looks.start(20480);
    for (qint64 taken = 2048; taken < 20480; taken += 2048) {
        looks.at(taken);
        looks.on(80ms, taken);
    }
    looks.now += 100ms;
    looks.at(20480);
    QVERIFY(looks.progress.serverDelay() > 30ms);
    QVERIFY(looks.progress.longestBlindness() > 100ms);
    looks.now += 100ms;
    looks.start(20480);
    QCOMPARE(looks.progress.serverDelay(), Time{});
    QCOMPARE(looks.progress.longestBlindness(), Time{});
    QCOMPARE(looks.progress.tokenHeardAt(), std::nullopt);
    looks.at(2048);
    QCOMPARE(looks.progress.serverDelay(), Time{});
}

// Catches a sound card's own delay being cut off the token's end.
void TestStreamProgress::aServerThatPlaysLaterEndsTheTokenLater()
{
    Looks looks;
    looks.start(4096);
    QCOMPARE(looks.at(3072, 0), std::nullopt);
    QCOMPARE(looks.at(4096, 1024), Unheard(3072));

    looks.start(4096);
    QCOMPARE(looks.at(3072, 0), std::nullopt);
    QCOMPARE(looks.at(4096, 4000), Unheard(ordinaryPeriod));
}

// Catches an end that is told from the moment of a late look, as if all of what is taken by then
// had been taken at that moment.
void TestStreamProgress::aLateLookDoesNotDelayTheEnd()
{
    Looks looks;
    looks.start(12288);
    for (qint64 taken = 2048; taken <= 10240; taken += 2048) {
        looks.now += samples(2048) - 1ms;
        QCOMPARE(looks.at(taken), std::nullopt);
    }
    looks.now += samples(3 * 2048) - 1ms;
    QCOMPARE(looks.at(10240 + 3 * 2048), Unheard(2048 - 2 * 2048));
}

// Catches an end that lies before the last look, at which there was still some of the token to
// take.
void TestStreamProgress::theEndIsNeverBeforeALookThatFoundSamplesUntaken()
{
    Looks looks;
    looks.start(5000);
    for (qint64 taken = 1024; taken <= 4096; taken += 1024)
        QCOMPARE(looks.at(taken), std::nullopt);
    // Half of a second is taken at once, as by a server that makes up for lost time.
    QVERIFY(looks.at(30000));
    QCOMPARE(*looks.progress.tokenHeardAt(), looks.now - 1ms);
}

void TestStreamProgress::aLateServerIsMeasuredAndALateLookIsNot_data()
{
    QTest::addColumn<qint64>("block");
    QTest::addColumn<int>("lost");  // ms by which one block comes late
    QTest::addColumn<int>("blind"); // ms without a look before that block is seen

    for (const qint64 block : {256, 1024, 2048}) {
        QTest::addRow("%lld, regular", block) << block << 0 << 1;
        QTest::addRow("%lld, 100 ms late", block) << block << 100 << 1;
        QTest::addRow("%lld, 100 ms late, 40 of them unseen", block) << block << 100 << 40;
        QTest::addRow("%lld, regular, but looked at late", block) << block << 0 << 40;
    }
}

// Catches a delay of the server's that goes unseen, and one that is only the program's own.
void TestStreamProgress::aLateServerIsMeasuredAndALateLookIsNot()
{
    QFETCH(const qint64, block);
    QFETCH(const int, lost);
    QFETCH(const int, blind);
    Looks looks;
    looks.start(48000);
    const Time start = looks.now;
    const Time loss = start + 500ms;
    while (!looks.progress.tokenHeardAt()) {
        const Time elapsed = looks.now + 1ms - start;
        const Time played = elapsed < 500ms ? elapsed : std::max<Time>(500ms, elapsed - lost * 1ms);
        looks.at(played / samples(block) * block);
        if (looks.now < loss + lost * 1ms && looks.now + 2ms > loss + (lost - blind) * 1ms &&
            blind > 1)
            looks.now += blind * 1ms;
    }
    const double delay =
        std::chrono::duration<double, std::milli>(looks.progress.serverDelay()).count();
    QVERIFY2(delay <= lost, qPrintable(QString::number(delay)));
    QVERIFY2(delay >= lost - blind - 3, qPrintable(QString::number(delay)));
}

// Catches a server that is only about to begin taken for one that is late.
void TestStreamProgress::theStartOfAStreamIsNoDelay()
{
    Looks looks;
    looks.start(20480);
    looks.at(256);
    looks.on(200ms, 256);
    for (qint64 taken = 2048; taken <= 20480; taken += 2048) {
        looks.at(taken);
        looks.on(41ms, taken);
    }
    QVERIFY2(looks.progress.serverDelay() <= 0ms,
             qPrintable(QString::number(looks.progress.serverDelay().count())));
}

// Catches the second half of a block taken for one that came early, and the next for one that came
// late.
void TestStreamProgress::aBlockSeenInTwoHalvesIsNoDelay()
{
    Looks looks;
    looks.start(20480);
    for (qint64 taken = 2048; taken <= 20480; taken += 2048) {
        looks.at(taken - 1024);
        looks.at(taken);
        looks.on(40ms, taken);
    }
    QVERIFY2(looks.progress.serverDelay() <= 0ms,
             qPrintable(QString::number(looks.progress.serverDelay().count())));
}

// Catches a late look that is forgotten, and the wait for the end counted as one.
void TestStreamProgress::theLongestTimeWithoutALookIsKept()
{
    Looks looks;
    looks.start(2048);
    looks.at(0);
    QCOMPARE(looks.progress.longestBlindness(), 1ms);
    looks.now += 7ms;
    looks.at(0);
    looks.at(2048);
    looks.now += 42ms;
    looks.at(4096);
    QCOMPARE(looks.progress.longestBlindness(), 8ms);
}

// Catches the blocks told by the wrong look, and blocks that are taken behind the token counted.
void TestStreamProgress::firstAndLastBlockAreTimedByTheLooksThatSeeThem()
{
    Looks looks;
    const Time start = looks.now;
    looks.start(2048);
    QCOMPARE(looks.progress.firstTakenAt(), start);
    QCOMPARE(looks.progress.lastTakenAt(), start);
    looks.at(0);
    for (const qint64 taken : {1024, 1024, 2048, 3072})
        looks.at(taken);
    QCOMPARE(looks.progress.firstTakenAt(), start + 2ms);
    QCOMPARE(looks.progress.lastTakenAt(), start + 4ms);
    QCOMPARE(looks.progress.taken(), 2048);
}

QTEST_APPLESS_MAIN(TestStreamProgress)
#include "tst_streamprogress.moc"
