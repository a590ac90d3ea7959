// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/OperatorWindow.h"
#include "support/WavFile.h"

#include <QDir>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <memory>

namespace {

const QString question =
    "This folder contains no .wav files.\nDo you want to select another folder?";

QString desktop()
{
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}

} // namespace

class TestSoundFolder : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void practiceAsksForAFolderFromTheDesktopOn();
    void theWavFilesOfTheFolderAreTheTokensInOrder_data();
    void theWavFilesOfTheFolderAreTheTokensInOrder();
    void anotherFolderReplacesTheTokens();
    void theFieldsShowTheFirstToken();
    void refusingAnotherFolderLeavesNothingPrepared_data();
    void refusingAnotherFolderLeavesNothingPrepared();
    void foldersAreAskedForUntilOneHasTokens();
    void refusingAfterAPreparationLocksGo();
    void aCancelledChoiceLeadsToTheQuestion();
    void aCancelledChoiceTakesTheWorkingDirectory();
    void theButtonPressedDecidesTheSessionType();
    void thereIsAnEntryForEachPresentation_data();
    void thereIsAnEntryForEachPresentation();
    void tooManyPresentationsAreRefusedWithAWarning_data();
    void tooManyPresentationsAreRefusedWithAWarning();

private:
    /// Makes the files, and by a trailing slash the folders, of these names.
    bool make(const QStringList &names) const;
    QStringList listed() const;
    void practice() const { QTest::mouseClick(m_window->pushButtonPractice, Qt::LeftButton); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OperatorWindow> m_window;
    QString m_before; ///< the working directory, which some tests change
};

void TestSoundFolder::init()
{
    m_before = QDir::currentPath();
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_window = std::make_unique<OperatorWindow>();
    m_window->show();
}

void TestSoundFolder::cleanup()
{
    QDir::setCurrent(m_before);
    m_window.reset();
    m_folder.reset();
}

bool TestSoundFolder::make(const QStringList &names) const
{
    const QByteArray token = WavBytes{.data = WavBytes::samples16({8192, -8192, 4096})}.bytes();
    return std::all_of(names.begin(), names.end(), [&](const QString &name) {
        const QString path = m_folder->filePath(name);
        return name.endsWith('/') ? QDir().mkpath(path) : writeFile(path, token);
    });
}

QStringList TestSoundFolder::listed() const
{
    QStringList names;
    for (const Record &record : m_window->data.records)
        names.append(record.filename);
    return names;
}

// Catches another caption, start folder or option, and files hidden from the operator's view.
void TestSoundFolder::practiceAsksForAFolderFromTheDesktopOn()
{
    QVERIFY(QDir().mkpath(desktop()));
    QVERIFY(make({"a.wav"}));
    m_window->data.desktopPath = m_folder->path(); // the desktop may have been moved meanwhile
    ModalAnswer answers;
    answers.choose(m_folder->path());
    practice();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.dialogs().size(), 1);
    const ModalAnswer::Dialog dialog = answers.dialogs().first();
    QCOMPARE(dialog.title, "Select a folder");
    QCOMPARE(dialog.folder, desktop());
    QCOMPARE(dialog.fileMode, QFileDialog::Directory);
    QVERIFY(dialog.options.testFlag(QFileDialog::ReadOnly));
    QVERIFY(!dialog.options.testFlag(QFileDialog::ShowDirsOnly));
    QVERIFY(dialog.parent == m_window.get());
    QCOMPARE(m_window->data.wavFilePath, m_folder->path());
    QCOMPARE(m_window->data.desktopPath, desktop());
}

