// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/WavFile.h"
#include "tools/Sessions.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

#include <functional>
#include <memory>

#include <sys/stat.h>

/// What the companion tells of journals, restores from them and deletes.
class TestSessions : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void noFolderMeansNoSessions();
    void eachSessionIsALine();
    void theEarliestSessionComesFirst();
    void whatIsNoJournalIsNamed();
    void theUserCanStopTheSearch();
    void changesOfTheResultFilesAreSeen_data();
    void changesOfTheResultFilesAreSeen();
    void aSessionSavedUnderTheSameNameIsNamed();
    void onlyAFileWrittenToTheSamePathOverwrites_data();
    void onlyAFileWrittenToTheSamePathOverwrites();
    void theLastSaveThatWroteAFileCounts();
    void onlyAnswersThatAreInNoFileNeedAttention_data();
    void onlyAnswersThatAreInNoFileNeedAttention();
    void everythingOfASessionIsInTheJson();
    void aNameDoesNotBreakTheTable();
    void aSessionIsRestoredByItsName();
    void aSessionThatIsNotThereIsNamed();
    void aFileThatCannotBeWrittenIsNamed();
    void onlyTheNamedJournalIsDeleted();
    void noNameLeadsOutOfTheFolder();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    /// A journal of two presentations, begun at @p hour o'clock, with @p further lines.
    void write(const QString &name, const QByteArray &further, int hour = 8,
               const QByteArray &saveData = "true") const;
    FoundSessions find() const
    {
        return findSessions(m_folder->path(), [](qsizetype, qsizetype) { return true; });
    }
    static QString table(const FoundSessions &found)
    {
        QString text;
        QTextStream out(&text);
        writeSessionTable(out, found.sessions);
        return text;
    }
    /// A line that says that the three files x*.txt of this folder were saved, with @p contents.
    QByteArray saveLine(const QList<QByteArray> &contents) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QStringList m_warnings;
    const std::function<void(const QString &)> m_warn = [this](const QString &warning) {
        m_warnings.append(warning);
    };
};

namespace {

const QByteArray answer1 =
    R"({"type":"answer","trial":1,"token":1,"filename":"b.wav","stim":"stranger","resp":"mother","rt":500})"
    "\n";
const QByteArray answer2 =
    R"({"type":"answer","trial":2,"token":0,"filename":"a001.wav","stim":"mother","resp":"mother","rt":700,)"
    R"("presentation":{"clockStart":12.5}})"
    "\n";
const QByteArray finished =
    R"({"type":"end","end":"finished","parameters":{"subCode":"CHD001","sesTypeNames":["practice","experiment"],"sesTypeIndex":1,"sesNum":12,"saveData":true}})"
    "\n";
const QByteArray notSaved =
    R"({"type":"save","files":[{"path":"","sha256":""},{"path":"_entries.","sha256":""}]})"
    "\n";
const QString header = "session\tstarted\tsubject\ttype\tnumber\tanswers\tend\tsaved\tfiles\n";
const QStringList resultFiles = {"x.txt", "x_entries.txt", "x_parameters.txt"};

} // namespace

void TestSessions::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_warnings.clear();
}

void TestSessions::write(const QString &name, const QByteArray &further, int hour,
                         const QByteArray &saveData) const
{
    const QByteArray head =
        R"({"type":"session","started":"2026-11-22T)" +
        QByteArray::number(hour).rightJustified(2, '0') +
        R"(:01:50.123Z","parameters":{"subCode":"CHD001",)"
        R"("sesTypeNames":["practice","experiment"],"sesTypeIndex":1,"sesNum":12,"saveData":)" +
        saveData + R"(},"tokens":["a001.wav","b.wav"],"order":[1,0]})";
    QVERIFY(writeFile(path(name), head + '\n' + further));
}

QByteArray TestSessions::saveLine(const QList<QByteArray> &contents) const
{
    QByteArrayList files;
    for (qsizetype i = 0; i < contents.size(); ++i) {
        const QByteArray hash =
            QCryptographicHash::hash(contents.at(i), QCryptographicHash::Sha256).toHex();
        files.append(R"({"path":")" + path(resultFiles.at(i)).toUtf8() + R"(","sha256":")" + hash +
                     R"("})");
    }
    return R"({"type":"save","files":[)" + files.join(',') + "]}\n";
}

// Catches an error where nothing has been done yet.
void TestSessions::noFolderMeansNoSessions()
{
    const FoundSessions found =
        findSessions(path("none"), [](qsizetype, qsizetype) { return true; });
    QCOMPARE(table(found), header);
    QCOMPARE(found.problems, QStringList());
    QVERIFY(found.isComplete);
}

