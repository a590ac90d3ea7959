// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Journal.h"
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/SessionTest.h"
#include "support/WavFile.h"

#include <QCheckBox>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>

/// The journals of sessions that are carried out by the buttons of both windows. Nothing is played:
/// the test itself says when a token has ended.
class TestSessionJournal : public SessionTest
{
    Q_OBJECT

private slots:
    void noJournalBeginsBeforeTheSubjectIsReady();
    void theJournalBeginsWithTheSession();
    void eachAnswerIsWrittenWhenItIsGiven_data();
    void eachAnswerIsWrittenWhenItIsGiven();
    void theResultFilesComeBackFromTheJournal_data();
    void theResultFilesComeBackFromTheJournal();
    void whatChangesInASessionComesBackAsWell();
    void theSavedFilesAreKeptWithTheirSums();
    void aSaveIsKeptThatOutlivesTheSubjectWindow();
    void aCancelledSaveIsNoSave();
    void aSessionWithoutSavingIsJournaled();
    void aSessionThatIsBrokenOffEndsItsJournal();
    void quittingEndsTheJournal_data();
    void quittingEndsTheJournal();
    void everySessionHasItsOwnJournal();
    void aSessionWithoutPresentationsIsJournaled();
    void aSessionGoesOnWithoutItsJournal();

private:
    QDir folder() const { return QDir(journalFolder()); }
    qsizetype nJournals() const { return folder().entryList(QDir::Files).size(); }
    /// The journal that began last.
    std::optional<JournaledSession> journaled() const;

    /// Begins a session of three tokens, up to the delay before the first.
    bool begin();
    bool begin(QPushButton *type);
    /// Lets the token end and presses "Mother" or "Stranger".
    void answer(bool mother);
    void answerAll();
};

std::optional<JournaledSession> TestSessionJournal::journaled() const
{
    const QStringList names = folder().entryList(QDir::Files, QDir::Name);
    return names.isEmpty() ? std::nullopt : readJournal(contents(folder().filePath(names.last())));
}

bool TestSessionJournal::begin()
{
    return begin(m_window->pushButtonPractice);
}

bool TestSessionJournal::begin(QPushButton *type)
{
    for (const char *name : {"a001.wav", "b002.wav", "c001.wav"}) {
        if (!writeFile(path(QString("tokens/") + name),
                       WavBytes{.data = QByteArray(96, 1)}.bytes()))
            return false;
    }
    if (!prepare(type, path("tokens")))
        return false;
    click(m_window->pushButtonGo);
    click(subject("pushButtonIAmReady"));
    m_window->presentationTimer.stop();
    return true;
}

void TestSessionJournal::answer(bool mother)
{
    m_window->presentationTimer.stop();
    m_window->reactionTimer->start();
    emit m_window->soundPlaying(tokenHasEnded);
    QTest::qWait(3);
    click(subject(mother ? "pushButtonChoice2" : "pushButtonChoice4"));
    m_window->presentationTimer.stop();
}

void TestSessionJournal::answerAll()
{
    for (qsizetype trial = 0; trial < m_window->randomSequence.size(); ++trial)
        answer(trial % 2 == 0);
}

// Catches journals of sessions that never began.
void TestSessionJournal::noJournalBeginsBeforeTheSubjectIsReady()
{
    QVERIFY(writeFile(path("tokens/a001.wav"), WavBytes{.data = QByteArray(96, 1)}.bytes()));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    click(m_window->pushButtonGo);
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    m_window.reset();
    QCOMPARE(nJournals(), 0);
}

