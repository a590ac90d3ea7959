// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/StreamFollower.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <ratio>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

using State = StreamFollower::State;

namespace {

using Time = StreamFollower::Time;

constexpr qint64 ordinaryPeriod = 576; // 12 ms
constexpr qint64 rate = 48000;

/// The period in samples that blocks of this size tell when @p taken samples have been taken in
/// them: PipeWire's, or none as of PulseAudio's. At the beginning blocks may be smaller.
qint64 periodOf(qint64 block, qint64 taken)
{
    if (block > 1024)
        return block;
    return block == 1024 || taken < 4096 ? ordinaryPeriod : 0;
}

Time samples(qint64 n)
{
    return std::chrono::duration_cast<Time>(std::chrono::duration<qint64, std::ratio<1, rate>>(n));
}

/// A moment at which a server has taken everything before @c position.
struct Take
{
    Time at;
    qint64 position;
};

/// A server that takes blocks of @p block samples from @p start on, as fast as they are played.
std::vector<Take> regularServer(Time start, qint64 block, qint64 length)
{
    std::vector<Take> takes;
    for (qint64 position = block; position < length + 2 * block; position += block)
        takes.push_back({start + samples(position - block), position});
    return takes;
}

/// Follows streams by a clock of its own: the looks come when the follower asked for them, or
/// later.
class Session : public QObject
{
public:
    Session()
    {
        connect(&follower, &StreamFollower::tokenHeard, this, [this] { heardAt.append(now); });
        connect(&follower, &StreamFollower::stalled, this,
                [this] { stalls.append(follower.state()); });
    }

    void follow(qint64 tokenEnd)
    {
        m_lastLook = now;
        follower.follow(tokenEnd, [this] {
            StreamFollower::Reading reading = {.taken = taken(), .stopped = stopped};
            reading.played = reading.taken;
            return reading;
        });
    }

    qint64 taken() const
    {
        qint64 position = 0;
        for (const Take &take : server) {
            if (take.at <= now)
                position = take.position;
        }
        return position;
    }

    /// Lets the next look come @p late; false when none is due.
    bool look(Time late = {})
    {
        if (!timer().isActive())
            return false;
        now = std::max(now, nextLook()) + late;
        m_lastLook = now;
        follower.look();
        return true;
    }

    /// Looks on time until @p time.
    void lookUntil(Time time)
    {
        while (timer().isActive() && nextLook() <= time)
            look();
        now = std::max(now, time);
    }

    Time now = 1h;
    StreamFollower follower{nullptr, [this] { return now; }};
    std::vector<Take> server;
    bool stopped = false;
    QList<Time> heardAt;
    QList<State> stalls;

private:
    const QTimer &timer() const { return *follower.findChild<QTimer *>(); }
    Time nextLook() const { return m_lastLook + timer().intervalAsDuration(); }

    Time m_lastLook{};
};

} // namespace

class TestStreamFollower : public QObject
{
    Q_OBJECT

private slots:
    void anIdleFollowerDoesNotLook();
    void theEndIsToldOnceJustAfterItIsHeard_data();
    void theEndIsToldOnceJustAfterItIsHeard();
    void twoBlocksInOneLookDoNotChangeTheEnd();
    void aLateLookStillTellsTheEndOnce_data();
    void aLateLookStillTellsTheEndOnce();
    void aStreamThatGoesOnAfterAStallIsHeardToItsEnd();
    void theEndOfAStreamStalledForGoodIsNeverTold();
    void theEndOfAStoppedStreamIsNeverTold_data();
    void theEndOfAStoppedStreamIsNeverTold();
    void theEndOfAReleasedStreamIsNeverTold();
    void aStreamIsFollowedAfterOneThatStopped();
    void theEndAgreesWithAPlainModelForRandomServers();
    void theFollowerLooksByItsOwnTimer();
};

// Catches a follower that looks at a stream before there is one.
void TestStreamFollower::anIdleFollowerDoesNotLook()
{
    Session session;
    session.follower.look();
    QVERIFY(!session.look());
    QCOMPARE(session.follower.state(), State::Idle);
}

