// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/WavFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// "ostrine-tools sessions" as it is used in a terminal or by a script.
class TestSessionsCommand : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void helpAndVersionAreTold_data();
    void helpAndVersionAreTold();
    void aMistakeIsNoFinding_data();
    void aMistakeIsNoFinding();
    void theStatusTellsWhetherAnswersAreMissing();
    void jsonCanBeRead();
    void aSessionIsRestored();
    void aSessionIsDeletedAfterTheWordYesOnly_data();
    void aSessionIsDeletedAfterTheWordYesOnly();

private:
    struct Result
    {
        int status;
        QString out;
        QString errors;
    };
    Result run(const QStringList &arguments, const QByteArray &input = {}) const;
    QString path(const QString &name) const { return m_home->filePath(name); }
    QString journal(const QString &name) const
    {
        return path("ostrine/sessions/" + name + ".jsonl");
    }
    void writeJournal(const QString &name) const;

    std::unique_ptr<QTemporaryDir> m_home;
};

void TestSessionsCommand::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    QVERIFY(m_home->isValid());
    QVERIFY(QDir().mkpath(path("ostrine/sessions")));
}

TestSessionsCommand::Result TestSessionsCommand::run(const QStringList &arguments,
                                                     const QByteArray &input) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_DATA_HOME", m_home->path());
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(name);
    process.setProcessEnvironment(environment);
    process.start(OSTRINE_TOOLS, arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished() && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void TestSessionsCommand::writeJournal(const QString &name) const
{
    QVERIFY(writeFile(
        journal(name),
        R"({"type":"session","started":"2026-11-22T08:01:50.123Z","parameters":{"subCode":"CHD001",)"
        R"("sesTypeNames":["practice"],"sesNum":1,"saveData":true},"tokens":["b.wav"],"order":[0]})"
        "\n"
        R"({"type":"answer","trial":1,"token":0,"filename":"b.wav","stim":"stranger","resp":"mother","rt":500})"
        "\n"));
}

void TestSessionsCommand::helpAndVersionAreTold_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("told");
    QTest::newRow("help") << QStringList{"--help"} << "sessions  ";
    QTest::newRow("help, short") << QStringList{"-h"} << "sessions  ";
    QTest::newRow("version") << QStringList{"--version"} << "ostrine-tools " OSTRINE_VERSION "\n";
    QTest::newRow("help of the command") << QStringList{"sessions", "--help"} << "--restore <ID>";
    QTest::newRow("version of the command")
        << QStringList{"sessions", "--version"} << "ostrine-tools " OSTRINE_VERSION "\n";
}

// Catches a program that cannot be asked, and one that needs a display to answer.
void TestSessionsCommand::helpAndVersionAreTold()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, told);
    const Result result = run(arguments);
    QCOMPARE(result.status, 0);
    QVERIFY2(result.out.contains(told), qPrintable(result.out));
    QCOMPARE(result.errors, "");
}

void TestSessionsCommand::aMistakeIsNoFinding_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("a window without a display") << QStringList();
    QTest::newRow("unknown command") << QStringList{"session"};
    QTest::newRow("unknown option") << QStringList{"sessions", "--nonsense"};
    QTest::newRow("an argument too many") << QStringList{"sessions", "CHD001"};
    QTest::newRow("restore without a file") << QStringList{"sessions", "--restore", "1"};
    QTest::newRow("a file without restore") << QStringList{"sessions", "--to", "r.txt"};
    QTest::newRow("restore and delete")
        << QStringList{"sessions", "--restore", "1", "--to", "r.txt", "--delete", "1"};
}

// Catches a mistake that a script takes for "nothing found" or for findings, and one that deletes.
void TestSessionsCommand::aMistakeIsNoFinding()
{
    QFETCH(const QStringList, arguments);
    writeJournal("1");
    const Result result = run(arguments, "yes\n");
    QCOMPARE(result.status, 2);
    QCOMPARE(result.out, "");
    QVERIFY(result.errors != "");
    QVERIFY(QFile::exists(journal("1")));
}

// Catches a status that does not change with what was found.
void TestSessionsCommand::theStatusTellsWhetherAnswersAreMissing()
{
    Result result = run({"sessions"});
    QCOMPARE(result.status, 0);
    QCOMPARE(result.out.count('\n'), 1);

    writeJournal("1");
    result = run({"sessions"});
    QCOMPARE(result.status, 1);
    QVERIFY(result.out.contains(
        "\n1\t2026-11-22T08:01:50Z\tCHD001\tpractice\t1\t1 of 1\tstopped\t\tnot saved\n"));

    QVERIFY(QFile::remove(journal("1")));
    QVERIFY(writeFile(journal("2"), "torn"));
    result = run({"sessions"});
    QCOMPARE(result.status, 1);
    QVERIFY(result.errors.contains("2.jsonl is not a journal"));
}

// Catches text among the JSON.
void TestSessionsCommand::jsonCanBeRead()
{
    writeJournal("1");
    const Result result = run({"sessions", "--json"});
    QCOMPARE(result.status, 1);
    const QJsonObject found = QJsonDocument::fromJson(result.out.toUtf8()).object();
    QCOMPARE(found["sessions"][0]["subject"].toString(), "CHD001");
}

// Catches a restored session of which a file is missing, and success told of none.
void TestSessionsCommand::aSessionIsRestored()
{
    writeJournal("1");
    Result result = run({"sessions", "--restore", "1", "--to", path("r.txt")});
    QCOMPARE(result.errors, "");
    QCOMPARE(result.status, 0);
    QVERIFY(contents(path("r.txt")).contains("b.wav\t1\t0\t500\t0\t500"));
    QVERIFY(QFile::exists(path("r_entries.txt")));
    QVERIFY(QFile::exists(path("r_parameters.txt")));

    result = run({"sessions", "--restore", "2", "--to", path("s.txt")});
    QCOMPARE(result.status, 2);
    QVERIFY(result.errors.contains("There is no journal named 2"));
}

void TestSessionsCommand::aSessionIsDeletedAfterTheWordYesOnly_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("deleted");
    QTest::newRow("yes") << QByteArray("yes\n") << true;
    QTest::newRow("no") << QByteArray("no\n") << false;
    QTest::newRow("y") << QByteArray("y\n") << false;
    QTest::newRow("nothing") << QByteArray() << false;
}

// Catches answers deleted by a slip.
void TestSessionsCommand::aSessionIsDeletedAfterTheWordYesOnly()
{
    QFETCH(const QByteArray, input);
    QFETCH(const bool, deleted);
    writeJournal("1");
    const Result result = run({"sessions", "--delete", "1"}, input);
    QVERIFY(result.errors.contains("Delete the journal of the session 1?"));
    QCOMPARE(QFile::exists(journal("1")), !deleted);
    QCOMPARE(result.status, deleted ? 0 : 2);
}

QTEST_GUILESS_MAIN(TestSessionsCommand)
#include "tst_sessionscommand.moc"
