// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Journal.h"
#include "support/WavFile.h"
#include "tools/Sessions.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

#include <memory>

/// What the companion tells of journals, and restores from them.
class TestSessions : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void noFolderMeansNoSessions();
    void eachSessionIsALine();
    void whatIsNoJournalIsNamed();
    void aSessionIsRestoredByItsName();
    void aSessionThatIsNotThereIsNamed();
    void aFileThatCannotBeWrittenIsNamed();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    /// A journal of two presentations, whose first answers are @p answers.
    void write(const QString &name, const QByteArray &further) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_out;
    QString m_errors;
    std::unique_ptr<QTextStream> out;
    std::unique_ptr<QTextStream> errors;
};

void TestSessions::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_out.clear();
    m_errors.clear();
    out = std::make_unique<QTextStream>(&m_out);
    errors = std::make_unique<QTextStream>(&m_errors);
}

void TestSessions::write(const QString &name, const QByteArray &further) const
{
    const QByteArray head =
        R"({"type":"session","started":"2026-11-22T08:01:50.123Z","parameters":{"subCode":"CHD001",)"
        R"("sesTypeNames":["practice","experiment"],"sesTypeIndex":1,"sesNum":12},)"
        R"("tokens":["a001.wav","b.wav"],"order":[1,0]})";
    QVERIFY(writeFile(path(name), head + '\n' + further));
}

namespace {

const QByteArray answer1 =
    R"({"type":"answer","trial":1,"token":1,"filename":"b.wav","stim":"stranger","resp":"mother","rt":500})"
    "\n";
const QByteArray answer2 =
    R"({"type":"answer","trial":2,"token":0,"filename":"a001.wav","stim":"mother","resp":"mother","rt":700})"
    "\n";
const QByteArray saved =
    R"({"type":"save","files":[{"path":"/r/x.txt","sha256":"00"},{"path":"/r/x_entries.txt","sha256":"00"}]})"
    "\n";
const QByteArray notSaved =
    R"({"type":"save","files":[{"path":"","sha256":""},{"path":"_entries.","sha256":"00"}]})"
    "\n";

} // namespace

// Catches an error where nothing has been done yet.
void TestSessions::noFolderMeansNoSessions()
{
    QVERIFY(listSessions(path("none"), *out, *errors));
    QCOMPARE(m_out, "session\tstarted\tsubject\ttype\tnumber\tanswers\tend\tsaved\n");
    QCOMPARE(m_errors, "");
}

// Catches a column that is missing, or shows another session's.
void TestSessions::eachSessionIsALine()
{
    write(
        "1.jsonl",
        answer1 + answer2 +
            R"({"type":"end","end":"finished","parameters":{"subCode":"CHD001","sesTypeNames":["practice","experiment"],"sesTypeIndex":1,"sesNum":12}})" +
            "\n" + saved + notSaved);
    write("2.jsonl", answer1 + R"({"type":"end","end":"broken off"})");
    write("3.jsonl", R"({"type":"end","end":"quit"})");
    write("4.jsonl", answer1 + answer2.first(20));
    QVERIFY(writeFile(path("5.txt"), "no journal by its name"));
    QVERIFY(listSessions(m_folder->path(), *out, *errors));
    const QStringList lines = m_out.split('\n');
    const QString same = "\t2026-11-22T08:01:50Z\tCHD001\texperiment\t12\t";
    QCOMPARE(
        lines.mid(1),
        QStringList({"1" + same + "2 of 2\tfinished\t/r/x.txt", "2" + same + "1 of 2\tbroken off\t",
                     "3" + same + "0 of 2\tquit\t", "4" + same + "1 of 2\tstopped\t", ""}));
    QCOMPARE(m_errors, "");
}

// Catches a list that ends at the first file that is no journal, or does not tell of it.
void TestSessions::whatIsNoJournalIsNamed()
{
    QVERIFY(writeFile(path("0.jsonl"), "torn in the head"));
    write("1.jsonl", answer1);
    QVERIFY(listSessions(m_folder->path(), *out, *errors));
    QCOMPARE(m_errors, path("0.jsonl") + " is not a journal, or cannot be read.\n");
    QCOMPARE(m_out.count('\n'), 2);
}

// Catches another session restored, a file of the three, and lines that run together.
void TestSessions::aSessionIsRestoredByItsName()
{
    write("1.jsonl", answer1 + answer2);
    write("2.jsonl", answer1);
    QVERIFY(restoreSession(m_folder->path(), "2", path("new/r.txt"), *errors));
    QCOMPARE(m_errors, "");
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

// Catches empty result files made for a session that does not exist.
void TestSessions::aSessionThatIsNotThereIsNamed()
{
    QVERIFY(!restoreSession(m_folder->path(), "3", path("r.txt"), *errors));
    QCOMPARE(m_errors, path("3.jsonl") + " is not a journal, or cannot be read.\n");
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 0);
}

// Catches success told although a file is missing.
void TestSessions::aFileThatCannotBeWrittenIsNamed()
{
    write("1.jsonl", answer1);
    QVERIFY(QDir().mkpath(path("r_entries.txt")));
    QVERIFY(!restoreSession(m_folder->path(), "1", path("r.txt"), *errors));
    QVERIFY(m_errors.contains("r_entries.txt"));
    QVERIFY(contents(path("r.txt")).contains("b.wav\t1"));
}

QTEST_GUILESS_MAIN(TestSessions)
#include "tst_sessions.moc"