void TestStreamFollower::theEndIsToldOnceJustAfterItIsHeard_data()
{
    QTest::addColumn<qint64>("block");
    QTest::addColumn<qint64>("tokenEnd");
    for (const qint64 block : {256, 1024, 2048}) {
        QTest::addRow("%lld, one sample", block) << block << qint64{1};
        QTest::addRow("%lld, 20 ms", block) << block << qint64{960};
        QTest::addRow("%lld, whole blocks", block) << block << qint64{12288};
        QTest::addRow("%lld, a sample more", block) << block << qint64{12289};
        QTest::addRow("%lld, a minute", block) << block << 60 * rate;
    }
}

// Catches an end that is told before the last sample can have been heard, more than a look later,
// twice, or never.
void TestStreamFollower::theEndIsToldOnceJustAfterItIsHeard()
{
    QFETCH(const qint64, block);
    QFETCH(const qint64, tokenEnd);
    Session session;
    const Time start = session.now;
    // Its blocks fall between the looks.
    session.server = regularServer(start + 300us, block, tokenEnd);
    session.follow(tokenEnd);
    QCOMPARE(session.follower.state(), State::Following);
    while (session.look()) {
    }

    QCOMPARE(session.heardAt.size(), 1);
    QCOMPARE(session.follower.state(), State::Idle);
    QVERIFY(session.stalls.isEmpty());
    const qint64 nBlocks = (tokenEnd + block - 1) / block;
    const Time lastTake = start + 300us + samples((nBlocks - 1) * block);
    const qint64 period = periodOf(block, nBlocks * block);
    const Time heard =
        lastTake + std::max<Time>(samples(period) - samples(nBlocks * block - tokenEnd), 0ms);
    const Time error = session.heardAt.first() - heard;
    QVERIFY2(error >= 0ms && error <= 2ms, // one look to see the block, and one to tell the end
             qPrintable(QString::number(error.count())));
    QCOMPARE(session.follower.progress().lastTakenAt() - lastTake < 1ms, true);
}

// Catches a period, and with it an end, taken from two blocks that one look sees.
void TestStreamFollower::twoBlocksInOneLookDoNotChangeTheEnd()
{
    Session session;
    session.server = regularServer(session.now, 1024, 12288);
    session.follow(12288);
    session.lookUntil(session.now + 100ms);
    session.look(40ms);
    while (session.look()) {
    }
    const Time heard = session.server.at(11).at + samples(ordinaryPeriod);
    QVERIFY(session.heardAt.value(0) >= heard && session.heardAt.value(0) <= heard + 2ms);
}

void TestStreamFollower::aLateLookStillTellsTheEndOnce_data()
{
    QTest::addColumn<int>("heldUpAt"); // ms from the start
    QTest::addColumn<int>("heldUpFor");
    QTest::newRow("at the last block") << 210 << 30;
    QTest::newRow("before the end, which has been told") << 220 << 60;
    QTest::newRow("over all of it") << 100 << 400;
}

// Catches an end that is missed when the program is held up, told twice, or told as if it were
// then.
void TestStreamFollower::aLateLookStillTellsTheEndOnce()
{
    QFETCH(const int, heldUpAt);
    QFETCH(const int, heldUpFor);
    Session session;
    const Time start = session.now;
    session.server = regularServer(start, 2048, 3 * rate);
    session.follow(12288); // taken at 213.3 ms, heard at 256 ms
    session.lookUntil(start + heldUpAt * 1ms);
    QVERIFY(session.look(heldUpFor * 1ms));
    while (session.look()) {
    }
    QCOMPARE(session.heardAt.size(), 1);
    QVERIFY(session.heardAt.first() >= start + 256ms);
    const Time told = *session.follower.progress().tokenHeardAt() - start;
    // A look that comes late leaves one block open.
    QVERIFY2(told >= 256ms && told <= 256ms + samples(2048) + 1ms,
             qPrintable(QString::number(told.count())));
}

