// SPDX-License-Identifier: GPL-3.0-or-later
// How windows close and dialogs end, and what is pressed around them. No sound is needed: no token
// gets as far as being played.
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/SessionTest.h"
#include "support/WavFile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QTimer>
#include <QWindow>

#include <functional>

namespace {

/// Asks @p window to close as the window system does when its close box is pressed; whether it may
/// be closed.
bool pressCloseBox(const QWidget *window)
{
    QCloseEvent request;
    QCoreApplication::sendEvent(window->windowHandle(), &request);
    return request.isAccepted();
}

QString resultsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation) + "/CHD001";
}

/// Notes the titles of all dialogs that are shown while it lives, however briefly.
class ShownDialogs : public QObject
{
public:
    ShownDialogs() { qApp->installEventFilter(this); }

    QStringList titles;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const auto *dialog = qobject_cast<QDialog *>(watched);
        if (dialog != nullptr && event->type() == QEvent::Show)
            titles.append(dialog->windowTitle());
        return false;
    }
};

/// Makes @p folder, if need be, and has it as the working directory while it lives: what a dialog
/// without an answer stands for.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(const QString &folder)
        : m_before(QDir::currentPath())
        , m_isSet(QDir().mkpath(folder) && QDir::setCurrent(folder))
    {
    }
    ~WorkingDirectory() { QDir::setCurrent(m_before); }
    Q_DISABLE_COPY_MOVE(WorkingDirectory)

    bool isSet() const { return m_isSet; }

private:
    QString m_before;
    bool m_isSet;
};

} // namespace

class TestWindowEnds : public SessionTest
{
    Q_OBJECT

private slots:
    void theSubjectWindowWaitsForTheAnswer_data();
    void theSubjectWindowWaitsForTheAnswer();

    void nothingBeginsInsideAPreparation_data();
    void nothingBeginsInsideAPreparation();
    void nothingBeginsWhileResultsAreSaved();
    void aSecondGoOpensNoSecondWindow();

    void quittingEndsTheProgramAtOnce_data();
    void quittingEndsTheProgramAtOnce();
    void quittingEndsTheDialogThatIsOpen_data();
    void quittingEndsTheDialogThatIsOpen();
    void quittingInsideAPreparationOpensNoDialog();
    void aWarningBehindQuittingDoesNotKeepTheProgram();

private:
    bool makeToken() const;
    bool start() const;
    bool awaitLastAnswer() const;
    bool endsWithin(const std::function<void()> &act) const;
};

bool TestWindowEnds::makeToken() const
{
    return writeFile(path("tokens/MOV001.wav"),
                     WavBytes{.data = WavBytes::samples16({1, 2, 3})}.bytes());
}

/// Prepares a session of one presentation and presses "Go".
bool TestWindowEnds::start() const
{
    if (!makeToken() || !prepare(m_window->pushButtonPractice, path("tokens")))
        return false;
    click(m_window->pushButtonGo);
    return m_window->subjectWindow->isVisible() && !m_window->isEnabled();
}

/// Goes from there to where the subject may give the only answer.
bool TestWindowEnds::awaitLastAnswer() const
{
    m_window->lineEditSi->setText("1000000");
    click(subject("pushButtonIAmReady"));
    m_window->presentationTimer.stop();
    m_window->reactionTimer->start();
    emit m_window->soundPlaying(tokenHasEnded);
    return m_window->trialIndex == 1 && subject("pushButtonChoice2")->isEnabled();
}

/// Runs the program's event loop as it is run in main(), and @p act in it; whether it ended by
/// itself, and with success.
bool TestWindowEnds::endsWithin(const std::function<void()> &act) const
{
    QApplication::setQuitOnLastWindowClosed(true);
    const auto asBefore = qScopeGuard([] { QApplication::setQuitOnLastWindowClosed(false); });
    QTimer::singleShot(0, m_window.get(), act);
    QTimer watchdog;
    connect(&watchdog, &QTimer::timeout, [] { QCoreApplication::exit(EXIT_FAILURE); });
    watchdog.start(longestWait / 2);
    return QApplication::exec() == EXIT_SUCCESS;
}

