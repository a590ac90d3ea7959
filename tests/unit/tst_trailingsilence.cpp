#include "audio/TrailingSilence.h"

#include <QTest>

class TestTrailingSilence : public QObject
{
    Q_OBJECT

private slots:
    void silence_data();
    void silence();
};

void TestTrailingSilence::silence_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<double>("expected");

    QTest::newRow("first") << "6.0.0" << 0.110;
    QTest::newRow("measured 6.4") << "6.4.2" << 0.110;
    QTest::newRow("last of the first group") << "6.6.3" << 0.110;
    QTest::newRow("begins to drain") << "6.7.0" << 0.0;
    QTest::newRow("measured 6.8") << "6.8.2" << 0.0;
    QTest::newRow("last that drains") << "6.8.9" << 0.0;
    QTest::newRow("loses the last quantum") << "6.9.0" << 0.012;
    QTest::newRow("two digits are a number") << "6.10.0" << 0.012;
    QTest::newRow("measured 6.11") << "6.11.2" << 0.012;
    QTest::newRow("newer than all") << "7.0.0" << 0.012;
    QTest::newRow("older than all") << "5.15.2" << 0.110;
}

// Catches a version put into the wrong group, and one compared as text.
void TestTrailingSilence::silence()
{
    QFETCH(const QString, version);
    QTEST(trailingSilence(QVersionNumber::fromString(version)), "expected");
}

QTEST_APPLESS_MAIN(TestTrailingSilence)
#include "tst_trailingsilence.moc"