// Catches a column that is missing, or shows another session's.
void TestSessions::eachSessionIsALine()
{
    for (const QString &file : resultFiles)
        QVERIFY(writeFile(path(file), file.toUtf8()));
    write("1.jsonl",
          answer1 + answer2 + finished + saveLine({"x.txt", "x_entries.txt", "x_parameters.txt"}));
    write("2.jsonl", answer1 + R"({"type":"end","end":"broken off"})");
    write("3.jsonl", R"({"type":"end","end":"quit"})");
    write("4.jsonl", answer1 + answer2.first(20));
    QVERIFY(writeFile(path("5.txt"), "no journal by its name"));
    const FoundSessions found = find();
    const QString same = "\t2026-11-22T08:01:50Z\tCHD001\texperiment\t12\t";
    QCOMPARE(table(found), header + "1" + same + "2 of 2\tfinished\t" + path("x.txt") +
                               "\tunchanged\n" + "2" + same + "1 of 2\tbroken off\t\tnot saved\n" +
                               "3" + same + "0 of 2\tquit\t\tnot saved\n" + "4" + same +
                               "1 of 2\tstopped\t\tnot saved\n");
    QCOMPARE(found.problems, QStringList());
}

// Catches an order by the names of the files, which their owner may change.
void TestSessions::theEarliestSessionComesFirst()
{
    write("a.jsonl", answer1, 9);
    write("b.jsonl", answer1, 8);
    const FoundSessions found = find();
    QCOMPARE(found.sessions.size(), 2);
    QCOMPARE(found.sessions.at(0).name, "b");
    QCOMPARE(found.sessions.at(1).name, "a");
}

// Catches a list that ends at the first file that is no journal, or does not tell of it, and one
// that waits for a pipe.
void TestSessions::whatIsNoJournalIsNamed()
{
    QVERIFY(writeFile(path("0.jsonl"), "torn in the head"));
    write("1.jsonl", answer1);
    QCOMPARE(mkfifo(QFile::encodeName(path("2.jsonl")).constData(), 0600), 0);
    const FoundSessions found = find();
    QCOMPARE(found.problems,
             QStringList{path("0.jsonl") + " is not a journal, or cannot be read."});
    QCOMPARE(found.sessions.size(), 1);
    QVERIFY(found.isComplete);
}

// Catches a search that cannot be stopped, or is taken for a whole one.
void TestSessions::theUserCanStopTheSearch()
{
    for (const char *name : {"1.jsonl", "2.jsonl", "3.jsonl", "4.jsonl"})
        write(name, answer1);
    QList<qsizetype> steps;
    const FoundSessions found = findSessions(m_folder->path(), [&](qsizetype done, qsizetype all) {
        steps.append(done);
        return all == 4 && done < 2;
    });
    QCOMPARE(steps, QList<qsizetype>({0, 1, 2}));
    QVERIFY(found.sessions.size() < 4);
    QVERIFY(!found.isComplete);
}

void TestSessions::changesOfTheResultFilesAreSeen_data()
{
    QTest::addColumn<QString>("changed");
    QTest::addColumn<QString>("content"); // null: the file is removed
    QTest::addColumn<QString>("expected");
    QTest::newRow("none") << "x.txt"
                          << "x.txt"
                          << "unchanged";
    QTest::newRow("records") << "x.txt"
                             << "y.txt"
                             << "x.txt changed";
    QTest::newRow("entries") << "x_entries.txt"
                             << "x_entries.txt "
                             << "x_entries.txt changed";
    QTest::newRow("emptied") << "x_entries.txt"
                             << ""
                             << "x_entries.txt changed";
    QTest::newRow("gone") << "x_parameters.txt" << QString() << "x_parameters.txt gone";
}

// Catches a result file that somebody has changed or removed and that counts as saved all the same.
void TestSessions::changesOfTheResultFilesAreSeen()
{
    QFETCH(const QString, changed);
    QFETCH(const QString, content);
    QFETCH(const QString, expected);
    for (const QString &file : resultFiles)
        QVERIFY(writeFile(path(file), file.toUtf8()));
    write("1.jsonl",
          answer1 + answer2 + finished + saveLine({"x.txt", "x_entries.txt", "x_parameters.txt"}));
    if (content.isNull())
        QVERIFY(QFile::remove(path(changed)));
    else
        QVERIFY(writeFile(path(changed), content.toUtf8()));
    const FoundSessions found = find();
    QCOMPARE(filesText(found.sessions.at(0).files), expected);
    QCOMPARE(needsAttention(found.sessions.at(0)), expected != "unchanged");
}

