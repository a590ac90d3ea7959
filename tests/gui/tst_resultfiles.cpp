// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/OperatorWindow.h"
#include "support/ParametersText.h"
#include "support/WavFile.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTimer>

#include <csignal>
#include <memory>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

const QString notOpened = "could not open file for writing \r\n";
const QString notWritten = "could not write to file \r\n";

const QByteArray recordsTable = "filename\tnMother\tnStranger\trt\trt_correct\trt_incorrect\n"
                                "MOV001.wav\t1\t0\t1234.57\t1234.57\t0\n"
                                "MOV002.wav\t0\t1\t500\t500\t0";
const QByteArray entriesTable = "filename\tstim\tresp\tcorrectness\trt\n"
                                "MOV002.wav\tstranger\tstranger\t1\t500\n"
                                "MOV001.wav\tmother\tmother\t1\t1234.57";

} // namespace

class TestResultFiles : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void savingProposesANameAndWritesThreeFiles();
    void theCompanionsAreNamedAfterTheChosenFile_data();
    void theCompanionsAreNamedAfterTheChosenFile();
    void existingFilesAreReplacedWithoutAQuestion();
    void aCancelledDialogWarnsAndStillWritesTheCompanions();
    void eachFileThatCannotBeOpenedIsReported();
    void aMissingFolderIsMade();
    void aFolderOfTheRecordsNameIsOpenedByTheDialog();
    void aFolderOfACompanionsNameCostsThatFileAlone_data();
    void aFolderOfACompanionsNameCostsThatFileAlone();
    void aFullDiskIsReportedAndLeavesOlderFiles_data();
    void aFullDiskIsReportedAndLeavesOlderFiles();
    void aFolderWithoutNewFilesIsWrittenToAllTheSame();
    void onlyARegularFileIsWritten_data();
    void onlyARegularFileIsWritten();
    void aLinkedFileStaysLinked();
    void theLongestNameIsWritten();
    void theTablesAreEmptyWithoutTokens();
    void aSecondSaveProposesTheDefaultFolderAgain();

    void resultsAreAnnouncedAfterTheMeansAndBeforeTheFiles();
    void resultsAreComputedEvenWithoutSaving();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    /// The parameters file that belongs to the records file @p file.
    QByteArray parameters(const QString &file) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OperatorWindow> m_window;
    QString m_before; ///< the working directory, which some tests change
};

void TestResultFiles::init()
{
    m_before = QDir::currentPath();
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_window = std::make_unique<OperatorWindow>();
    m_window->show();

    Record mother;
    mother.filename = "MOV001.wav";
    mother.nMother = 1;
    mother.rt = mother.rt_correct = 1234.5678;
    Record stranger;
    stranger.filename = "MOV002.wav";
    stranger.nStranger = 1;
    stranger.rt = stranger.rt_correct = 500.0;
    m_window->data.records = {mother, stranger};
    Entry first;
    first.filename = "MOV002.wav";
    first.stim = first.resp = "stranger";
    first.correctness = true;
    first.rt = 500.0;
    Entry second;
    second.filename = "MOV001.wav";
    second.stim = second.resp = "mother";
    second.correctness = true;
    second.rt = 1234.5678;
    m_window->data.entries = {first, second};
    m_window->data.wavFilePath = "/sounds";
}

void TestResultFiles::cleanup()
{
    QDir::setCurrent(m_before);
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    QVERIFY(QDir(desktop + "/CHD001").removeRecursively());
    m_window.reset();
    m_folder.reset();
}

QByteArray TestResultFiles::parameters(const QString &file) const
{
    const QFileInfo info(file);
    const auto companion = [&info](const char *topic) {
        return info.completeBaseName() + '_' + topic + '.' + info.suffix();
    };
    return ParametersText{.outputFilePath = file,
                          .wavFilePath = "/sounds",
                          .outputFileName = info.fileName(),
                          .outputFileName_entries = companion("entries"),
                          .outputFileName_parameters = companion("parameters")}
        .bytes();
}