void TestWindowEnds::theSubjectWindowWaitsForTheAnswer_data()
{
    QTest::addColumn<bool>("byDone");
    QTest::addColumn<bool>("againByCloseBox");
    QTest::addColumn<QMessageBox::StandardButton>("answer");
    for (const bool byDone : {true, false}) {
        for (const bool againByCloseBox : {true, false}) {
            for (const auto answer : {QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel})
                QTest::addRow("%s, then %s: %s", byDone ? "Done" : "close box",
                              againByCloseBox ? "close box" : "close()",
                              answer == QMessageBox::Yes  ? "Yes"
                              : answer == QMessageBox::No ? "No"
                                                          : "Cancel")
                    << byDone << againByCloseBox << answer;
        }
    }
}

// Catches a window that closes unasked when it is asked to close once more while its question is
// open. After "No" nobody could use the operator's window again: there would be none to close.
void TestWindowEnds::theSubjectWindowWaitsForTheAnswer()
{
    QFETCH(const bool, byDone);
    QFETCH(const bool, againByCloseBox);
    QFETCH(const QMessageBox::StandardButton, answer);
    QVERIFY(start());
    emit m_window->doneDataCollection(0.25, 0.0, 0);
    const SubjectWindow *window = m_window->subjectWindow;

    bool stayed = true;
    ModalAnswer answers;
    answers.press(answer).when([&] {
        const ModalAnswer nothing;
        for (int times = 0; times < 2; ++times) {
            if (againByCloseBox)
                stayed = stayed && !pressCloseBox(window);
            else
                m_window->subjectWindow->close();
            stayed = stayed && window->isVisible() && window->windowHandle()->isVisible();
        }
        stayed = stayed && nothing.problem().isEmpty();
        return true;
    });
    if (byDone)
        click(subject("pushButtonDone"));
    else
        pressCloseBox(window);
    QCOMPARE(answers.problem(), "");
    QVERIFY(stayed);
    QCOMPARE(window->isVisible(), answer != QMessageBox::Yes);
    QCOMPARE(window->windowHandle()->isVisible(), answer != QMessageBox::Yes);
    QCOMPARE(m_window->isEnabled(), answer == QMessageBox::Yes);
    if (answer == QMessageBox::Yes)
        return;

    answers.press(QMessageBox::Yes);
    pressCloseBox(window);
    QCOMPARE(answers.problem(), "");
    QVERIFY(!window->isVisible());
    QVERIFY(m_window->isEnabled());
}

void TestWindowEnds::nothingBeginsInsideAPreparation_data()
{
    QTest::addColumn<QString>("pressed");
    QTest::addColumn<QString>("around");
    for (const char *pressed : {"pushButtonPractice", "pushButtonExperiment", "pushButtonGo"}) {
        for (const char *around : {"release of the output", "folder dialog", "question", "warning"})
            QTest::addRow("%s, %s", pressed, around) << pressed << around;
    }
}

// Catches a second preparation, or a session, that begins around the dialogs of a preparation: its
// records and entries would be those of the other, or none, and a subject window would lock the
// dialog with the operator's window.
void TestWindowEnds::nothingBeginsInsideAPreparation()
{
    QFETCH(const QString, pressed);
    QFETCH(const QString, around);
    QVERIFY(makeToken());
    QVERIFY(QDir().mkpath(path("none")));
    m_window->refreshMainWindow(); // so that "Experiment" can be pressed, and then "Go"
    QVERIFY(prepare(m_window->pushButtonExperiment, path("tokens")));

    QByteArray unexpected;
    bool pressedIt = false;
    const auto pressIt = [&] {
        const ModalAnswer nothing;
        click(m_window->findChild<QPushButton *>(pressed));
        unexpected = nothing.problem();
        pressedIt = true;
        return true;
    };
    ModalAnswer answers;
    answers.choose(path(around == "question" ? "none" : "tokens"));
    QMetaObject::Connection early;
    if (around == "release of the output") {
        // It handles events, and comes right behind this change.
        m_window->comboBoxSesType->setCurrentIndex(0);
        early = connect(m_window->comboBoxSesType, &QComboBox::currentIndexChanged, this, pressIt);
    } else if (around == "folder dialog") {
        answers.when(pressIt);
    }
    if (around == "question")
        answers.press(QMessageBox::No).when(pressIt);
    if (around == "warning") {
        m_window->lineEditNTimes->setText("1000001");
        answers.press(QMessageBox::Ok).when(pressIt);
    }
    click(m_window->pushButtonExperiment);
    disconnect(early);
    QCOMPARE(answers.problem(), "");
    QVERIFY(pressedIt);
    QCOMPARE(unexpected, "");
    QCOMPARE(answers.dialogs().size(), 1);
    QVERIFY(m_window->subjectWindow == nullptr);
    QVERIFY(m_window->isEnabled());

    const bool prepared = around != "question" && around != "warning";
    QCOMPARE(m_window->data.records.size(), prepared ? 1 : 0);
    QCOMPARE(m_window->data.entries.size(), prepared ? 1 : 0);
    QCOMPARE(m_window->randomSequence.size(), prepared ? 1 : 0);
    QCOMPARE(m_window->pushButtonGo->isEnabled(), prepared);
    QCOMPARE(m_window->data.sesTypeIndex, 1);
    QVERIFY(m_window->pushButtonExperiment->isEnabled());

    // The next one begins as ever.
    m_window->lineEditNTimes->setText("1");
    answers.choose(path("tokens"));
    click(m_window->pushButtonPractice);
    QCOMPARE(answers.problem(), "");
    QVERIFY(!m_window->pushButtonExperiment->isEnabled());
    click(m_window->pushButtonGo);
    QVERIFY(m_window->subjectWindow->isVisible());
}