// Catches a head of other parameters, tokens or order than the session's.
void TestSessionJournal::theJournalBeginsWithTheSession()
{
    m_window->lineEditSubCode->setText("ANA001");
    m_window->lineEditNTimes->setText("4");
    m_window->lineEditSesNum->setText("12");
    m_window->checkBoxAutoPlay->setChecked(false);
    QVERIFY(begin());
    QTRY_VERIFY_WITH_TIMEOUT(journaled(), 1000);
    const JournaledSession session = *journaled();
    QCOMPARE(session.order, m_window->randomSequence);
    QCOMPARE(session.data.records.size(), 3);
    QCOMPARE(session.data.records.at(1).filename, "b002.wav");
    QCOMPARE(session.data.subCode, "ANA001");
    QCOMPARE(session.data.nTimes, 4);
    QCOMPARE(session.data.sesNum, 12);
    QCOMPARE(session.data.si, 0.02);
    QCOMPARE(session.data.wavFilePath, path("tokens"));
    QCOMPARE(session.data.saveData, false);
    QCOMPARE(session.data.feedBack, true);
    QCOMPARE(session.data.autoPlay, false);
    QVERIFY(!session.end);
}

void TestSessionJournal::eachAnswerIsWrittenWhenItIsGiven_data()
{
    QTest::addColumn<bool>("automatic");
    QTest::newRow("automatic") << true;
    QTest::newRow("by Next") << false;
}

// Catches answers that are written late, such as only when the next is given or the session has
// ended, and an answer with the number, token, presentation or reaction time of another trial.
void TestSessionJournal::eachAnswerIsWrittenWhenItIsGiven()
{
    QFETCH(const bool, automatic);
    m_window->checkBoxAutoPlay->setChecked(automatic);
    m_window->lineEditNTimes->setText("2");
    QVERIFY(begin());
    for (int trial = 0; trial < 6; ++trial) {
        m_window->presentationTimings[trial].block = 10 + trial;
        answer(trial % 3 == 0);
        QTRY_COMPARE_WITH_TIMEOUT(journaled()->answers.size(), trial + 1, 1000);
        const JournaledAnswer written = journaled()->answers.last();
        const Entry &entry = m_window->data.entries.at(trial);
        QCOMPARE(written.trial, trial);
        QCOMPARE(written.token, m_window->randomSequence.at(trial));
        QCOMPARE(written.entry.filename, entry.filename);
        QCOMPARE(written.entry.stim, entry.filename.contains("001") ? "mother" : "stranger");
        QCOMPARE(written.entry.resp, trial % 3 == 0 ? "mother" : "stranger");
        QCOMPARE(written.entry.correctness, entry.correctness);
        QCOMPARE(written.entry.rt, entry.rt);
        QVERIFY(entry.rt >= 3);
        QCOMPARE(written.presentation["block"].toDouble(), 10.0 + trial);
        if (!automatic && trial < 5)
            click(subject("pushButtonNext"));
    }
}

void TestSessionJournal::theResultFilesComeBackFromTheJournal_data()
{
    QTest::addColumn<bool>("automatic");
    QTest::addColumn<QString>("nTimes");
    QTest::newRow("automatic, once") << true << "1";
    QTest::newRow("automatic, three times") << true << "3";
    QTest::newRow("by Next, once") << false << "1";
    QTest::newRow("by Next, twice") << false << "2";
}

// Catches any byte of the three files that a journal does not bring back.
void TestSessionJournal::theResultFilesComeBackFromTheJournal()
{
    QFETCH(const bool, automatic);
    m_window->checkBoxAutoPlay->setChecked(automatic);
    m_window->checkBoxSaveData->setChecked(true);
    QFETCH(const QString, nTimes);
    m_window->lineEditNTimes->setText(nTimes);
    QVERIFY(begin());
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    for (qsizetype trial = 0; trial < m_window->randomSequence.size(); ++trial) {
        answer(trial % 3 == 0);
        if (!automatic && trial + 1 < m_window->randomSequence.size())
            click(subject("pushButtonNext"));
    }
    QCOMPARE(answers.problem(), "");

    QTRY_COMPARE_WITH_TIMEOUT(journaled()->saves.size(), 1, 1000);
    std::optional<JournaledSession> session = journaled();
    QCOMPARE(session->end, SessionEnd::Finished);
    QList<QByteArray> written;
    for (const char *name : {"x.txt", "x_entries.txt", "x_parameters.txt"}) {
        written.append(contents(path(name)));
        QVERIFY(QFile::remove(path(name)));
    }
    writeResultFiles(session->data, session->order.size(), path("x.txt"),
                     [](const QString &warning) { QFAIL(qPrintable(warning)); });
    QCOMPARE(contents(path("x.txt")), written.at(0));
    QCOMPARE(contents(path("x_entries.txt")), written.at(1));
    QCOMPARE(contents(path("x_parameters.txt")), written.at(2));
}

