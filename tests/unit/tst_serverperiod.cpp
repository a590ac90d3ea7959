// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/ServerPeriod.h"

#include <QTest>

class TestServerPeriod : public QObject
{
    Q_OBJECT

private slots:
    void aPeriodIsRequestedWithoutLosingTheUsersSettings_data();
    void aPeriodIsRequestedWithoutLosingTheUsersSettings();
};

void TestServerPeriod::aPeriodIsRequestedWithoutLosingTheUsersSettings_data()
{
    QTest::addColumn<QByteArray>("pulseBefore");
    QTest::addColumn<QByteArray>("pipewireBefore");
    QTest::addColumn<QByteArray>("pulse");
    QTest::addColumn<QByteArray>("pipewire");

    const QByteArray ours = "{ node.force-quantum = 2048 }";
    QTest::newRow("nothing set") << QByteArray() << QByteArray()
                                 << QByteArray("node.force-quantum=2048 ") << ours;
    QTest::newRow("something else set")
        << QByteArray("media.role=test") << QByteArray("{ media.role = test }")
        << QByteArray("node.force-quantum=2048 media.role=test")
        << QByteArray("{ media.role = test }");
    QTest::newRow("a period of the user's")
        << QByteArray("node.force-quantum=512") << QByteArray("{ node.force-quantum = 512 }")
        << QByteArray("node.force-quantum=512") << QByteArray("{ node.force-quantum = 512 }");
    QTest::newRow("one of the two set")
        << QByteArray() << QByteArray("{ node.force-quantum = 512 }")
        << QByteArray("node.force-quantum=2048 ") << QByteArray("{ node.force-quantum = 512 }");
}

// Catches a property that is not asked for, one of the user's that is lost, and one that is asked
// for again by each window.
void TestServerPeriod::aPeriodIsRequestedWithoutLosingTheUsersSettings()
{
    QFETCH(const QByteArray, pulseBefore);
    QFETCH(const QByteArray, pipewireBefore);
    const auto set = [](const char *name, const QByteArray &value) {
        value.isEmpty() ? qunsetenv(name) : qputenv(name, value);
    };
    set("PULSE_PROP", pulseBefore);
    set("PIPEWIRE_PROPS", pipewireBefore);
    for (int window = 0; window < 2; ++window) {
        requestServerPeriod();
        QTEST(qgetenv("PULSE_PROP"), "pulse");
        QTEST(qgetenv("PIPEWIRE_PROPS"), "pipewire");
    }
}

QTEST_APPLESS_MAIN(TestServerPeriod)
#include "tst_serverperiod.moc"