// Catches a preparation that begins around the save dialog, and leaves nothing of the session that
// is to be saved.
void TestWindowEnds::nothingBeginsWhileResultsAreSaved()
{
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(start());
    QVERIFY(awaitLastAnswer());
    QByteArray unexpected;
    ModalAnswer answers;
    answers.choose(path("x.txt")).when([&] {
        ModalAnswer yes;
        yes.press(QMessageBox::Yes);
        click(subject("pushButtonDone"));
        click(m_window->pushButtonPractice);
        click(m_window->pushButtonExperiment);
        unexpected = yes.problem();
        return true;
    });
    click(subject("pushButtonChoice2"));
    QCOMPARE(answers.problem(), "");
    QCOMPARE(unexpected, "");
    QCOMPARE(contents(path("x.txt")).count("\nMOV001.wav\t1\t0\t"), 1);
    QCOMPARE(contents(path("x_entries.txt")).count("\nMOV001.wav\tmother\tmother\t1\t"), 1);
    QCOMPARE(contents(path("x_parameters.txt")).count("\nsesTypeIndex: 0\n"), 1);
    QVERIFY(m_window->isEnabled());
    answers.choose(path("tokens"));
    click(m_window->pushButtonExperiment);
    QCOMPARE(answers.problem(), "");
    QVERIFY(m_window->pushButtonGo->isEnabled());
}

// Catches a "Go" that can be pressed once more behind the first.
void TestWindowEnds::aSecondGoOpensNoSecondWindow()
{
    QVERIFY(start());
    const SubjectWindow *window = m_window->subjectWindow;
    click(m_window->pushButtonGo);
    m_window->pushButtonGo->click();
    QVERIFY(m_window->subjectWindow == window);
    QCOMPARE(m_window->findChildren<SubjectWindow *>().size(), 1);
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QVERIFY(m_window->isEnabled());
}

void TestWindowEnds::quittingEndsTheProgramAtOnce_data()
{
    QTest::addColumn<QString>("behind");
    QTest::addColumn<bool>("inSession");
    for (const char *behind : {"", "pushButtonPractice", "pushButtonExperiment", "pushButtonGo"})
        QTest::addRow("before a session, %s", behind) << behind << false;
    for (const char *behind : {"", "pushButtonChoice2", "pushButtonChoice4", "close box"})
        QTest::addRow("in a session, %s", behind) << behind << true;
}

// Catches a program that lives on without a window, or with a dialog alone, when something has been
// pressed behind "Quit", and one that asks or saves then.
void TestWindowEnds::quittingEndsTheProgramAtOnce()
{
    QFETCH(const QString, behind);
    QFETCH(const bool, inSession);
    m_window->checkBoxSaveData->setChecked(true);
    if (inSession) {
        QVERIFY(start());
        QVERIFY(awaitLastAnswer());
    } else {
        QVERIFY(makeToken());
        m_window->refreshMainWindow();
        QVERIFY(prepare(m_window->pushButtonExperiment, path("tokens")));
    }
    const WorkingDirectory unchosen(path("none"));
    QVERIFY(unchosen.isSet());
    const ShownDialogs shown;
    QVERIFY(endsWithin([&] {
        if (inSession)
            pressCloseBox(m_window.get());
        else
            click(m_window->pushButtonQuit);
        if (behind == "close box")
            pressCloseBox(m_window->subjectWindow);
        else if (!behind.isEmpty())
            m_window->findChild<QPushButton *>(behind)->click();
    }));
    QCOMPARE(shown.titles, QStringList());
    QVERIFY(!m_window->isVisible());
    QCOMPARE(m_window->findChildren<SubjectWindow *>().size(), inSession ? 1 : 0);
    m_window.reset();
    QVERIFY(!QDir(resultsFolder()).exists());
    QVERIFY(QDir::current().isEmpty());
}