// Catches a file that a later session has overwritten and that counts as changed by hand, and an
// earlier session that is blamed for it.
void TestSessions::aSessionSavedUnderTheSameNameIsNamed()
{
    const auto save = [this](const QByteArray &content) {
        return answer1 + answer2 + finished + saveLine({content, content, content});
    };
    write("1.jsonl", save("first"), 8);
    write("2.jsonl", save("second"), 9);
    write("3.jsonl", save("third"), 10);
    write("4.jsonl", answer1 + notSaved, 11);
    for (const QString &file : resultFiles)
        QVERIFY(writeFile(path(file), "third"));
    FoundSessions found = find();
    QCOMPARE(stateText(found.sessions.at(0).files.at(0)), "overwritten by 3");
    QCOMPARE(stateText(found.sessions.at(1).files.at(2)), "overwritten by 3");
    QCOMPARE(filesText(found.sessions.at(2).files), "unchanged");
    QVERIFY(needsAttention(found.sessions.at(0)));
    // Whoever restores the first one in its place overwrites the others.
    for (const QString &file : resultFiles)
        QVERIFY(writeFile(path(file), "first"));
    found = find();
    QCOMPARE(filesText(found.sessions.at(0).files), "unchanged");
    QCOMPARE(stateText(found.sessions.at(1).files.at(0)), "overwritten by 3");
    QCOMPARE(stateText(found.sessions.at(2).files.at(0)), "changed");
}

void TestSessions::onlyAFileWrittenToTheSamePathOverwrites_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("hash"); // empty: the file could not be written
    QTest::addColumn<QString>("expected");
    QTest::newRow("same path") << "x.txt" << QByteArray(64, 'a') << "overwritten by 2";
    QTest::newRow("another path") << "y.txt" << QByteArray(64, 'a') << "changed";
    QTest::newRow("failed") << "x.txt" << QByteArray() << "changed";
}

// Catches a later session that is blamed for a change though it wrote another file, or none.
void TestSessions::onlyAFileWrittenToTheSamePathOverwrites()
{
    QFETCH(const QString, fileName);
    QFETCH(const QByteArray, hash);
    QFETCH(const QString, expected);
    write("1.jsonl", answer1 + finished + saveLine({"first"}), 8);
    write("2.jsonl",
          answer1 + finished + R"({"type":"save","files":[{"path":")" + path(fileName).toUtf8() +
              R"(","sha256":")" + hash + "\"}]}\n",
          9);
    QVERIFY(writeFile(path("x.txt"), "changed by hand"));
    QCOMPARE(stateText(find().sessions.at(0).files.at(0)), expected);
}

// Catches a cancelled save that hides one that wrote the files, and files of a failed save.
void TestSessions::theLastSaveThatWroteAFileCounts()
{
    QVERIFY(writeFile(path("x.txt"), "new"));
    write("1.jsonl", answer1 + saveLine({"old", "old", "old"}) + saveLine({"new"}) + notSaved);
    const FoundSessions found = find();
    QCOMPARE(found.sessions.at(0).files.size(), 1);
    QCOMPARE(filesText(found.sessions.at(0).files), "only 1 of 3 saved");
    QVERIFY(needsAttention(found.sessions.at(0))); // two of the three are missing
}

void TestSessions::onlyAnswersThatAreInNoFileNeedAttention_data()
{
    QTest::addColumn<QByteArray>("further");
    QTest::addColumn<QByteArray>("saveData");
    QTest::addColumn<bool>("expected");
    QTest::newRow("no answer") << QByteArray() << QByteArray("true") << false;
    QTest::newRow("an answer") << answer1 << QByteArray("true") << true;
    QTest::newRow("not to be saved") << answer1 << QByteArray("false") << false;
}

// Catches answers that are nowhere and go unnoticed, and sessions that were never to be saved.
void TestSessions::onlyAnswersThatAreInNoFileNeedAttention()
{
    QFETCH(const QByteArray, further);
    QFETCH(const QByteArray, saveData);
    QFETCH(const bool, expected);
    write("1.jsonl", further, 8, saveData);
    QCOMPARE(needsAttention(find().sessions.at(0)), expected);
}