// Catches parameters that are kept only as they were at the beginning: the program reads its fields
// again before each token.
void TestSessionJournal::whatChangesInASessionComesBackAsWell()
{
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(begin());
    ModalAnswer answers;
    answers.choose(path("x.txt"));
    answer(true);
    m_window->lineEditSubCode->setText("ANA002");
    m_window->lineEditSi->setText("30.000");
    answer(true);
    answer(false);
    QCOMPARE(answers.problem(), "");
    QTRY_COMPARE_WITH_TIMEOUT(journaled()->saves.size(), 1, 1000);
    const QByteArray records = contents(path("x.txt"));
    const QByteArray parameters = contents(path("x_parameters.txt"));
    QVERIFY(parameters.contains("subCode: ANA002\n"));
    QVERIFY(parameters.contains("si: 0.03\n"));

    std::optional<JournaledSession> session = journaled();
    writeResultFiles(session->data, session->order.size(), path("x.txt"),
                     [](const QString &warning) { QFAIL(qPrintable(warning)); });
    QCOMPARE(contents(path("x.txt")), records);
    QCOMPARE(contents(path("x_parameters.txt")), parameters);
}

// Catches sums of other files, or of what ought to have been written.
void TestSessionJournal::theSavedFilesAreKeptWithTheirSums()
{
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(begin());
    QVERIFY(QDir().mkpath(path("x_entries.txt")));
    ModalAnswer answers;
    answers.choose(path("x.txt")).press(QMessageBox::Ok);
    answerAll();
    QCOMPARE(answers.problem(), "");
    QTRY_COMPARE_WITH_TIMEOUT(journaled()->saves.size(), 1, 1000);
    const QList<SavedFile> files = journaled()->saves.first();
    QCOMPARE(files.size(), 3);
    const auto sum = [this](const QString &name) {
        return QCryptographicHash::hash(contents(path(name)), QCryptographicHash::Sha256).toHex();
    };
    QCOMPARE(files.at(0).path, path("x.txt"));
    QCOMPARE(files.at(0).sha256, sum("x.txt"));
    QCOMPARE(files.at(1).path, path("x_entries.txt"));
    QCOMPARE(files.at(1).sha256, "");
    QCOMPARE(files.at(2).path, path("x_parameters.txt"));
    QCOMPARE(files.at(2).sha256, sum("x_parameters.txt"));
}

// Catches files that seem not to have been saved because the subject window was closed around the
// save dialog, as a desktop with Wayland can do with Qt 6.4.
void TestSessionJournal::aSaveIsKeptThatOutlivesTheSubjectWindow()
{
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(begin());
    {
        bool closed = false;
        ModalAnswer answers;
        answers.choose(path("x.txt")).when([&] {
            closed = closeSubjectWindow(QMessageBox::Yes);
            return true;
        });
        answerAll();
        QCOMPARE(answers.problem(), "");
        QVERIFY(closed);
    }
    QTRY_COMPARE_WITH_TIMEOUT(journaled()->saves.size(), 1, 1000);
    QCOMPARE(journaled()->saves.first().first().path, path("x.txt"));
    QVERIFY(journaled()->end == SessionEnd::Finished);
    QTest::qWait(2); // the journals are named by the time
    QVERIFY(begin());
    QTRY_COMPARE_WITH_TIMEOUT(nJournals(), 2, 1000);
}

// Catches answers lost by a cancelled save dialog.
void TestSessionJournal::aCancelledSaveIsNoSave()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(begin());
    ModalAnswer answers;
    answers.cancel().press(QMessageBox::Ok);
    answerAll();
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(answers.problem(), "");
    QTRY_COMPARE_WITH_TIMEOUT(journaled()->saves.size(), 1, 1000);
    QCOMPARE(journaled()->saves.first().first().sha256, "");
    QCOMPARE(journaled()->answers.size(), 3);
}