// Catches a stall that is not told or told again, and one after which the token's end is not heard.
void TestStreamFollower::aStreamThatGoesOnAfterAStallIsHeardToItsEnd()
{
    Session session;
    const Time start = session.now;
    session.server = {{start, 2048}, {start + 6s, 4096}, {start + 12s, 6144}};
    session.follow(6144);
    session.lookUntil(start + 4990ms);
    QCOMPARE(session.follower.state(), State::Following);
    session.lookUntil(start + 5010ms);
    QCOMPARE(session.follower.state(), State::Stalled);
    QCOMPARE(session.stalls, QList<State>{State::Stalled});
    session.lookUntil(start + 5990ms);
    QCOMPARE(session.stalls.size(), 1);
    session.lookUntil(start + 6010ms);
    QCOMPARE(session.follower.state(), State::Following);
    session.lookUntil(start + 11500ms);
    QCOMPARE(session.stalls.size(), 2);
    while (session.look()) {
    }
    QCOMPARE(session.stalls.size(), 2);
    QCOMPARE(session.heardAt.size(), 1);
    QVERIFY(session.heardAt.first() >= start + 12s + samples(2048));
    QVERIFY(session.follower.progress().serverDelay() < 6s);
}

// Catches an end that is told by the clock although the server takes nothing any more.
void TestStreamFollower::theEndOfAStreamStalledForGoodIsNeverTold()
{
    Session session;
    session.server = {{session.now, 2048}};
    session.follow(2049);
    session.lookUntil(session.now + 60s);
    QCOMPARE(session.follower.state(), State::Stalled);
    QVERIFY(session.heardAt.isEmpty());
    QCOMPARE(session.stalls.size(), 1);
}

void TestStreamFollower::theEndOfAStoppedStreamIsNeverTold_data()
{
    QTest::addColumn<int>("stopAt"); // ms from the start
    QTest::addColumn<QList<State>>("stalls");
    QTest::newRow("at once") << 0 << QList<State>{State::Stopped};
    QTest::newRow("while samples are taken") << 100 << QList<State>{State::Stopped};
    QTest::newRow("between the last block and its end") << 225 << QList<State>{State::Stopped};
    QTest::newRow("after a stall") << 6000 << QList<State>{State::Stalled};
}

// Catches the end told of a token that was not heard to it, a stop that is told twice or not at
// all, and looks at a stream that has stopped.
void TestStreamFollower::theEndOfAStoppedStreamIsNeverTold()
{
    QFETCH(const int, stopAt);
    Session session;
    const Time start = session.now;
    session.server = regularServer(start, 2048, 12288);
    if (stopAt > 5000)
        session.server.resize(2);
    session.follow(12288); // taken at 213.3 ms, heard at 256 ms
    session.lookUntil(start + stopAt * 1ms);
    session.stopped = true;
    session.look();
    QTEST(session.stalls, "stalls");
    QCOMPARE(session.follower.state(), State::Stopped);
    session.follower.look();
    QVERIFY(!session.look());
    QCOMPARE(session.stalls.size(), 1);
    QVERIFY(session.heardAt.isEmpty());

    session.stopped = false;
    session.follower.look();
    QCOMPARE(session.follower.state(), State::Stopped);
}

// Catches a token that ends after its stream was given up.
void TestStreamFollower::theEndOfAReleasedStreamIsNeverTold()
{
    Session session;
    session.server = regularServer(session.now, 2048, 12288);
    session.follow(12288);
    session.lookUntil(session.now + 220ms);
    QVERIFY(session.follower.progress().tokenHeardAt());
    session.follower.release();
    QCOMPARE(session.follower.state(), State::Idle);
    QVERIFY(!session.look());
    session.now += 1s;
    session.follower.look();
    QVERIFY(session.heardAt.isEmpty());
    QVERIFY(session.stalls.isEmpty());
}