void TestSoundFolder::theWavFilesOfTheFolderAreTheTokensInOrder_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("tokens");
    QTest::newRow("by name, whatever the case") << QStringList({"b.wav", "A.WAV", "c.txt", "C.Wav"})
                                                << QStringList({"A.WAV", "b.wav", "C.Wav"});
    QTest::newRow("last suffix alone")
        << QStringList({"x.tar.wav", "y.wav.txt", "z.wave", "wav", "nowav"})
        << QStringList({"x.tar.wav"});
    QTest::newRow("no folder") << QStringList({"a.wav", "b.wav/", "sub/", "sub/c.wav"})
                               << QStringList({"a.wav"});
    QTest::newRow("nothing hidden") << QStringList({"a.wav", ".b.wav"}) << QStringList({"a.wav"});
    QTest::newRow("blanks and letters outside ASCII")
        << QStringList({"a b.wav", QString::fromUtf8("\u00e4.wav")})
        << QStringList({"a b.wav", QString::fromUtf8("\u00e4.wav")});
    QTest::newRow("digits as text") << QStringList({"t10.wav", "t9.wav", "t1.wav"})
                                    << QStringList({"t1.wav", "t10.wav", "t9.wav"});
}

// Catches a file that is wrongly left out or taken, another order, and a field that is not left
// at its default.
void TestSoundFolder::theWavFilesOfTheFolderAreTheTokensInOrder()
{
    QFETCH(const QStringList, files);
    QVERIFY(make(files));
    ModalAnswer answers;
    answers.choose(m_folder->path());
    practice();
    QCOMPARE(answers.problem(), "");
    QTEST(listed(), "tokens");
    QCOMPARE(m_window->nTokens, m_window->data.records.size());
    QVERIFY(m_window->pushButtonGo->isEnabled());
    for (const Record &record : m_window->data.records) {
        QCOMPARE(record.filePath, m_folder->path());
        QCOMPARE(record.stim, "");
        QCOMPARE(record.nMother + record.nStranger, 0);
        QCOMPARE(record.rt, 0.0);
    }
}

// Catches tokens of an earlier folder that stay in the list.
void TestSoundFolder::anotherFolderReplacesTheTokens()
{
    QVERIFY(make({"one/", "one/a.wav", "one/b.wav", "two/", "two/c.wav"}));
    ModalAnswer answers;
    answers.choose(m_folder->filePath("one")).choose(m_folder->filePath("two"));
    practice();
    QCOMPARE(listed(), QStringList({"a.wav", "b.wav"}));
    practice();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(listed(), QStringList("c.wav"));
    QCOMPARE(m_window->data.records.first().filePath, m_folder->filePath("two"));
    QCOMPARE(m_window->nTokens, 1);
    QCOMPARE(m_window->data.entries.size(), 1);
    QCOMPARE(m_window->randomSequence, QList<int>{0});
}

// Catches fields that do not show the token which will be presented first.
void TestSoundFolder::theFieldsShowTheFirstToken()
{
    QVERIFY(make({"a.wav", "b.wav", "c.wav"}));
    m_window->lineEditNTimes->setText("2");
    ModalAnswer answers;
    answers.choose(m_folder->path());
    practice();
    QCOMPARE(answers.problem(), "");
    QList<int> sequence = m_window->randomSequence;
    QCOMPARE(m_window->tokenIndex, sequence.first());
    QCOMPARE(m_window->lineEditWavFilePath->text(), m_folder->path());
    QCOMPARE(m_window->lineEditWavFileName->text(), listed().at(sequence.first()));
    QCOMPARE(m_window->lineEditStatus->text(), "practice 1/6");
    QCOMPARE(m_window->data.entries.first().filename, listed().at(sequence.first()));
    QCOMPARE(m_window->soundWave, QList<double>({0.25, -0.25, 0.125}));
    std::sort(sequence.begin(), sequence.end());
    QCOMPARE(sequence, QList<int>({0, 0, 1, 1, 2, 2}));
}

void TestSoundFolder::refusingAnotherFolderLeavesNothingPrepared_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<bool>("escape");
    QTest::newRow("empty folder, No") << QStringList() << false;
    QTest::newRow("empty folder, escape") << QStringList() << true;
    QTest::newRow("only a folder named like a token, No") << QStringList("x.wav/") << false;
    QTest::newRow("only a hidden token, No") << QStringList(".x.wav") << false;
}

