#include "audio/SinkEnding.h"

#include <QTest>

class TestSinkEnding : public QObject
{
    Q_OBJECT

private slots:
    void ending_data();
    void ending();
};

void TestSinkEnding::ending_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<double>("silence");
    QTest::addColumn<bool>("idleBeforePlayed");

    QTest::newRow("older than all") << "5.15.2" << 0.500 << true;
    QTest::newRow("first") << "6.0.0" << 0.500 << true;
    QTest::newRow("measured 6.4") << "6.4.2" << 0.500 << true;
    QTest::newRow("last that discards") << "6.6.3" << 0.500 << true;
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

QTEST_APPLESS_MAIN(TestSinkEnding)
#include "tst_sinkending.moc"