// Catches a member that is missing, or has another name than scripts expect.
void TestSessions::everythingOfASessionIsInTheJson()
{
    QVERIFY(writeFile(path("x.txt"), "x"));
    write("1.jsonl", answer1 + answer2 + finished + saveLine({"x", "y"}));
    QVERIFY(writeFile(path("2.jsonl"), "none"));
    const QByteArray expected =
        R"({"isComplete":true,"problems":[")" + path("2.jsonl").toUtf8() +
        R"( is not a journal, or cannot be read."],"sessions":[{"answers":[)"
        R"({"correctness":false,"filename":"b.wav","presentation":{},"resp":"mother","rt":500,"stim":"stranger","trial":1},)"
        R"({"correctness":true,"filename":"a001.wav","presentation":{"clockStart":12.5},"resp":"mother","rt":700,"stim":"mother","trial":2}],)"
        R"("end":"finished","files":[{"path":")" +
        path("x.txt").toUtf8() + R"(","state":"unchanged"},{"path":")" +
        path("x_entries.txt").toUtf8() +
        R"(","state":"gone"}],"needsAttention":true,"number":12,"presentations":2,"session":"1",)"
        R"("started":"2026-11-22T08:01:50Z","subject":"CHD001","type":"experiment"}]})";
    QCOMPARE(QJsonDocument(sessionsToJson(find())).toJson(QJsonDocument::Compact), expected);
}

// Catches a subject code or a file name that moves the columns.
void TestSessions::aNameDoesNotBreakTheTable()
{
    write("a\tb\nc.jsonl", answer1);
    const QString text = table(find());
    QCOMPARE(text.count('\n'), 2);
    QVERIFY(text.contains("\na\\tb\\nc\t2026"));
}

// Catches another session restored, a file of the three, and lines that run together.
void TestSessions::aSessionIsRestoredByItsName()
{
    write("1.jsonl", answer1 + answer2);
    write("2.jsonl", answer1);
    QVERIFY(restoreSession(m_folder->path(), "2", path("new/r.txt"), m_warn));
    QCOMPARE(m_warnings, QStringList());
    QCOMPARE(contents(path("new/r.txt")),
             "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n"
             "a001.wav\t0\t0\t0\t0\t0\n"
             "b.wav\t1\t0\t500\t0\t500");
    QCOMPARE(contents(path("new/r_entries.txt")), "filename\tstim\tresp\tcorrectness\trt\n"
                                                  "b.wav\tstranger\tmother\t0\t500");
    QVERIFY(contents(path("new/r_parameters.txt")).contains("\nsubCode: CHD001\n"));
    QVERIFY(contents(path("new/r_parameters.txt"))
                .contains("\noutputFilePath: " + path("new/r.txt").toUtf8() + '\n'));
}

// Catches empty result files made for a session that does not exist, and a wait for a pipe of its
// name.
void TestSessions::aSessionThatIsNotThereIsNamed()
{
    QCOMPARE(mkfifo(QFile::encodeName(path("4.jsonl")).constData(), 0600), 0);
    QStringList expected;
    for (const QString &name : {QString("3"), QString("4")}) {
        QVERIFY(!restoreSession(m_folder->path(), name, path("r.txt"), m_warn));
        expected.append("There is no journal named " + name + " in " + m_folder->path() +
                        ", or it cannot be read.");
    }
    QCOMPARE(m_warnings, expected);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 0);
}

// Catches success told although a file is missing.
void TestSessions::aFileThatCannotBeWrittenIsNamed()
{
    write("1.jsonl", answer1);
    QVERIFY(QDir().mkpath(path("r_entries.txt")));
    QVERIFY(!restoreSession(m_folder->path(), "1", path("r.txt"), m_warn));
    QCOMPARE(m_warnings.size(), 1);
    QVERIFY(m_warnings.at(0).contains("r_entries.txt"));
    QVERIFY(contents(path("r.txt")).contains("b.wav\t1"));
}

// Catches another journal deleted, and success told of one that is not there.
void TestSessions::onlyTheNamedJournalIsDeleted()
{
    write("1.jsonl", answer1);
    write("2.jsonl", answer1);
    QCOMPARE(deleteSession(m_folder->path(), "1"), "");
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{"2.jsonl"});
    QCOMPARE(deleteSession(m_folder->path(), "1"),
             "There is no journal named 1 in " + m_folder->path() + ", or it cannot be read.");
}

// Catches a name that reaches a file outside of the folder.
void TestSessions::noNameLeadsOutOfTheFolder()
{
    QVERIFY(QDir().mkpath(path("journals")));
    write("1.jsonl", answer1);
    QVERIFY(!restoreSession(path("journals"), "../1", path("r.txt"), m_warn));
    QVERIFY(deleteSession(path("journals"), "../1") != "");
    QVERIFY(QFile::exists(path("1.jsonl")));
}

QTEST_GUILESS_MAIN(TestSessions)
#include "tst_sessions.moc"