void TestWindowEnds::quittingEndsTheDialogThatIsOpen_data()
{
    QTest::addColumn<QStringList>("dialogs"); // the last one is open when the program is quit
    QTest::newRow("folder dialog") << QStringList({"Select a folder"});
    QTest::newRow("folder dialog beside tokens") << QStringList({"Select a folder"});
    QTest::newRow("question") << QStringList({"Select a folder", "Question"});
    QTest::newRow("warning") << QStringList({"Select a folder", "Warning"});
    QTest::newRow("save dialog") << QStringList({"Save a file"});
    QTest::newRow("Done") << QStringList({"Confirmation MessageBox"});
    QTest::newRow("close box") << QStringList({"Confirmation MessageBox"});
}

// Catches a dialog that keeps the program alive, one that follows it, and a file that is written
// though the operator has not chosen its name.
void TestWindowEnds::quittingEndsTheDialogThatIsOpen()
{
    QFETCH(const QStringList, dialogs);
    const QString row = QTest::currentDataTag();
    const bool besideTokens = row == "warning" || row == "folder dialog beside tokens";
    QVERIFY(makeToken());
    const WorkingDirectory unchosen(path(besideTokens ? "tokens" : "none"));
    QVERIFY(unchosen.isSet());
    const QStringList files = QDir::current().entryList(QDir::Files);

    m_window->checkBoxSaveData->setChecked(true);
    if (row == "warning")
        m_window->lineEditNTimes->setText("1000001");
    if (row == "save dialog" || row == "Done" || row == "close box") {
        QVERIFY(start());
        QVERIFY(awaitLastAnswer());
    }
    if (row == "Done")
        emit m_window->doneDataCollection(0.25, 0.0, 0);

    bool hasQuit = false;
    QTimer poll;
    connect(&poll, &QTimer::timeout, this, [&] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (hasQuit || dialog == nullptr)
            return;
        hasQuit = dialog->windowTitle() == dialogs.last();
        if (hasQuit)
            m_window->close();
        else
            dialog->reject();
    });
    poll.start(10);
    const ShownDialogs shown;
    QVERIFY(endsWithin([&] {
        if (row == "save dialog")
            click(subject("pushButtonChoice2"));
        else if (row == "Done")
            click(subject("pushButtonDone"));
        else if (row == "close box")
            pressCloseBox(m_window->subjectWindow);
        else
            click(m_window->pushButtonPractice);
    }));
    QVERIFY(hasQuit);
    QCOMPARE(shown.titles, dialogs);
    QCOMPARE(QDir::current().entryList(QDir::Files), files);
    QVERIFY(QDir(resultsFolder()).entryList(QDir::Files).isEmpty());
    QVERIFY(!m_window->isVisible());
    if (dialogs.first() == "Select a folder")
        QCOMPARE(m_window->nTokens, 0);
    m_window.reset();
}

// Catches a preparation that goes on with its dialog when the program is quit in its course, as it
// can be while the output is released.
void TestWindowEnds::quittingInsideAPreparationOpensNoDialog()
{
    m_window->refreshMainWindow();
    connect(m_window->comboBoxSesType, &QComboBox::currentIndexChanged, m_window.get(),
            [this] { m_window->close(); });
    const ShownDialogs shown;
    QVERIFY(endsWithin([this] { click(m_window->pushButtonExperiment); }));
    QCOMPARE(shown.titles, QStringList());
    QVERIFY(!m_window->isVisible());
}

// Catches a request to quit that is dropped by the event loop of a box that opens before it is met.
void TestWindowEnds::aWarningBehindQuittingDoesNotKeepTheProgram()
{
    m_window->checkBoxSaveData->setChecked(true);
    QVERIFY(start());
    QVERIFY(awaitLastAnswer());
    QVERIFY(writeFile(path("plain"), "no folder"));
    ModalAnswer answers;
    answers.choose(path("plain/x.txt")).when([this] { return m_window->close(); });
    QVERIFY(endsWithin([this] { click(subject("pushButtonChoice2")); }));
    QCOMPARE(answers.dialogs().size(), 1);
    QCOMPARE(contents(path("plain")), "no folder");
}

GUI_TEST_MAIN(TestWindowEnds)
#include "tst_windowends.moc"
