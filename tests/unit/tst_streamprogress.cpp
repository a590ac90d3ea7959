#include "audio/StreamProgress.h"

#include <QList>
#include <QTest>

namespace {

using Unheard = std::optional<qint64>;

constexpr qint64 ordinaryPeriod = 576; // 12 ms

/// What is told as a server takes a stream in blocks of @p block samples, looked at twice in each,
/// until the token that ends at @p tokenEnd has been taken.
Unheard follow(StreamProgress &progress, qint64 block, qint64 tokenEnd)
{
    progress.start(tokenEnd);
    for (qint64 taken = 0;; taken += block) {
        const Unheard unheard = progress.unheard(taken, taken);
        if (unheard != progress.unheard(taken, taken))
            return -1; // looking again must change nothing
        if (unheard || taken > tokenEnd)
            return unheard;
    }
}

} // namespace

class TestStreamProgress : public QObject
{
    Q_OBJECT

private slots:
    void leadingSilence_data();
    void leadingSilence();
    void nothingBeforeAllIsTaken();
    void period_data();
    void period();
    void learntBlock_data();
    void learntBlock();
    void firstBlocksAreSmaller();
    void missedLook();
    void blockSeenInTwoSteps();
    void emptyToken();
    void endBeforeTheFirstLook();
    void nextStream();
    void serverPlaysLater();
};

void TestStreamProgress::leadingSilence_data()
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

// Before a server has been seen it is taken for the ordinary one.
void TestStreamProgress::leadingSilence()
{
    QFETCH(const qint64, nSamples);
    QTEST(StreamProgress().leadingSilence(nSamples), "silence");
}

// Catches a token ended while the buffer still holds some of it.
void TestStreamProgress::nothingBeforeAllIsTaken()
{
    StreamProgress progress;
    progress.start(3072);
    for (const qint64 taken : {0, 0, 1024, 1024, 2048, 3071})
        QCOMPARE(progress.unheard(taken, taken), std::nullopt);
    QVERIFY(progress.unheard(3072, 3072).has_value());
}

void TestStreamProgress::period_data()
{
    QTest::addColumn<qint64>("block");
    QTest::addColumn<qint64>("tokenEnd");
    QTest::addColumn<qint64>("unheard");

    QTest::newRow("ordinary block") << qint64{1024} << qint64{12288} << ordinaryPeriod;
    QTest::newRow("shorter block") << qint64{960} << qint64{12480} << ordinaryPeriod;
    QTest::newRow("token ends within the block")
        << qint64{1024} << qint64{12188} << ordinaryPeriod - 100;
    QTest::newRow("token ends early in the block") << qint64{1024} << qint64{11265} << qint64{0};
    QTest::newRow("long block is the period") << qint64{2048} << qint64{12288} << qint64{2048};
    QTest::newRow("token ends within a long block")
        << qint64{2048} << qint64{11264} << qint64{1024};
}

void TestStreamProgress::period()
{
    QFETCH(const qint64, block);
    QFETCH(const qint64, tokenEnd);
    QFETCH(const qint64, unheard);
    StreamProgress progress;
    QCOMPARE(follow(progress, block, tokenEnd), Unheard(unheard));
}

void TestStreamProgress::learntBlock_data()
{
    QTest::addColumn<qint64>("block");
    QTest::addColumn<qint64>("silence");

    QTest::newRow("960") << qint64{960} << qint64{480};
    QTest::newRow("1024") << qint64{1024} << qint64{288};
    // A long block tells the period: the token may end anywhere in it.
    QTest::newRow("2048") << qint64{2048} << qint64{288};
}

// The next token ends with a block of the server that took the last.
void TestStreamProgress::learntBlock()
{
    QFETCH(const qint64, block);
    StreamProgress progress;
    QVERIFY(follow(progress, block, 12000));
    QTEST(progress.leadingSilence(12000), "silence");
}

// Catches the small blocks at the beginning of a stream taken for those of the whole of it.
void TestStreamProgress::firstBlocksAreSmaller()
{
    StreamProgress progress;
    progress.start(12288);
    QCOMPARE(progress.unheard(256, 256), std::nullopt);
    QCOMPARE(progress.unheard(768, 768), std::nullopt);
    for (qint64 taken = 1024; taken < 12288; taken += 1024)
        QCOMPARE(progress.unheard(taken, taken), std::nullopt);
    QCOMPARE(progress.unheard(12288, 12288), Unheard(ordinaryPeriod));
    QCOMPARE(progress.leadingSilence(12000), 288);

    // A stream of nothing else teaches nothing.
    progress.start(1024);
    QCOMPARE(progress.unheard(512, 512), std::nullopt);
    QCOMPARE(progress.unheard(1024, 1024), Unheard(ordinaryPeriod));
    QCOMPARE(progress.leadingSilence(12000), 288);
}

// Catches two blocks taken for one long one when the program was held up between two looks.
void TestStreamProgress::missedLook()
{
    StreamProgress progress;
    progress.start(4096);
    QCOMPARE(progress.unheard(2048, 2048), std::nullopt);
    QCOMPARE(progress.unheard(3072, 3072), std::nullopt);
    QCOMPARE(progress.unheard(4096, 4096), Unheard(ordinaryPeriod));
}

// Catches a long period taken for an ordinary one because a look saw half of a block: with tokens
// of 5 s the clock started 30 ms early now and then.
void TestStreamProgress::blockSeenInTwoSteps()
{
    StreamProgress progress;
    progress.start(12288);
    for (const qint64 taken : {2048, 4096, 5120, 6144, 8192, 10240})
        QCOMPARE(progress.unheard(taken, taken), std::nullopt);
    QCOMPARE(progress.unheard(12288, 12288), Unheard(2048));
}

// Catches a look at the period when nothing has been taken yet.
void TestStreamProgress::emptyToken()
{
    StreamProgress progress;
    progress.start(0);
    QCOMPARE(progress.unheard(0, 0), std::nullopt);
    QCOMPARE(progress.unheard(1024, 1024), Unheard(0));
}

void TestStreamProgress::endBeforeTheFirstLook()
{
    StreamProgress progress;
    progress.start(100);
    QCOMPARE(progress.unheard(0, 0), std::nullopt);
    QCOMPARE(progress.unheard(1024, 1024), Unheard(0));
}

// Catches what one stream leaves behind in the next.
void TestStreamProgress::nextStream()
{
    StreamProgress progress;
    QCOMPARE(follow(progress, 2048, 4096), Unheard(2048));
    QCOMPARE(follow(progress, 1024, 4096), Unheard(ordinaryPeriod));
    QCOMPARE(follow(progress, 2048, 4096), Unheard(2048));
}

// Catches a sound card's own delay being cut off the token's end.
void TestStreamProgress::serverPlaysLater()
{
    StreamProgress progress;
    progress.start(4096);
    QCOMPARE(progress.unheard(3072, 0), std::nullopt);
    QCOMPARE(progress.unheard(4096, 1024), Unheard(3072));
    QCOMPARE(progress.unheard(4096, 4000), Unheard(ordinaryPeriod));
    QCOMPARE(progress.unheard(4096, 5000), Unheard(ordinaryPeriod));
}

QTEST_APPLESS_MAIN(TestStreamProgress)
#include "tst_streamprogress.moc"