// Catches another caption, folder or name proposed, a missing folder and one of the three files.
void TestResultFiles::savingProposesANameAndWritesThreeFiles()
{
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::DesktopLocation) + "/CHD001";
    QVERIFY(!QFileInfo::exists(folder));
    ModalAnswer answers;
    answers.confirm();
    m_window->writeDataToTxt();

    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().size(), 0);
    const ModalAnswer::Dialog dialog = answers.dialogs().first();
    QCOMPARE(dialog.title, "Save a file");
    QCOMPARE(dialog.folder, folder);
    QCOMPARE(dialog.typed, "CHD001_practice001.txt");
    QCOMPARE(dialog.acceptMode, QFileDialog::AcceptSave);
    QCOMPARE(dialog.fileMode, QFileDialog::AnyFile);
    QVERIFY(dialog.options.testFlag(QFileDialog::DontConfirmOverwrite));
    QCOMPARE(dialog.nameFilters, QStringList({"All files (*.*)", "Text files (*.txt)"}));
    QCOMPARE(dialog.selectedNameFilter, "Text files (*.txt)");
    QVERIFY(dialog.parent == m_window.get());

    const QString records = folder + "/CHD001_practice001.txt";
    QCOMPARE(contents(records), recordsTable);
    QCOMPARE(contents(folder + "/CHD001_practice001_entries.txt"), entriesTable);
    QCOMPARE(contents(folder + "/CHD001_practice001_parameters.txt"), parameters(records));
    QCOMPARE(QDir(folder).entryList(QDir::Files).size(), 3);
    QCOMPARE(m_window->data.outputFilePath, records);
    QCOMPARE(m_window->data.outputFileName, "CHD001_practice001.txt");
}

void TestResultFiles::theCompanionsAreNamedAfterTheChosenFile_data()
{
    QTest::addColumn<QString>("entries");
    QTest::addColumn<QString>("parameters");
    QTest::newRow("results.txt") << "results_entries.txt"
                                 << "results_parameters.txt";
    QTest::newRow("results") << "results_entries."
                             << "results_parameters.";
    QTest::newRow("a.b.txt") << "a.b_entries.txt"
                             << "a.b_parameters.txt";
    QTest::newRow("a b.dat") << "a b_entries.dat"
                             << "a b_parameters.dat";
    QTest::newRow("a%1%2.txt") << "a%1%2_entries.txt"
                               << "a%1%2_parameters.txt";
}

// Catches a suffix that is added, dropped or cut at the wrong dot.
void TestResultFiles::theCompanionsAreNamedAfterTheChosenFile()
{
    QFETCH(const QString, entries);
    QFETCH(const QString, parameters);
    const QString name = QTest::currentDataTag();
    ModalAnswer answers;
    answers.choose(path(name));
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().size(), 0);
    QStringList files = QDir(m_folder->path()).entryList(QDir::Files);
    QStringList expected = {name, entries, parameters};
    files.sort();
    expected.sort();
    QCOMPARE(files, expected);
    QCOMPARE(contents(path(name)), recordsTable);
    QCOMPARE(contents(path(entries)), entriesTable);
    QVERIFY(contents(path(parameters)).contains("outputFileName_entries: " + entries.toUtf8()));
    QVERIFY(contents(path(parameters)).endsWith("\nautoPlay: 1"));
}

// Catches a question before overwriting, and what is left of a longer file.
void TestResultFiles::existingFilesAreReplacedWithoutAQuestion()
{
    for (const char *name : {"x.txt", "x_entries.txt", "x_parameters.txt"})
        QVERIFY(writeFile(path(name), QByteArray(5000, 'x')));
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().size(), 0);
    QCOMPARE(contents(path("x.txt")), recordsTable);
    QCOMPARE(contents(path("x_entries.txt")), entriesTable);
    QCOMPARE(contents(path("x_parameters.txt")), parameters(path("x.txt")));
}

// Catches a cancelled dialog that goes unnoticed or loses the other two files.
void TestResultFiles::aCancelledDialogWarnsAndStillWritesTheCompanions()
{
    QVERIFY(QDir::setCurrent(m_folder->path()));
    ModalAnswer answers;
    answers.cancel().press(QMessageBox::Ok);
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    const ModalAnswer::Box box = answers.boxes().first();
    QCOMPARE(box.title, "Warning");
    QCOMPARE(box.text, notOpened);
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::Ok);
    QVERIFY(box.parent == m_window.get());
    QCOMPARE(contents(path("_entries.")), entriesTable);
    QCOMPARE(contents(path("_parameters.")), parameters(""));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 2);
}

// Catches a failure that is reported for one file only, or whose text names another path.
void TestResultFiles::eachFileThatCannotBeOpenedIsReported()
{
    QVERIFY(writeFile(path("plain"), "kept"));
    const QString chosen = path("plain/x.txt");
    ModalAnswer answers;
    answers.choose(chosen).press(QMessageBox::Ok).press(QMessageBox::Ok).press(QMessageBox::Ok);
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().at(0).text, notOpened + chosen + "x.txt");
    QCOMPARE(answers.boxes().at(1).text, notOpened + chosen + "x_entries.txt");
    QCOMPARE(answers.boxes().at(2).text, notOpened + chosen + "x_parameters.txt");
    for (const ModalAnswer::Box &box : answers.boxes())
        QCOMPARE(box.title, "Warning");
    QCOMPARE(contents(path("plain")), "kept");
}

