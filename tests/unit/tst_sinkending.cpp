#include "audio/SinkEnding.h"

#include <QTest>

class TestSinkEnding : public QObject
{
    Q_OBJECT

private slots:
    void ending_data();
    void ending();
    void tokenLeavesTheBuffer();
    void blockSizeUnknown();
};

void TestSinkEnding::ending_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<double>("silence");
    QTest::addColumn<bool>("idleBeforePlayed");

    QTest::newRow("older than all") << "5.15.2" << 0.100 << true;
    QTest::newRow("first") << "6.0.0" << 0.100 << true;
    QTest::newRow("measured 6.4") << "6.4.2" << 0.100 << true;
    QTest::newRow("last that discards") << "6.6.3" << 0.100 << true;
    QTest::newRow("begins to drain") << "6.7.0" << 0.0 << false;
    QTest::newRow("measured 6.8") << "6.8.2" << 0.0 << false;
    QTest::newRow("last that drains") << "6.8.9" << 0.0 << false;
    QTest::newRow("loses the last quantum") << "6.9.0" << 0.012 << false;
    QTest::newRow("two digits are a number") << "6.10.0" << 0.012 << false;
    QTest::newRow("measured 6.11") << "6.11.2" << 0.012 << false;
    QTest::newRow("newer than all") << "7.0.0" << 0.012 << false;
}

// Catches a version put into the wrong group, and one compared as text.
void TestSinkEnding::ending()
{
    QFETCH(const QString, version);
    const SinkEnding result = sinkEnding(QVersionNumber::fromString(version));
    QTEST(result.trailingSilence, "silence");
    QTEST(result.idleBeforePlayed, "idleBeforePlayed");
}

// A buffer of 1000 bytes holds the end of a token and 300 bytes of silence; the server takes blocks
// of 200. Catches a token ended while the buffer still holds some of it, and one ended before its
// last block has been heard.
void TestSinkEnding::tokenLeavesTheBuffer()
{
    BufferDrain drain(1000, 300);
    QCOMPARE(drain.unheard(150), std::nullopt);
    QCOMPARE(drain.unheard(150), std::nullopt);
    QCOMPARE(drain.unheard(350), std::nullopt);
    QCOMPARE(drain.unheard(550), std::nullopt);
    QCOMPARE(drain.unheard(699), std::nullopt);
    BufferDrain exact = drain;
    QCOMPARE(drain.unheard(750), std::optional<qint64>(1));
    QCOMPARE(exact.unheard(700), std::optional<qint64>(1));

    BufferDrain blocks(1000, 300);
    QCOMPARE(blocks.unheard(550), std::nullopt);
    QCOMPARE(blocks.unheard(750), std::optional<qint64>(150));
    // Still the same block: asking again must not shorten what is left of it.
    QCOMPARE(blocks.unheard(750), std::optional<qint64>(150));
    QCOMPARE(blocks.unheard(950), std::optional<qint64>(0));
}

// Catches a guess where no block has been seen: the token has left the buffer before the first
// look.
void TestSinkEnding::blockSizeUnknown()
{
    BufferDrain drain(1000, 300);
    QCOMPARE(drain.unheard(900), std::optional<qint64>(0));
}

QTEST_APPLESS_MAIN(TestSinkEnding)
#include "tst_sinkending.moc"