// Catches a question that is not asked, asked in other words or asked again after it was refused.
void TestSoundFolder::refusingAnotherFolderLeavesNothingPrepared()
{
    QFETCH(const QStringList, files);
    QFETCH(const bool, escape);
    QVERIFY(make(files));
    ModalAnswer answers;
    answers.choose(m_folder->path());
    if (escape)
        answers.escape();
    else
        answers.press(QMessageBox::No);
    practice();
    QCOMPARE(answers.problem(), "");
    const ModalAnswer::Box box = answers.boxes().first();
    QCOMPARE(box.title, "Question");
    QCOMPARE(box.text, question);
    QCOMPARE(box.icon, QMessageBox::Question);
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box.defaultButton, QMessageBox::Yes);
    QVERIFY(box.parent == m_window.get());
    QCOMPARE(m_window->nTokens, 0);
    QVERIFY(m_window->data.records.isEmpty());
    QVERIFY(m_window->data.entries.isEmpty());
    QVERIFY(m_window->pushButtonPractice->isEnabled());
    QVERIFY(!m_window->pushButtonGo->isEnabled());
    QCOMPARE(m_window->lineEditStatus->text(), "not started yet");
}

// Catches a Go that is left over from the former folder.
void TestSoundFolder::refusingAfterAPreparationLocksGo()
{
    QVERIFY(make({"tokens/", "tokens/a.wav", "none/"}));
    ModalAnswer answers;
    answers.choose(m_folder->filePath("tokens"));
    practice();
    QVERIFY(m_window->pushButtonGo->isEnabled());
    answers.choose(m_folder->filePath("none")).press(QMessageBox::No);
    practice();
    QCOMPARE(answers.problem(), "");
    QVERIFY(!m_window->pushButtonGo->isEnabled());
    QCOMPARE(m_window->nTokens, 0);
    QVERIFY(m_window->data.entries.isEmpty());
    QVERIFY(m_window->randomSequence.isEmpty());
}

// Catches a second dialog that does not open, opens elsewhere, or whose folder is not taken.
void TestSoundFolder::foldersAreAskedForUntilOneHasTokens()
{
    QVERIFY(make({"none/", "tokens/", "tokens/a.wav"}));
    ModalAnswer answers;
    answers.choose(m_folder->filePath("none"))
        .press(QMessageBox::Yes)
        .choose(m_folder->filePath("none"))
        .press(QMessageBox::Yes)
        .choose(m_folder->filePath("tokens"));
    practice();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().size(), 2);
    QCOMPARE(answers.dialogs().size(), 3);
    QCOMPARE(listed(), QStringList("a.wav"));
    QCOMPARE(m_window->data.wavFilePath, m_folder->filePath("tokens"));
    QVERIFY(m_window->pushButtonGo->isEnabled());
}

// Catches a cancelled choice that ends without the question or keeps the former folder.
void TestSoundFolder::aCancelledChoiceLeadsToTheQuestion()
{
    QVERIFY(QDir::setCurrent(m_folder->path()));
    ModalAnswer answers;
    answers.cancel().press(QMessageBox::No);
    practice();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(answers.boxes().first().text, question);
    QCOMPARE(m_window->data.wavFilePath, "");
    QCOMPARE(m_window->nTokens, 0);
    QVERIFY(!m_window->pushButtonGo->isEnabled());
}

// Catches an empty path that does not stand for the working directory.
void TestSoundFolder::aCancelledChoiceTakesTheWorkingDirectory()
{
    QVERIFY(make({"a.wav"}));
    QVERIFY(QDir::setCurrent(m_folder->path()));
    ModalAnswer answers;
    answers.cancel();
    practice();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(listed(), QStringList("a.wav"));
    QCOMPARE(m_window->data.records.first().filePath, "");
    QVERIFY(m_window->pushButtonGo->isEnabled());
}