// Catches a folder that is not made, and records lost because a folder of their own file's name is
// made in it.
void TestResultFiles::aMissingFolderIsMade()
{
    const QString chosen = path("new/below/x.txt");
    ModalAnswer answers;
    answers.choose(chosen);
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().size(), 0);
    QCOMPARE(contents(chosen), recordsTable);
    QCOMPARE(contents(path("new/below/x_entries.txt")), entriesTable);
    QCOMPARE(contents(path("new/below/x_parameters.txt")), parameters(chosen));
}

// Catches a folder taken for the records file: the dialog opens it and asks on.
void TestResultFiles::aFolderOfTheRecordsNameIsOpenedByTheDialog()
{
    QVERIFY(QDir().mkpath(path("x.txt")));
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    QTimer::singleShot(500, &answers, [&] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        QCOMPARE(dialog->directory().path(), path("x.txt"));
        dialog->findChild<QLineEdit *>("fileNameEdit")->setText("y.txt");
        static_cast<QDialog *>(dialog)->accept();
    });
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(contents(path("x.txt/y.txt")), recordsTable);
}

void TestResultFiles::aFolderOfACompanionsNameCostsThatFileAlone_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("written");
    QTest::newRow("entries") << "x_entries.txt"
                             << "x_parameters.txt";
    QTest::newRow("parameters") << "x_parameters.txt"
                                << "x_entries.txt";
}

// Catches a failure of one companion file that is silent or takes the other with it.
void TestResultFiles::aFolderOfACompanionsNameCostsThatFileAlone()
{
    QFETCH(const QString, folder);
    QFETCH(const QString, written);
    QVERIFY(QDir().mkpath(path(folder)));
    ModalAnswer answers;
    answers.choose(path("x.txt")).press(QMessageBox::Ok);
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().first().text, notOpened + path("x.txt") + folder);
    QCOMPARE(contents(path("x.txt")), recordsTable);
    QCOMPARE(contents(path(written)),
             folder.contains("entries") ? parameters(path("x.txt")) : entriesTable);
}

void TestResultFiles::aFullDiskIsReportedAndLeavesOlderFiles_data()
{
    QTest::addColumn<qint64>("largestFile");
    QTest::addColumn<QStringList>("lost");
    QTest::newRow("parameters") << qint64(200) << QStringList{"x_parameters.txt"};
    QTest::newRow("all") << qint64(10) << QStringList{"x.txt", "x_entries.txt", "x_parameters.txt"};
}

// Catches results lost without a word on a full disk, the other files lost with them, complete
// older files destroyed by a save that fails, and what is left of the failed ones.
void TestResultFiles::aFullDiskIsReportedAndLeavesOlderFiles()
{
    QFETCH(const qint64, largestFile);
    QFETCH(const QStringList, lost);
    const QList<std::pair<QString, QByteArray>> files = {
        {"x.txt", recordsTable},
        {"x_entries.txt", entriesTable},
        {"x_parameters.txt", parameters(path("x.txt"))}};
    for (const auto &[name, table] : files)
        QVERIFY(writeFile(path(name), "older " + name.toUtf8()));

    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full{static_cast<rlim_t>(largestFile), before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    for (qsizetype i = 0; i < lost.size(); ++i)
        answers.press(QMessageBox::Ok);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &full), 0);
    m_window->writeDataToTxt();
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);

    QCOMPARE(answers.problem(), "");
    for (qsizetype i = 0; i < lost.size(); ++i) {
        const ModalAnswer::Box &box = answers.boxes().at(i);
        QCOMPARE(box.title, "Warning");
        QCOMPARE(box.text, notWritten + path(lost.at(i)));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QCOMPARE(box.buttons, QMessageBox::Ok);
    }
    for (const auto &[name, table] : files)
        QCOMPARE(contents(path(name)), lost.contains(name) ? "older " + name.toUtf8() : table);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 3);
}

// Catches a folder that allows no new files taken for one in which nothing can be saved.
void TestResultFiles::aFolderWithoutNewFilesIsWrittenToAllTheSame()
{
    // Not even root may make files there; the files that are there can be written to.
    QVERIFY(QFile::link("/proc/self/comm", path("x.txt")));
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(contents("/proc/self/comm"), recordsTable.first(15) + '\n');
}

void TestResultFiles::onlyARegularFileIsWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("linked");
    for (const char *name : {"x.txt", "x_entries.txt", "x_parameters.txt"}) {
        QTest::addRow("pipe %s", name) << QString(name) << false;
        QTest::addRow("link to a pipe %s", name) << QString(name) << true;
    }
}