// Catches a journal that depends on the choice to save.
void TestSessionJournal::aSessionWithoutSavingIsJournaled()
{
    QVERIFY(begin());
    answerAll();
    QTRY_VERIFY_WITH_TIMEOUT(journaled()->end == SessionEnd::Finished, 1000);
    QCOMPARE(journaled()->answers.size(), 3);
    QCOMPARE(journaled()->saves.size(), 0);
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    m_window.reset();
    QVERIFY(journaled()->end == SessionEnd::Finished);
}

// Catches a session that seems to run on when the subject window has closed, and one that seems to
// have ended when the question was answered with "No".
void TestSessionJournal::aSessionThatIsBrokenOffEndsItsJournal()
{
    QVERIFY(begin());
    answer(true);
    QVERIFY(closeSubjectWindow(QMessageBox::No));
    QTest::qWait(100);
    QVERIFY(!journaled()->end);
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QTRY_VERIFY_WITH_TIMEOUT(journaled()->end == SessionEnd::BrokenOff, 1000);
    QCOMPARE(journaled()->answers.size(), 1);
}

void TestSessionJournal::quittingEndsTheJournal_data()
{
    QTest::addColumn<int>("nAnswers");
    QTest::addColumn<SessionEnd>("end");
    QTest::newRow("before an answer") << 0 << SessionEnd::Quit;
    QTest::newRow("between answers") << 1 << SessionEnd::Quit;
    QTest::newRow("after the last answer") << 3 << SessionEnd::Finished;
}

// Catches answers or an end that are still to be written when the program has gone.
void TestSessionJournal::quittingEndsTheJournal()
{
    QFETCH(const int, nAnswers);
    QVERIFY(begin());
    for (int trial = 0; trial < nAnswers; ++trial)
        answer(false);
    m_window->pushButtonQuit->setEnabled(true); // as the close box would be
    m_window->close();
    m_window.reset();
    QCOMPARE(journaled()->answers.size(), nAnswers);
    QTEST(*journaled()->end, "end");
}

// Catches a second session in the journal of the first.
void TestSessionJournal::everySessionHasItsOwnJournal()
{
    QVERIFY(begin());
    answerAll();
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QTest::qWait(2); // the journals are named by the time
    QVERIFY(begin(m_window->pushButtonExperiment));
    answer(true);
    QTRY_COMPARE_WITH_TIMEOUT(nJournals(), 2, 1000);
    QTRY_COMPARE_WITH_TIMEOUT(journaled()->answers.size(), 1, 1000);
    QCOMPARE(journaled()->data.sesTypeIndex, 1);
    QCOMPARE(journaled()->data.records.at(0).nStranger + journaled()->data.records.at(1).nStranger,
             0);
}

// Catches a session without presentations that is taken for none.
void TestSessionJournal::aSessionWithoutPresentationsIsJournaled()
{
    m_window->lineEditNTimes->setText("0");
    QVERIFY(begin());
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QTRY_VERIFY_WITH_TIMEOUT(journaled() && journaled()->end == SessionEnd::BrokenOff, 1000);
    QCOMPARE(journaled()->order.size(), 0);
}

// Catches a session that stops, or asks something, because its journal cannot be written.
void TestSessionJournal::aSessionGoesOnWithoutItsJournal()
{
    QVERIFY(QDir().mkpath(QFileInfo(journalFolder()).path()));
    QVERIFY(writeFile(journalFolder(), "a file where the folder ought to be"));
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression("^The journal of this session cannot be written"));
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(begin());
    {
        ModalAnswer answers;
        answers.choose(path("x.txt"));
        answerAll();
        QCOMPARE(answers.problem(), "");
        QCOMPARE(answers.boxes().size(), 0);
    }
    QCOMPARE(contents(path("x_entries.txt")).count('\n'), 3);
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    m_window.reset();
    QVERIFY(QFile::remove(journalFolder()));
}

GUI_TEST_MAIN(TestSessionJournal)
#include "tst_sessionjournal.moc"
