// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/WavFile.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <filesystem>
#include <memory>

/// "ostrine-tools tokens" as a user or a script runs it.
class TestTokensCommand : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aGoodFolderIsATableWithoutFindings();
    void theLengthOfASessionIsTold_data();
    void theLengthOfASessionIsTold();
    void findingsAreToldInSentences();
    void jsonHoldsTheSame();
    void theStatusSaysWhetherSomethingWasFound_data();
    void theStatusSaysWhetherSomethingWasFound();
    void namesCannotBreakTheTable();
    void aSignalStopsTheCheck();

private:
    struct Run
    {
        int status = -1;
        QString out;
        QString errors;
    };
    static Run run(const QStringList &arguments);

    QString path(const QString &name) const { return m_folder->filePath(name); }
    void make(const QString &name, const WavBytes &file = {}) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    mutable int m_made = 0; ///< so that no two tokens have the same content
};

namespace {

/// A tone that is alike on both sides of 0, with so many periods.
QByteArray tone(int nPeriods)
{
    return WavBytes::samples16({4000, 8000, 4000, 0, -4000, -8000, -4000, 0}).repeated(nPeriods);
}

} // namespace

void TestTokensCommand::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

TestTokensCommand::Run TestTokensCommand::run(const QStringList &arguments)
{
    QProcess process;
    process.start(OSTRINE_TOOLS, QStringList("tokens") + arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void TestTokensCommand::make(const QString &name, const WavBytes &file) const
{
    WavBytes token = file;
    if (token.data.isEmpty())
        token.data = tone(1500 + m_made++);
    QVERIFY(writeFile(path(name), token.bytes()));
}

// Catches a wrong or missing column, and something on standard error that a script would stumble
// over.
void TestTokensCommand::aGoodFolderIsATableWithoutFindings()
{
    make("a001.wav");
    make("b002.wav");
    make("notes.txt");
    const Run good = run({m_folder->path(), "--n-times", "3"});
    QCOMPARE(good.errors, "");
    QCOMPARE(good.status, 0);
    QCOMPARE(good.out,
             "Number\tName\tCategory\tRate (Hz)\tBits\tChannels\tDuration (ms)\tPeak (dBFS)\t"
             "RMS (dBFS)\tFindings\n"
             "1\ta001.wav\tmother\t48000\t16\t1\t250.000\t-12.2\t-16.5\t\n"
             "2\tb002.wav\tstranger\t48000\t16\t1\t250.167\t-12.2\t-16.5\t\n"
             "\n"
             "2 tokens: 1 of the mother and 1 of strangers.\n"
             "A session has 6 presentations and lasts 9 s, without the time for the answers.\n"
             "Left out because their names do not end in .wav: notes.txt.\n");
}

void TestTokensCommand::theLengthOfASessionIsTold_data()
{
    QTest::addColumn<int>("nTimes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("never") << 0 << "0 presentations and lasts 0 s";
    QTest::newRow("once") << 1 << "1 presentation and lasts 2 s";
    QTest::newRow("just less than a minute") << 39 << "39 presentations and lasts 59 s";
    QTest::newRow("a minute") << 40 << "40 presentations and lasts 1 min 0 s";
    QTest::newRow("minutes") << 85 << "85 presentations and lasts 2 min 8 s";
}

// Catches seconds that are cut off or counted twice, and "1 presentations".
void TestTokensCommand::theLengthOfASessionIsTold()
{
    QFETCH(const int, nTimes);
    QFETCH(const QString, expected);
    make("a001.wav"); // takes 1.5 s each time
    const Run result = run({m_folder->path(), "--n-times", QString::number(nTimes)});
    QVERIFY2(result.out.contains("\n1 token: 1 of the mother and 0 of strangers.\nA session has " +
                                 expected + ", without the time"),
             qPrintable(result.out));
}

// Catches a finding that is left out, or told at another token.
void TestTokensCommand::findingsAreToldInSentences()
{
    make("a001.wav", {.sampleRate = 44100});
    make("b002.wav", {.audioFormat = 3});
    make("c002.wav", {.data = QByteArray(2000, '\0')});
    const Run bad = run({m_folder->path(), "--subject", "CHD009"});
    QCOMPARE(bad.status, 1);
    const QStringList lines = bad.out.split('\n');
    QCOMPARE(lines.at(1).section('\t', 0, 3), "1\ta001.wav\tstranger\t44100");
    QVERIFY2(lines.at(1).contains("The sampling rate is 44100 Hz, not 48000 Hz. A session would "
                                  "play it at 108.8 % of its speed"),
             qPrintable(lines.at(1)));
    QVERIFY2(lines.at(2).startsWith("2\tb002.wav\tstranger\t\t\t\t\t\t\tThe reader refuses the "
                                    "file: \"Not a PCM (linear quantitation) WAV file\". A session "
                                    "would play the token before it in its place."),
             qPrintable(lines.at(2)));
    QVERIFY2(lines.at(3).contains("\t-inf\t-inf\tNo sample reaches -60 dBFS."),
             qPrintable(lines.at(3)));
    QVERIFY(bad.out.contains("\nNo token is of the category \"mother\" for the subject code "
                             "\"CHD009\". "));
}

// Catches JSON that a script cannot read, or that says something else than the table.
void TestTokensCommand::jsonHoldsTheSame()
{
    make("a001.wav", {.numChannels = 2});
    make("b002.wav", {.audioFormat = 3});
    make("c002.wav", {.data = QByteArray(2000, '\0')});
    make(".hidden.wav");
    make("notes.txt");
    QVERIFY(QDir().mkpath(path("folder")));
    const Run bad = run({"--json", m_folder->path(), "--n-times", "2"});
    QCOMPARE(bad.status, 1);
    QCOMPARE(bad.errors, "");
    QJsonParseError error;
    const QJsonObject check = QJsonDocument::fromJson(bad.out.toUtf8(), &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(check["folder"].toString(), m_folder->path());
    QCOMPARE(check["presentations"].toInt(), 6);
    QCOMPARE(check["motherTokens"].toInt(), 1);
    QCOMPARE(check["strangerTokens"].toInt(), 2);
    QStringList leftOut;
    for (const QJsonValue &entry : check["leftOut"].toArray())
        leftOut.append(entry["name"].toString() + ' ' + entry["reason"].toString());
    QCOMPARE(leftOut,
             QStringList({".hidden.wav hidden", "folder folder", "notes.txt otherSuffix"}));
    const QJsonArray tokens = check["tokens"].toArray();
    QCOMPARE(tokens.size(), 3);
    QCOMPARE(tokens[0]["name"].toString(), "a001.wav");
    QCOMPARE(tokens[0]["category"].toString(), "mother");
    QCOMPARE(tokens[0]["channels"].toInt(), 2);
    QVERIFY(tokens[0]["presented"].toBool());
    QVERIFY(tokens[0]["rmsDbfs"].isDouble());
    QCOMPARE(tokens[0]["findings"][0]["kind"].toString(), "stereo");
    QCOMPARE(tokens[0]["findings"][0]["fact"].toString(), "The file has two channels.");
    QCOMPARE(tokens[0]["findings"][0]["effect"].toString(),
             "A session would play the left one alone.");
    QCOMPARE(tokens[0]["findings"][0]["cure"].toString(),
             "Save the wanted channel, or a mix of both, as one channel.");
    QCOMPARE(tokens[1]["presented"].toBool(true), false);
    QVERIFY(tokens[1]["rate"].isNull());
    QCOMPARE(tokens[1]["findings"][0]["kind"].toString(), "refused");
    QVERIFY(tokens[2]["peakDbfs"].isNull()); // JSON has no minus infinity
    QVERIFY(tokens[2]["rmsDbfs"].isNull());
}

void TestTokensCommand::theStatusSaysWhetherSomethingWasFound_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::newRow("nothing found") << QStringList({"FOLDER"}) << 0;
    QTest::newRow("findings") << QStringList({"FOLDER", "--subject", "X"}) << 1;
    QTest::newRow("help") << QStringList({"--help"}) << 0;
    QTest::newRow("no folder given") << QStringList() << 2;
    QTest::newRow("two folders") << QStringList({"FOLDER", "FOLDER"}) << 2;
    QTest::newRow("a folder that is not there") << QStringList({"FOLDER/none"}) << 2;
    QTest::newRow("a file") << QStringList({"FOLDER/a001.wav"}) << 2;
    QTest::newRow("no number") << QStringList({"FOLDER", "--n-times", "x"}) << 2;
    QTest::newRow("less than once") << QStringList({"FOLDER", "--n-times", "0"}) << 1;
    QTest::newRow("an unknown option") << QStringList({"FOLDER", "--loud"}) << 2;
}

// Catches a script that is told that all is well when it is not, or when nothing has been checked.
void TestTokensCommand::theStatusSaysWhetherSomethingWasFound()
{
    QFETCH(QStringList, arguments);
    make("a001.wav");
    make("b002.wav");
    const Run result = run(arguments.replaceInStrings("FOLDER", m_folder->path()));
    QTEST(result.status, "status");
    QCOMPARE(result.status == 2, !result.errors.isEmpty());
    QCOMPARE(result.status == 2, result.out.isEmpty());
}

// Catches a name that begins a new column or line, in the table and in the sentences.
void TestTokensCommand::namesCannotBreakTheTable()
{
    for (const char *name : {"a\t001\n.wav", "b002.wav"}) // the second finding names the first
        make(name, {.data = tone(1500)});
    make("c\n.txt");
    const Run odd = run({m_folder->path()});
    QCOMPARE(odd.status, 1);
    const QStringList lines = odd.out.split('\n');
    QCOMPARE(lines.size(), 1 + 2 + 1 + 3 + 1);
    for (const int line : {1, 2})
        QCOMPARE(lines.at(line).count('\t'), 9);
    QVERIFY2(lines.at(2).contains("same as of \"a\\t001\\n.wav\""), qPrintable(lines.at(2)));
    QVERIFY(lines.at(1).startsWith("1\ta\\t001\\n.wav\t"));
}

// Catches a check that goes on after Ctrl-C, or that prints half a table as if it were all.
void TestTokensCommand::aSignalStopsTheCheck()
{
    WavBytes large;
    large.data = tone(60000);
    QVERIFY(writeFile(path("0.wav"), large.bytes()));
    // Files of the same content take the longest.
    for (int i = 1; i <= 30000; ++i)
        std::filesystem::create_hard_link(path("0.wav").toStdString(),
                                          path(QString("%1.wav").arg(i)).toStdString());
    QProcess process;
    process.start(OSTRINE_TOOLS, {"tokens", m_folder->path()});
    QVERIFY(process.waitForStarted());
    QVERIFY(!process.waitForFinished(700));
    QElapsedTimer time;
    time.start();
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    QVERIFY(process.waitForFinished());
    QVERIFY2(time.elapsed() < 3000, qPrintable(QString::number(time.elapsed())));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 2);
    QCOMPARE(process.readAllStandardOutput(), "");
    QCOMPARE(process.readAllStandardError(), "The check has been stopped.\n");
}

QTEST_GUILESS_MAIN(TestTokensCommand)
#include "tst_tokenscommand.moc"