// Catches what a stream that stopped leaves behind for the next.
void TestStreamFollower::aStreamIsFollowedAfterOneThatStopped()
{
    Session session;
    session.stopped = true;
    session.follow(12288);
    session.look();
    QCOMPARE(session.follower.state(), State::Stopped);

    session.stopped = false;
    session.server = regularServer(session.now, 1024, 2048);
    session.follow(2048);
    QCOMPARE(session.follower.state(), State::Following);
    while (session.look()) {
    }
    QCOMPARE(session.heardAt.size(), 1);
}

// Catches any rule that holds only for servers that somebody thought of: the end must come with the
// first look after the moment that a plain model tells.
void TestStreamFollower::theEndAgreesWithAPlainModelForRandomServers()
{
    for (quint32 seed = 0; seed < 10'000; ++seed) {
        QRandomGenerator random(seed);
        Session session;
        const Time start = session.now;
        const qint64 tokenEnd = random.bounded(1, 20'000);
        const qint64 largest = QList<qint64>{300, 1024, 2048, 6000}.at(random.bounded(4));
        Time at = start + random.bounded(20'000) * 1us;
        for (qint64 position = 0; position < tokenEnd + 30'000;) {
            const qint64 block = random.bounded(1, int(largest));
            position += block;
            session.server.push_back({at, position});
            at += samples(block) * random.bounded(50, 150) / 100 +
                  (random.bounded(20) == 0 ? random.bounded(80'000) * 1us : 0us);
        }
        session.follow(tokenEnd);

        // The model: what was taken at each look, and from that when the token is heard.
        std::vector<qint64> steps;
        qint64 takenBefore = 0;
        Time lookBefore = start;
        std::optional<Time> heard;
        Time late{};
        do {
            late =
                random.bounded(8) == 0 ? random.bounded(30'000) * 1us : random.bounded(900) * 1us;
            QVERIFY(session.look(late));
            const qint64 taken = session.taken();
            if (heard)
                continue;
            if (taken > takenBefore)
                steps.push_back(taken - takenBefore);
            if (taken >= tokenEnd) {
                std::vector<qint64> sorted = steps;
                std::sort(sorted.begin(), sorted.end());
                const qint64 median = sorted.at((sorted.size() - 1) / 2);
                const qint64 period = periodOf(median, taken);
                heard =
                    std::max(session.now + samples(period) - samples(taken - tokenEnd), lookBefore);
            }
            takenBefore = taken;
            lookBefore = session.now;
        } while (session.heardAt.isEmpty());

        const auto reason = [&] { return qPrintable(QString("seed %1").arg(seed)); };
        QVERIFY2(session.now >= *heard, reason());
        QVERIFY2(session.now <= std::max(*heard + 1ms + late, lookBefore), reason());
        const auto last = std::find_if(session.server.begin(), session.server.end(),
                                       [&](const Take &take) { return take.position >= tokenEnd; });
        QVERIFY2(session.now >= last->at, reason());
        QVERIFY2(session.follower.progress().serverDelay() < 200ms, reason());
    }
}

// Catches a follower that does not look by itself: as in the program, by the monotonic clock.
void TestStreamFollower::theFollowerLooksByItsOwnTimer()
{
    StreamFollower follower;
    const QSignalSpy heard(&follower, &StreamFollower::tokenHeard);
    const Time start = follower.now();
    follower.follow(4096, [&] {
        const qint64 taken = (follower.now() - start) / samples(2048) * 2048;
        return StreamFollower::Reading{.taken = taken, .played = taken};
    });
    const auto *timer = follower.findChild<QTimer *>();
    QCOMPARE(timer->timerType(), Qt::PreciseTimer);
    QVERIFY(timer->isSingleShot()); // a look decides when the next one comes, if at all
    QTRY_COMPARE(heard.size(), 1);
    QVERIFY(follower.now() - start >= samples(3 * 2048));
    QVERIFY(*follower.progress().tokenHeardAt() - start >= samples(3 * 2048));
}

QTEST_GUILESS_MAIN(TestStreamFollower)
#include "tst_streamfollower.moc"