// Catches a program that waits for ever for somebody to read a pipe, and a pipe replaced by a file.
// No device is tried: a program that fails this test would replace that, too.
void TestResultFiles::onlyARegularFileIsWritten()
{
    QFETCH(const QString, name);
    QFETCH(const bool, linked);
    const QString pipe = linked ? path("pipe") : path(name);
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    if (linked)
        QVERIFY(QFile::link(pipe, path(name)));
    ModalAnswer answers;
    answers.choose(path("x.txt")).press(QMessageBox::Ok);
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().first().text, notOpened + path("x.txt") + name);
    QVERIFY(QFileInfo(path(name)).exists());
    QVERIFY(!QFileInfo(path(name)).isFile());
    for (const char *other : {"x.txt", "x_entries.txt", "x_parameters.txt"})
        QVERIFY(other == name || QFileInfo(path(other)).size() > 0);
}

// Catches a link that a save replaces by a file.
void TestResultFiles::aLinkedFileStaysLinked()
{
    QVERIFY(QDir().mkpath(path("elsewhere")));
    QVERIFY(writeFile(path("elsewhere/y.txt"), "older"));
    QVERIFY(QFile::link(path("elsewhere/y.txt"), path("x.txt")));
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QVERIFY(QFileInfo(path("x.txt")).isSymLink());
    QCOMPARE(contents(path("elsewhere/y.txt")), recordsTable);
}

// Catches a name that has no room for what is added to it while the file is written.
void TestResultFiles::theLongestNameIsWritten()
{
    const QString name = QString(255 - 11 - 4, 'n') + ".txt"; // room for "_parameters"
    for (int save = 0; save < 2; ++save) {
        ModalAnswer answers;
        answers.choose(path(name));
        m_window->writeDataToTxt();
        QCOMPARE(answers.problem(), "");
        QCOMPARE(contents(path(name)), recordsTable);
        QCOMPARE(contents(path(QString(name).replace(".txt", "_parameters.txt"))),
                 parameters(path(name)));
    }
}

// Catches a header over an empty table.
void TestResultFiles::theTablesAreEmptyWithoutTokens()
{
    m_window->data.records.clear();
    m_window->data.entries.clear();
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(contents(path("x.txt")), "");
    QCOMPARE(contents(path("x_entries.txt")), "");
    QCOMPARE(contents(path("x_parameters.txt")), parameters(path("x.txt")));
}

// Catches the full path of an earlier save proposed as the folder of the next.
void TestResultFiles::aSecondSaveProposesTheDefaultFolderAgain()
{
    ModalAnswer answers;
    answers.choose(path("x.txt")).choose(path("y.txt"));
    m_window->writeDataToTxt();
    m_window->getParameters();
    m_window->writeDataToTxt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.dialogs().at(1).folder,
             QStandardPaths::writableLocation(QStandardPaths::DesktopLocation) + "/CHD001");
    QCOMPARE(answers.dialogs().at(1).typed, "CHD001_practice001.txt");
}

// Catches results announced before they are computed or after the operator has been asked.
void TestResultFiles::resultsAreAnnouncedAfterTheMeansAndBeforeTheFiles()
{
    m_window->data.records[0].nMother = 4;
    m_window->data.soundDuration = 0.25;
    m_window->data.mainParameterIndex = 1;
    QList<double> arguments;
    double meanAtSignal = -1.0;
    bool existedAtSignal = true;
    connect(m_window.get(), &MainWindow::doneDataCollection, this,
            [&](double threshold, double reactionTime, int index) {
                arguments = {threshold, reactionTime, double(index)};
                meanAtSignal = m_window->data.records.at(0).rt;
                existedAtSignal = QFileInfo::exists(path("x.txt"));
            });
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    m_window->finishIt();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(arguments, QList<double>({0.25, 0.0, 1.0}));
    QCOMPARE(meanAtSignal, 1234.5678 / 4);
    QVERIFY(!existedAtSignal);
    QVERIFY(contents(path("x.txt")).contains("MOV001.wav\t4\t0\t308.642\t308.642\t0\n"));
}

// Catches a file or a question although saving is off, and results that are then not computed.
void TestResultFiles::resultsAreComputedEvenWithoutSaving()
{
    m_window->data.saveData = false;
    m_window->data.records[1].nStranger = 2;
    const QSignalSpy done(m_window.get(), &MainWindow::doneDataCollection);
    const ModalAnswer nothing;
    m_window->finishIt();
    QCOMPARE(nothing.problem(), "");
    QVERIFY(nothing.dialogs().isEmpty());
    QCOMPARE(done.size(), 1);
    QCOMPARE(m_window->data.records.at(1).rt, 250.0);
    QCOMPARE(m_window->data.records.at(1).rt_correct, 250.0);
}

GUI_TEST_MAIN(TestResultFiles)
#include "tst_resultfiles.moc"