// Catches a session type that does not follow the button, and an experiment that locks itself.
void TestSoundFolder::theButtonPressedDecidesTheSessionType()
{
    QVERIFY(make({"a.wav"}));
    m_window->refreshMainWindow();
    ModalAnswer answers;
    answers.choose(m_folder->path()).choose(m_folder->path());
    QTest::mouseClick(m_window->pushButtonExperiment, Qt::LeftButton);
    QCOMPARE(m_window->data.sesTypeIndex, 1);
    QCOMPARE(m_window->lineEditStatus->text(), "experiment 1/1");
    QCOMPARE(m_window->lineEditOutputFileName->text(), "CHD001_experiment001.txt");
    QVERIFY(m_window->pushButtonPractice->isEnabled());
    QVERIFY(m_window->pushButtonExperiment->isEnabled());
    QVERIFY(m_window->pushButtonGo->isEnabled());

    practice();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(m_window->data.sesTypeIndex, 0);
    QCOMPARE(m_window->lineEditOutputFileName->text(), "CHD001_practice001.txt");
    QVERIFY(m_window->pushButtonPractice->isEnabled());
    QVERIFY(!m_window->pushButtonExperiment->isEnabled());
}

void TestSoundFolder::thereIsAnEntryForEachPresentation_data()
{
    QTest::addColumn<QString>("nTimes");
    QTest::addColumn<int>("count");
    QTest::newRow("four times") << "4" << 12;
    QTest::newRow("once") << "1" << 3;
    QTest::newRow("never") << "0" << 0;
    QTest::newRow("negative") << "-2" << 0;
    QTest::newRow("no number") << "x" << 0;
    QTest::newRow("more than 32 bits") << "4294967297" << 0;
}

// Catches another number of trials, and a first token that is looked up in an empty order.
void TestSoundFolder::thereIsAnEntryForEachPresentation()
{
    QFETCH(const QString, nTimes);
    QFETCH(const int, count);
    QVERIFY(make({"a.wav", "b.wav", "c.wav"}));
    m_window->lineEditNTimes->setText(nTimes);
    ModalAnswer answers;
    answers.choose(m_folder->path());
    practice();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(m_window->data.entries.size(), count);
    QCOMPARE(m_window->randomSequence.size(), count);
    QCOMPARE(m_window->data.records.size(), 3);
    QVERIFY(m_window->pushButtonGo->isEnabled());
    QCOMPARE(m_window->lineEditStatus->text(), QString("practice 1/%1").arg(count));
}

void TestSoundFolder::tooManyPresentationsAreRefusedWithAWarning_data()
{
    QTest::addColumn<QString>("nTimes");
    QTest::newRow("one too many") << "500001";
    QTest::newRow("largest int") << "2147483647";
    QTest::newRow("product of 2 in 32 bits") << "1073741825";
}

// Catches a mistyped number that takes all memory, and a session prepared in spite of the warning.
void TestSoundFolder::tooManyPresentationsAreRefusedWithAWarning()
{
    QFETCH(const QString, nTimes);
    QVERIFY(make({"a.wav", "b.wav"}));
    m_window->lineEditNTimes->setText(nTimes);
    ModalAnswer answers;
    answers.choose(m_folder->path()).press(QMessageBox::Ok);
    practice();
    QCOMPARE(answers.problem(), "");
    const ModalAnswer::Box box = answers.boxes().first();
    QCOMPARE(box.title, "Warning");
    QCOMPARE(box.text, QString("2 tokens, %1 times each, are more than the 1000000 presentations "
                               "that a session can have.")
                           .arg(nTimes));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(m_window->nTokens, 0);
    QVERIFY(m_window->data.entries.isEmpty());
    QVERIFY(m_window->randomSequence.isEmpty());
    QVERIFY(!m_window->pushButtonGo->isEnabled());
}

GUI_TEST_MAIN(TestSoundFolder)
#include "tst_soundfolder.moc"
