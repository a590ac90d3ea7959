// SPDX-License-Identifier: GPL-3.0-or-later
// A random walk through both windows. In every state any event may come: buttons and fields of both
// windows, also those that are disabled, dialogs and what happens while they are open, the timer,
// the end and the failure of the sound, responses out of turn, closing and quitting. After each
// step the windows, the data, the signals, the log and the files are compared with SessionModel.

#include "data/Journal.h"
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/OperatorWindow.h"
#include "support/WavFile.h"
#include "walk/SessionModel.h"

#include <QAudioSink>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMetaEnum>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QThread>
#include <QWindow>

#include <algorithm>
#include <array>
#include <iostream>
#include <random>

using namespace std::chrono_literals;

namespace {

/// The order counts: it is that of the table's rows.
enum class Event {
    Practice,
    Experiment,
    Go,
    Quit,
    SaveBox,
    FeedBackBox,
    AutoPlayBox,
    SubCode,
    SesNum,
    NTimes,
    CloseMainWindow,
    Ready,
    Mother,
    Stranger,
    Next,
    Done,
    CloseSubjectWindow,
    TimerFires,
    SoundEnds,
    OutputStops,
    OutputStalls,
    Code0,
    Code1,
    Code2,
    Code3,
    Code4,
    Code5,
    Code6,
    CodeMinus1,
};

constexpr int nEvents = static_cast<int>(Event::CodeMinus1) + 1;

constexpr std::array<const char *, nEvents> eventNames = {
    "Practice",      "Experiment",    "Go",        "Quit",        "save box",
    "feedback box",  "automatic box", "type code", "type number", "type times",
    "close main",    "I am ready",    "Mother",    "Stranger",    "Next",
    "Done",          "close subject", "timer",     "sound ends",  "output stops",
    "output stalls", "code 0",        "code 1",    "code 2",      "code 3",
    "code 4",        "code 5",        "code 6",    "code -1"};

/// The model's states, and those in which a dialog is open.
enum class Place {
    Idle,
    Prepared,
    BrokenOff,
    Waiting,
    Delay,
    Playing,
    OutputDead,
    Answering,
    Feedback,
    Finished,
    Locked,
    FolderDialog,
    EmptyFolderQuestion,
    TooManyWarning,
    ClosingQuestion,
    SaveDialog,
    SaveWarning,
    InvalidWarning,
};

constexpr int nPlaces = static_cast<int>(Place::InvalidWarning) + 1;

constexpr std::array<const char *, nPlaces> placeNames = {
    "idle",   "prepared",  "broken off", "waiting",  "delay",      "playing",
    "dead",   "answering", "feedback",   "finished", "locked",     "folder?",
    "empty?", "too many!", "closing?",   "save?",    "not saved!", "invalid!"};

/// No delay is so long: the walk alone lets the timer fire.
constexpr auto never = 3600s;

/// Deeper than this dialogs are answered at once.
constexpr qsizetype deepest = 3;

constexpr int longestWait = 20000; ///< ms in which a step must have been done

QStringList *messages = nullptr;

/// Keeps what the program logs, but neither how late a clock was, which depends on the machine, nor
/// what Qt says of a display, a sound output and a file name that are not there.
void keepMessage(QtMsgType, const QMessageLogContext &, const QString &text)
{
    const QStringList ofNoInterest = {"Trial ", "This plugin does not support",
                                      "No audio device detected", "QFSFileEngine::open"};
    const bool kept = std::none_of(ofNoInterest.begin(), ofNoInterest.end(),
                                   [&](const QString &start) { return text.startsWith(start); });
    if (messages != nullptr && kept)
        messages->append(text);
}

template<typename Value>
QString shown(const Value &value)
{
    QString text;
    QDebug(&text) << value;
    return text.trimmed();
}

QString shown(double value)
{
    return QString::number(value, 'g', 17);
}

template<typename Value>
bool same(const Value &one, const Value &other)
{
    return one == other;
}

/// Qt 6.4 compares an empty list through a null pointer, at which the sanitizer stops.
template<typename Element>
bool same(const QList<Element> &one, const QList<Element> &other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end());
}

/// The operator's window, with a sound server that does what the walk tells it.
class WalkedWindow : public OperatorWindow
{
public:
    using MainWindow::comboBoxSesType;
    using MainWindow::lineEditDuration;
    using MainWindow::lineEditFs;
    using MainWindow::reactionTimerStarts;

    StreamFollower::Reading reading;

protected:
    StreamFollower::Reading readStream() const override { return reading; }
};

} // namespace

class TestWalk : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void windowsFollowTheModel_data();
    void windowsFollowTheModel();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    using Step = std::function<void()>;
    using Meeting = std::function<void(QDialog *)>;

    // The generator.
    int below(int n) { return static_cast<int>(m_random() % static_cast<unsigned>(n)); }
    bool oneIn(int n) { return below(n) == 0; }
    Event chooseEvent();
    Event progress();

    // The course of the walk.
    void runProgram();
    void next();
    void step();
    void carryOut(Event event);
    bool free() const { return m_dialogs.isEmpty(); }
    bool over() const { return m_ended || !m_problem.isEmpty(); }
    Place place() const;
    void fail(const QString &problem);

    // The dialogs.
    void meet(QDialog *dialog);
    bool linger(QDialog *dialog, Place place);
    void expectFolderDialog();
    void askAboutEmptyFolder();
    void warnOfTooMany();
    void expectClosingQuestion();
    void expectSaveDialog();
    void saveFiles(std::size_t first, const QString &chosen, const std::array<bool, 3> &fails);
    void expectInvalidWarning();
    template<typename Dialog>
    Dialog *as(QDialog *dialog, const QString &title, const QWidget *parent);
    QMessageBox *asBox(QDialog *dialog, const QString &title, const QWidget *parent,
                       const QString &text, QMessageBox::StandardButtons buttons);
    void answer(QMessageBox *box, QMessageBox::StandardButton button);
    void confirm(QFileDialog *dialog, const QString &path);
    void confirm(QFileDialog *dialog);

    // The events.
    void press(QWidget *widget);
    void close(QWidget *window);
    void type(QLineEdit *field, const QStringList &texts, const QString &shownText,
              void (SessionModel::*typed)(const QString &));
    void toggle(QCheckBox *box, bool usable, void (SessionModel::*toggled)());
    void prepare(QPushButton *button, SessionType type, bool usable);
    void pressGo();
    void quit(const Step &action);
    void pressSubject(const char *name, bool usable, int code);
    void closeSubject(const Step &action);
    void respondOutOfTurn(int code);
    void respond(int code, const Step &action, const Step &model);
    void settle();
    double reactionTime();
    void fireTimer();
    void endSound();
    void stopOutput();
    void stallOutput();
    bool subjectCanUse(bool visible, bool enabled) const;
    QPushButton *subjectButton(const char *name) const;

    // The comparison.
    template<typename Value>
    void compare(const char *what, const Value &actual, const Value &expected);
    template<typename Value>
    void compareAt(const char *what, qsizetype i, const Value &actual, const Value &expected);
    void compareAll();
    void compareMainWindow();
    void compareData();
    void compareSession();
    void compareSubjectWindow();
    void compareFiles();
    void checkNoDeadEnd();
    void checkFilesLeft();
    void checkJournals();
    void report() const;

    QString at(const QString &path) const { return m_folder->filePath(path); }

    std::mt19937 m_random;
    quint32 m_seed = 0;
    int m_steps = 0;
    int m_step = 0;
    int m_programs = 0;
    int m_sessions = 0; ///< "Go" pressed
    int m_finished = 0; ///< sessions answered to the end
    int m_journals = 0; ///< compared
    int m_saved = 0;    ///< result files compared
    std::array<std::array<int, nPlaces>, nEvents> m_met{};
    QStringList m_history;
    QString m_problem;

    std::unique_ptr<QTemporaryDir> m_folder;
    QHash<QString, QList<TokenFile>> m_tokens; ///< by folder
    QStringList m_folders;
    QMap<QString, QByteArray> m_files; ///< those that the program must have written
    QStringList m_unchecked;           ///< of those, the ones not yet compared
    int m_nameCount = 0;
    std::unique_ptr<WalkedWindow> m_window;
    std::unique_ptr<SessionModel> m_model;
    QStringList m_sent;
    QStringList m_logged;
    bool m_ended = false;       ///< the program has been quit
    bool m_closing = false;     ///< the question whether to close is open
    bool m_confirmed = false;   ///< it was answered by "Yes"
    bool m_wild = false;        ///< whether responses out of turn come in this session
    QList<QDialog *> m_dialogs; ///< open, the last in front
    QList<Place> m_places;      ///< what they are
    Meeting m_expected;         ///< the dialog that must come next
    Step m_settle;              ///< what the model still has to hear of the present event
    QElapsedTimer m_clock;
    qint64 m_pressed = 0; ///< when the present answer was given, in ns
    qint64 m_endFrom = 0; ///< between these two
    qint64 m_endTo = 0;   ///< the last sound has ended
    QElapsedTimer m_sinceStep;
};

void TestWalk::initTestCase()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    const QList<TokenFile> tokens = {
        {.name = "a001.wav", .nPoints = 48, .level = 0.125},
        {.name = "B002.wav", .nPoints = 52, .level = -0.25},
        {.name = "cAB_001.WAV", .nPoints = 7, .level = 0.0625},
        {.name = "dS7.wav", .nPoints = 50, .rate = 44100, .level = 0.5},
        {.name = "e00a.wav", .nPoints = 1, .level = -0.5},
        {.name = "f1 x.wav", .nPoints = 96, .rate = 96000, .level = 0.75},
    };
    TokenFile broken = tokens.at(1);
    broken.readable = false;
    m_tokens[at("three")] = tokens.first(3);
    m_tokens[at("five")] = tokens.last(5);
    m_tokens[at("six")] = tokens;
    m_tokens[at("broken")] = {tokens.at(0), broken, tokens.at(2), tokens.at(5)};
    m_folders = m_tokens.keys();
    m_folders.sort();
    for (const QString &folder : std::as_const(m_folders)) {
        QVERIFY(QDir().mkpath(folder));
        for (const TokenFile &token : m_tokens.value(folder)) {
            const auto sample = static_cast<std::uint32_t>(static_cast<int>(token.level * 32768));
            QByteArray data;
            for (int i = 0; i < token.nPoints; ++i)
                data += WavBytes::little(sample, 2);
            const WavBytes wav{.sampleRate = static_cast<std::uint32_t>(token.rate), .data = data};
            QVERIFY(writeFile(folder + '/' + token.name,
                              token.readable ? wav.bytes() : QByteArray("no sound at all")));
        }
    }
    for (const char *name : {"empty/x.wav", "here"})
        QVERIFY(QDir().mkpath(at(name)));
    QVERIFY(writeFile(at("empty/x.wave"), "not a token"));
    QVERIFY(QDir::setCurrent(at("here")));
    m_clock.start();
}

void TestWalk::windowsFollowTheModel_data()
{
    QTest::addColumn<quint32>("seed");
    QTest::addColumn<int>("steps");
    const int steps = qEnvironmentVariableIntValue("OSTRINE_WALK_STEPS");
    const QString seed = qEnvironmentVariable("OSTRINE_WALK_SEED");
    const quint32 fresh = seed.isEmpty() ? QRandomGenerator::global()->generate() : seed.toUInt();
    if (steps == 0)
        QTest::newRow("seed 1") << quint32{1} << 5000;
    QTest::addRow("seed %u", fresh) << fresh << (steps > 0 ? steps : 5000);
}

// Catches whatever a window shows, enables, sends, stores or writes otherwise than it must in the
// state that was reached, by whatever way; a window that is left over, and a state from which
// nobody can go on.
void TestWalk::windowsFollowTheModel()
{
    QFETCH(const quint32, seed);
    QFETCH(const int, steps);
    m_random.seed(seed);
    m_seed = seed;
    m_steps = steps;
    m_step = m_programs = m_sessions = m_finished = m_journals = m_saved = m_nameCount = 0;
    m_met = {};
    m_history.clear();
    m_problem.clear();

    messages = &m_logged;
    const QtMessageHandler before = qInstallMessageHandler(keepMessage);
    std::streambuf *const errors = std::cerr.rdbuf(nullptr); // of the file that is no sound
    qApp->installEventFilter(this);
    QApplication::setQuitOnLastWindowClosed(true);
    const auto restore = qScopeGuard([&] {
        QApplication::setQuitOnLastWindowClosed(false);
        qApp->removeEventFilter(this);
        std::cerr.rdbuf(errors);
        qInstallMessageHandler(before);
        messages = nullptr;
    });

    while (m_step < m_steps && m_problem.isEmpty())
        runProgram();
    qInstallMessageHandler(before);
    report();
    QVERIFY2(m_problem.isEmpty(), qPrintable(QString("seed %1, step %2: %3\nThe last events:\n%4")
                                                 .arg(m_seed)
                                                 .arg(m_step)
                                                 .arg(m_problem, m_history.join('\n'))));
}

/// One run of the program, from its start until it is quit.
void TestWalk::runProgram()
{
    ++m_programs;
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    for (const QString &folder : {at("results"), at("here"), desktop, journalFolder()}) {
        QDir(folder).removeRecursively();
        QDir().mkpath(folder);
    }
    QDir::setCurrent(at("here"));
    writeFile(at("results/blocked"), "a file, not a folder");
    m_files = {{at("results/blocked"), "a file, not a folder"}};
    m_unchecked.clear();

    const QString silentInterval = oneIn(2) ? "60000.000" : "600000.125";
    m_ended = false;
    m_wild = oneIn(3);
    m_model = std::make_unique<SessionModel>(desktop, silentInterval);
    m_window = std::make_unique<WalkedWindow>();
    m_window->lineEditSi->setText(silentInterval);
    connect(m_window.get(), &MainWindow::soundPlaying, this,
            [this](int index) { m_sent.append(QString("soundPlaying %1").arg(index)); });
    connect(m_window.get(), &MainWindow::doneDataCollection, this,
            [this](qreal threshold, qreal reactionTime, qint32 mainParameterIndex) {
                m_sent.append(QString("doneDataCollection %1 %2 %3")
                                  .arg(threshold, 0, 'g', 17)
                                  .arg(reactionTime)
                                  .arg(mainParameterIndex));
            });
    connect(m_window.get(), &MainWindow::deliverFeedBackStatus, this,
            [this](bool on) { m_sent.append(QString("deliverFeedBackStatus %1").arg(on)); });
    connect(m_window.get(), &MainWindow::deliverAutoPlayStatus, this,
            [this](bool on) { m_sent.append(QString("deliverAutoPlayStatus %1").arg(on)); });
    connect(m_window.get(), &MainWindow::deliverSubCode, this,
            [this](const QString &code) { m_sent.append("deliverSubCode " + code); });
    connect(m_window.get(), &MainWindow::deliverWavFileName, this,
            [this](const QString &name) { m_sent.append("deliverWavFileName " + name); });
    m_window->setUpdatesEnabled(false); // to draw the charts would take most of the time
    m_window->show();
    m_sent.clear();
    m_logged.clear();
    m_history.append("a new program");

    QTimer watchdog;
    connect(&watchdog, &QTimer::timeout, this, [this] {
        if (m_sinceStep.elapsed() < longestWait)
            return;
        fail(m_ended ? "the program has not ended" : "the step does not end");
        for (QDialog *dialog : std::as_const(m_dialogs))
            dialog->reject();
        QCoreApplication::exit(EXIT_FAILURE);
    });
    watchdog.start(1s);
    m_sinceStep.start();
    QTimer::singleShot(0, this, &TestWalk::next);
    QApplication::exec();

    if (m_problem.isEmpty() && !m_ended && m_step < m_steps)
        fail("the program has ended by itself");
    m_window.reset();
    QCoreApplication::processEvents();
    if (m_ended)
        compare("log at the end", m_logged, QStringList());
    checkFilesLeft();
    checkJournals();
    m_logged.clear();
    m_dialogs.clear();
    m_places.clear();
    m_expected = nullptr;
    m_settle = nullptr;
    m_closing = false;
}

void TestWalk::next()
{
    step();
    if (!m_problem.isEmpty() || (m_step >= m_steps && !m_ended))
        QCoreApplication::exit();
    else if (!m_ended)
        QTimer::singleShot(0, this, &TestWalk::next);
}

void TestWalk::step()
{
    const Event event = chooseEvent();
    const auto row = static_cast<std::size_t>(event);
    const auto column = static_cast<std::size_t>(place());
    ++m_step;
    ++m_met[row][column];
    m_sinceStep.start();
    m_history.append(
        QString("%1  %2: %3").arg(m_step).arg(placeNames[column]).arg(eventNames[row]));
    while (m_history.size() > 20)
        m_history.removeFirst();

    carryOut(event);
    QCoreApplication::processEvents();
    if (over())
        return;
    if (m_expected)
        fail("a dialog that had to open has not");
    settle();
    compareAll();
}

Place TestWalk::place() const
{
    return m_places.isEmpty() ? static_cast<Place>(m_model->state()) : m_places.last();
}

void TestWalk::fail(const QString &problem)
{
    if (m_problem.isEmpty())
        m_problem = problem;
}

/// Half of the time what leads on, otherwise anything.
Event TestWalk::chooseEvent()
{
    if (free() && oneIn(2))
        return progress();
    for (;;) {
        const auto event = static_cast<Event>(below(nEvents));
        const bool ends = event == Event::Quit || event == Event::CloseMainWindow;
        const bool isCode = event >= Event::Code0;
        const bool preparing = place() == Place::FolderDialog ||
                               place() == Place::EmptyFolderQuestion ||
                               place() == Place::TooManyWarning;
        // A box that belongs to no window keeps the program alive, and can be answered only when it
        // is in front.
        if (event == Event::CloseMainWindow &&
            m_places.first(std::max<qsizetype>(m_places.size() - 1, 0))
                .contains(Place::InvalidWarning))
            continue;
        // While a session is prepared there is no subject who could respond.
        if ((!ends || oneIn(8)) && (!isCode || (m_wild && !preparing)))
            return event;
    }
}

Event TestWalk::progress()
{
    switch (m_model->state()) {
    case SessionModel::State::Idle:
    case SessionModel::State::BrokenOff:
        if (oneIn(3))
            return oneIn(3) ? Event::SubCode : Event::NTimes;
        return m_model->experimentEnabled && oneIn(2) ? Event::Experiment : Event::Practice;
    case SessionModel::State::Prepared:
        if (oneIn(4))
            return oneIn(3) ? Event::FeedBackBox : Event::AutoPlayBox;
        return Event::Go;
    case SessionModel::State::Waiting:
        return Event::Ready;
    case SessionModel::State::Delay:
        return Event::TimerFires;
    case SessionModel::State::Playing:
        return Event::SoundEnds;
    case SessionModel::State::Answering:
        return oneIn(2) ? Event::Mother : Event::Stranger;
    case SessionModel::State::Feedback:
        return Event::Next;
    case SessionModel::State::Finished:
        return Event::Done;
    case SessionModel::State::OutputDead:
    case SessionModel::State::Locked:
        break;
    }
    return Event::CloseSubjectWindow;
}

void TestWalk::carryOut(Event event)
{
    const bool operatorCan = free() && m_model->mainEnabled;
    const SessionModel::Subject &subject = m_model->subject;
    switch (event) {
    case Event::Practice:
        return prepare(m_window->pushButtonPractice, PracticeSession, operatorCan);
    case Event::Experiment:
        return prepare(m_window->pushButtonExperiment, ExperimentSession,
                       operatorCan && m_model->experimentEnabled);
    case Event::Go:
        return pressGo();
    case Event::Quit:
        if (!operatorCan)
            return press(m_window->pushButtonQuit);
        return quit([this] { press(m_window->pushButtonQuit); });
    case Event::SaveBox:
        return toggle(m_window->checkBoxSaveData, operatorCan, &SessionModel::toggleSaveData);
    case Event::FeedBackBox:
        return toggle(m_window->checkBoxFeedBack, operatorCan, &SessionModel::toggleFeedBack);
    case Event::AutoPlayBox:
        return toggle(m_window->checkBoxAutoPlay, operatorCan && m_model->feedBackBox,
                      &SessionModel::toggleAutoPlay);
    case Event::SubCode:
        return type(m_window->lineEditSubCode, {"CHD001", "AB", "1", "", "S7", "x00A", "p00a"},
                    m_model->subCodeText, &SessionModel::typeSubCode);
    case Event::SesNum:
        return type(m_window->lineEditSesNum, {"1", "12", "1234", "x", "", "-5", "2147483648"},
                    m_model->sesNumText, &SessionModel::typeSesNum);
    case Event::NTimes:
        return type(m_window->lineEditNTimes,
                    {"1", "1", "1", "2", "2", "3", "0", "x", "-1", "400000"}, m_model->nTimesText,
                    &SessionModel::typeNTimes);
    case Event::CloseMainWindow:
        return quit([this] { close(m_window.get()); });
    case Event::Ready:
        return pressSubject("pushButtonIAmReady", subjectCanUse(subject.readyVisible, true), 0);
    case Event::Mother:
        return pressSubject("pushButtonChoice2",
                            subjectCanUse(subject.choicesVisible, subject.choicesEnabled), 2);
    case Event::Stranger:
        return pressSubject("pushButtonChoice4",
                            subjectCanUse(subject.choicesVisible, subject.choicesEnabled), 4);
    case Event::Next:
        return pressSubject("pushButtonNext",
                            subjectCanUse(subject.nextVisible, subject.nextEnabled), 5);
    case Event::Done:
        if (subjectCanUse(subject.doneVisible, true))
            return closeSubject([this] { press(subjectButton("pushButtonDone")); });
        if (subject.visible)
            press(subjectButton("pushButtonDone"));
        return;
    case Event::CloseSubjectWindow:
        return closeSubject([this] { close(m_window->subjectWindow); });
    case Event::TimerFires:
        return fireTimer();
    case Event::SoundEnds:
        return endSound();
    case Event::OutputStops:
        return stopOutput();
    case Event::OutputStalls:
        return stallOutput();
    case Event::Code0:
    case Event::Code1:
    case Event::Code2:
    case Event::Code3:
    case Event::Code4:
    case Event::Code5:
    case Event::Code6:
        return respondOutOfTurn(static_cast<int>(event) - static_cast<int>(Event::Code0));
    case Event::CodeMinus1:
        return respondOutOfTurn(-1);
    }
}

bool TestWalk::subjectCanUse(bool visible, bool enabled) const
{
    return free() && m_model->subject.visible && m_model->subject.enabled && visible && enabled;
}

QPushButton *TestWalk::subjectButton(const char *name) const
{
    return m_window->subjectWindow->findChild<QPushButton *>(name);
}

/// Presses @p widget as a user would, by the mouse or the space bar; what is disabled, hidden or
/// behind a dialog as well.
void TestWalk::press(QWidget *widget)
{
    QWidget *top = widget->window();
    if (!top->isVisible())
        return;
    QWindow *window = top->windowHandle();
    if (free() && widget->isVisible() && widget->isEnabled() && oneIn(4)) {
        widget->setFocus();
        if (top->focusWidget() == widget) {
            QTest::keyClick(window, Qt::Key_Space);
            return;
        }
    }
    QPoint place(1, 1); // where nothing is
    if (widget->isVisible()) {
        const QPoint inside = qobject_cast<QCheckBox *>(widget) != nullptr
                                  ? QPoint(8, widget->height() / 2)
                                  : widget->rect().center();
        place = widget->mapTo(top, inside);
    }
    QTest::mouseClick(window, Qt::LeftButton, {}, place);
}

/// Closes @p window as its close box does, or as the program itself may. Unlike a press, both get
/// through while a dialog is open.
void TestWalk::close(QWidget *window)
{
    if (oneIn(2))
        window->windowHandle()->close();
    else
        window->close();
}

void TestWalk::type(QLineEdit *field, const QStringList &texts, const QString &shownText,
                    void (SessionModel::*typed)(const QString &))
{
    QWindow *window = m_window->windowHandle();
    if (!free() || !m_model->mainEnabled) {
        press(field);
        QTest::keyClick(window, Qt::Key_7);
        return;
    }
    QString text = shownText;
    while (text == shownText)
        text = texts.at(below(static_cast<int>(texts.size())));
    field->setFocus();
    field->selectAll();
    if (text.isEmpty())
        QTest::keyClick(window, Qt::Key_Delete);
    for (const QChar character : std::as_const(text))
        QTest::keyClick(window, character.toLatin1());
    ((*m_model).*typed)(text);
}

void TestWalk::toggle(QCheckBox *box, bool usable, void (SessionModel::*toggled)())
{
    press(box);
    if (usable)
        ((*m_model).*toggled)();
}

void TestWalk::prepare(QPushButton *button, SessionType type, bool usable)
{
    if (usable) {
        m_model->beginPreparation(type);
        expectFolderDialog();
    }
    press(button);
    if (!usable || over())
        return;
    const QString problem = m_model->orderProblem(m_window->randomSequence);
    if (!problem.isEmpty())
        return fail("order: " + problem);
    m_model->endPreparation(m_window->randomSequence);
}

void TestWalk::pressGo()
{
    const bool usable = free() && m_model->mainEnabled && m_model->goEnabled;
    const SubjectWindow *before = m_window->subjectWindow;
    press(m_window->pushButtonGo);
    if (!usable)
        return;
    SubjectWindow *subject = m_window->subjectWindow;
    if (subject == before)
        return fail("\"Go\" has opened no new window");
    subject->setUpdatesEnabled(false);
    connect(subject, &SubjectWindow::subjectResponded, this,
            [this](int code) { m_sent.append(QString("subjectResponded %1").arg(code)); });
    connect(subject, &SubjectWindow::subjectWindowClosed, this,
            [this] { m_sent.append("subjectWindowClosed"); });
    ++m_sessions;
    m_wild = oneIn(3);
    m_model->go();
}

void TestWalk::quit(const Step &action)
{
    m_ended = true;
    action();
    if (m_window->isVisible())
        fail("the operator's window does not close");
}

void TestWalk::pressSubject(const char *name, bool usable, int code)
{
    if (!m_model->subject.visible)
        return;
    QPushButton *button = subjectButton(name);
    if (!usable)
        return press(button);
    if (code == 2 || code == 4) {
        if (oneIn(2))
            QThread::msleep(static_cast<unsigned long>(1 + below(3))); // the subject thinks
        m_pressed = m_clock.nsecsElapsed();
    }
    respond(
        code, [=, this] { press(button); },
        [=, this] {
            if (code == 0)
                m_model->pressReady();
            else if (code == 5)
                m_model->pressNext();
            else
                m_model->pressAnswer(code == 2, reactionTime());
        });
}

/// A response that no button sends, or not now.
void TestWalk::respondOutOfTurn(int code)
{
    m_pressed = m_clock.nsecsElapsed();
    respond(
        code,
        [=, this] {
            if (m_window->subjectWindow != nullptr)
                emit m_window->subjectWindow->subjectResponded(code);
            else
                m_window->updateMainwindow(code);
        },
        [=, this] { m_model->respond(code, code == 2 || code == 4 ? reactionTime() : 0); });
}

/// Carries out @p action, by which the response @p code comes; @p model tells it the model.
void TestWalk::respond(int code, const Step &action, const Step &model)
{
    switch (m_model->after(code)) {
    case SessionModel::After::Nothing:
        break;
    case SessionModel::After::Save:
        expectSaveDialog();
        break;
    case SessionModel::After::Warning:
        expectInvalidWarning();
        break;
    }
    const bool heard = m_model->subject.exists;
    m_settle = model;
    action();
    if (over())
        return;
    settle();
    if (heard)
        m_model->sent.append(QString("subjectResponded %1").arg(code));
}

/// Tells the model what the present event has done up to now: when it has opened a dialog, or is
/// over.
void TestWalk::settle()
{
    if (m_settle)
        std::exchange(m_settle, nullptr)();
}

/// The reaction time that the program has stored for the answer just given, which must be the time
/// from the end of the last sound.
double TestWalk::reactionTime()
{
    if (!m_model->scores())
        return 0;
    const double rt = m_window->data.entries.value(m_model->trialIndex - 1).rt;
    const qint64 shortest = (m_pressed - m_endTo) / 1'000'000;
    const qint64 longest = (m_clock.nsecsElapsed() - m_endFrom) / 1'000'000;
    const bool right = rt >= static_cast<double>(shortest) && rt <= static_cast<double>(longest);
    if (m_model->clockStarts > 0 && !right)
        fail(QString("reaction time %1 ms, not %2 .. %3").arg(rt).arg(shortest).arg(longest));
    return rt;
}

void TestWalk::closeSubject(const Step &action)
{
    if (!m_model->subject.visible)
        return;
    if (m_closing) // the question is open already
        return action();
    m_closing = true;
    m_confirmed = false;
    expectClosingQuestion();
    action();
    m_closing = false;
    if (!over() && m_confirmed)
        m_model->confirmClosing();
}

void TestWalk::fireTimer()
{
    m_window->reading = {};
    if (m_window->presentationTimer.isActive()) {
        m_window->presentationTimer.start(0);
        while (m_window->presentationTimer.isActive())
            QCoreApplication::processEvents();
    }
    m_model->timerFires();
}

/// Lets the sound server take the sound in such steps that it has been heard at once.
void TestWalk::endSound()
{
    constexpr qint64 block = 1024;
    constexpr qint64 period = 576;
    const qint64 from = m_clock.nsecsElapsed();
    const int clockStarts = m_model->clockStarts;
    for (const qint64 taken : {m_model->nPoints > 0 ? qint64{1} : block + period, block + period}) {
        m_window->reading.taken = taken;
        m_window->reading.played = taken;
        m_window->streamFollower.look();
    }
    m_model->soundEnds();
    if (m_model->clockStarts > clockStarts) {
        m_endFrom = from;
        m_endTo = m_clock.nsecsElapsed();
    }
}

void TestWalk::stopOutput()
{
    m_window->reading.stopped = true;
    m_window->handleAudioStateChanged(QAudio::StoppedState);
    m_model->soundFails();
}

void TestWalk::stallOutput()
{
    if (m_window->audioSink == nullptr)
        return;
    emit m_window->streamFollower.stalled();
    m_model->logged.append("Audio stopped unexpectedly");
}

/// Dialogs run an event loop of their own: they are met in it.
bool TestWalk::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::Show) {
        if (auto *dialog = qobject_cast<QDialog *>(object))
            QTimer::singleShot(0, dialog, [this, dialog] { meet(dialog); });
    }
    return QObject::eventFilter(object, event);
}

void TestWalk::meet(QDialog *dialog)
{
    if (over() || !m_expected) {
        fail(QString("the window \"%1\" has opened%2")
                 .arg(dialog->windowTitle(), m_ended ? " although the program was quit" : ""));
        dialog->reject();
        return;
    }
    std::exchange(m_expected, nullptr)(dialog);
    if (!m_problem.isEmpty())
        dialog->reject();
}

/// Lets other things happen while @p dialog is open; false when it is not to be answered any more.
bool TestWalk::linger(QDialog *dialog, Place place)
{
    settle();
    m_dialogs.append(dialog);
    m_places.append(place);
    compareAll();
    const int steps = m_dialogs.size() <= deepest ? below(6) : 0;
    for (int i = 0; i < steps && m_step < m_steps && !over(); ++i)
        step();
    m_dialogs.removeLast();
    m_places.removeLast();
    return !over();
}

template<typename Dialog>
Dialog *TestWalk::as(QDialog *dialog, const QString &title, const QWidget *parent)
{
    auto *wanted = qobject_cast<Dialog *>(dialog);
    if (wanted == nullptr || dialog->windowTitle() != title || dialog->parentWidget() != parent) {
        fail(QString("the window \"%1\" has opened in place of \"%2\", or belongs to another one")
                 .arg(dialog->windowTitle(), title));
        return nullptr;
    }
    return wanted;
}

QMessageBox *TestWalk::asBox(QDialog *dialog, const QString &title, const QWidget *parent,
                             const QString &text, QMessageBox::StandardButtons buttons)
{
    auto *box = as<QMessageBox>(dialog, title, parent);
    if (box != nullptr) {
        compare("text of the box", box->text(), text);
        compare("buttons of the box", box->standardButtons().toInt(),
                QMessageBox::StandardButtons(buttons).toInt());
    }
    return box;
}

void TestWalk::answer(QMessageBox *box, QMessageBox::StandardButton button)
{
    const QAbstractButton *pressed = box->button(button);
    QTest::mouseClick(box->windowHandle(), Qt::LeftButton, {},
                      pressed->mapTo(box, pressed->rect().center()));
    if (box->isVisible())
        fail("a question cannot be answered");
}

/// Types @p path into @p dialog and confirms.
void TestWalk::confirm(QFileDialog *dialog, const QString &path)
{
    dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
    confirm(dialog);
}

void TestWalk::confirm(QFileDialog *dialog)
{
    const bool saves = dialog->acceptMode() == QFileDialog::AcceptSave;
    QPushButton *button = dialog->findChild<QDialogButtonBox *>("buttonBox")
                              ->button(saves ? QDialogButtonBox::Save : QDialogButtonBox::Open);
    if (!QTest::qWaitFor([button] { return button->isEnabled(); }))
        return fail("the file dialog cannot be confirmed");
    button->click();
    if (dialog->isVisible())
        fail("the file dialog does not take its answer");
}

void TestWalk::expectFolderDialog()
{
    m_expected = [this](QDialog *opened) {
        auto *dialog = as<QFileDialog>(opened, "Select a folder", m_window.get());
        if (dialog == nullptr || !linger(dialog, Place::FolderDialog))
            return;
        const int choice = below(8);
        QString path; // of a cancelled dialog
        if (choice == 1)
            path = at("empty");
        else if (choice > 1)
            path = m_folders.at(below(static_cast<int>(m_folders.size())));
        m_model->chooseFolder(path, m_tokens.value(path));
        if (choice < 2)
            askAboutEmptyFolder();
        else if (m_model->tooManyPresentations())
            warnOfTooMany();
        if (choice == 0)
            dialog->reject();
        else
            confirm(dialog, path);
    };
}

void TestWalk::askAboutEmptyFolder()
{
    m_expected = [this](QDialog *dialog) {
        QMessageBox *box =
            asBox(dialog, "Question", m_window.get(),
                  "This folder contains no .wav files.\nDo you want to select another folder?",
                  QMessageBox::Yes | QMessageBox::No);
        if (box == nullptr || !linger(box, Place::EmptyFolderQuestion))
            return;
        const bool again = oneIn(2);
        if (again)
            expectFolderDialog();
        answer(box, again ? QMessageBox::Yes : QMessageBox::No);
    };
}

void TestWalk::warnOfTooMany()
{
    m_expected = [this](QDialog *dialog) {
        QMessageBox *box = asBox(dialog, "Warning", m_window.get(),
                                 QString("%1 tokens, 400000 times each, are more than the 1000000 "
                                         "presentations that a session can have.")
                                     .arg(m_model->data.records.size()),
                                 QMessageBox::Ok);
        if (box != nullptr && linger(box, Place::TooManyWarning))
            answer(box, QMessageBox::Ok);
    };
}

void TestWalk::expectClosingQuestion()
{
    m_expected = [this](QDialog *dialog) {
        QMessageBox *box = asBox(dialog, "Confirmation MessageBox", m_window->subjectWindow,
                                 "Do you want to close this window?\n",
                                 QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        if (box == nullptr || !linger(box, Place::ClosingQuestion))
            return;
        const int choice = below(6);
        m_confirmed = choice > 2;
        if (choice == 0)
            QTest::keyClick(box->windowHandle(), Qt::Key_Escape);
        else
            answer(box, choice == 1   ? QMessageBox::No
                        : choice == 2 ? QMessageBox::Cancel
                                      : QMessageBox::Yes);
    };
}

void TestWalk::expectInvalidWarning()
{
    m_expected = [this](QDialog *dialog) {
        QMessageBox *box = asBox(dialog, "Warning", nullptr, "Invalid response", QMessageBox::Ok);
        if (box != nullptr && (linger(box, Place::InvalidWarning) || m_ended))
            answer(box, QMessageBox::Ok);
    };
}

void TestWalk::expectSaveDialog()
{
    m_expected = [this](QDialog *opened) {
        auto *dialog = as<QFileDialog>(opened, "Save a file", m_window.get());
        if (dialog == nullptr)
            return;
        settle();
        const QString folder = m_model->data.outputFilePath;
        const QString proposed = m_model->data.outputFileName;
        const bool isFolder = folder == m_model->data.desktopPath + '/' + m_model->subCodeText;
        if (isFolder)
            compare("proposed name", dialog->findChild<QLineEdit *>("fileNameEdit")->text(),
                    proposed);
        if (!linger(dialog, Place::SaveDialog))
            return;
        ++m_finished;
        QString name = oneIn(5) ? "again" : QString("r.%1").arg(++m_nameCount);
        name += oneIn(4) ? "" : ".txt";
        QString chosen = at("results/" + name);
        std::array<bool, 3> fails{};
        switch (below(8)) {
        case 0: // what is proposed
            if (isFolder)
                chosen = QDir::cleanPath(folder + '/' + proposed);
            break;
        case 1: // cancelled
            chosen.clear();
            fails = {true, false, false};
            break;
        case 2: // a folder that cannot be made
            chosen = at("results/blocked/" + name);
            fails = {true, true, true};
            break;
        case 3: // folders that have the names of two files
            chosen = at(QString("results/taken%1").arg(++m_nameCount));
            QDir().mkpath(chosen + "_entries.");
            QDir().mkpath(chosen + "_parameters.");
            fails = {false, true, true};
            break;
        default:
            break;
        }
        m_model->saveAs(chosen);
        saveFiles(0, chosen, fails);
        if (chosen.isEmpty())
            dialog->reject();
        else
            confirm(dialog, chosen);
    };
}

/// The result files from the one numbered @p first on are written, up to one that cannot be and of
/// which a warning tells.
void TestWalk::saveFiles(std::size_t first, const QString &chosen, const std::array<bool, 3> &fails)
{
    const QString folder = chosen.isEmpty() ? at("here") : chosen.section('/', 0, -2);
    const QString name = chosen.section('/', -1);
    const qsizetype dot = name.lastIndexOf('.');
    const QString base = dot < 0 ? name : name.first(dot);
    const QString suffix = dot < 0 ? "" : name.sliced(dot + 1);
    const std::array<QString, 3> names = {name, base + "_entries." + suffix,
                                          base + "_parameters." + suffix};
    for (std::size_t file = first; file < 3; ++file) {
        if (file == 1)
            m_model->data.outputFileName_entries = names[1];
        else if (file == 2)
            m_model->data.outputFileName_parameters = names[2];
        if (fails[file]) {
            const QString text = "could not open file for writing \r\n" +
                                 m_model->data.outputFilePath +
                                 (file == 0 ? m_model->data.outputFileName : names[file]);
            m_expected = [=, this](QDialog *dialog) {
                QMessageBox *box = asBox(dialog, "Warning", m_window.get(), text, QMessageBox::Ok);
                if (box == nullptr)
                    return;
                const bool answerable = linger(box, Place::SaveWarning);
                saveFiles(file + 1, chosen, fails); // the name was confirmed before any quitting
                if (answerable)
                    answer(box, QMessageBox::Ok);
            };
            return;
        }
        const QString path = QDir::cleanPath(folder + '/' + names[file]);
        m_files[path] = file == 0   ? m_model->recordsFile()
                        : file == 1 ? m_model->entriesFile()
                                    : m_model->parametersFile();
        m_unchecked.append(path);
    }
}

template<typename Value>
void TestWalk::compare(const char *what, const Value &actual, const Value &expected)
{
    if (!same(actual, expected))
        fail(QString("%1: %2, expected %3").arg(what, shown(actual), shown(expected)));
}

/// The same of an element of a list.
template<typename Value>
void TestWalk::compareAt(const char *what, qsizetype i, const Value &actual, const Value &expected)
{
    if (!same(actual, expected))
        fail(
            QString("%1 %2: %3, expected %4").arg(what).arg(i).arg(shown(actual), shown(expected)));
}

void TestWalk::compareAll()
{
    compareMainWindow();
    compareData();
    compareSession();
    if (m_model->subject.visible)
        compareSubjectWindow();
    if (free())
        compareFiles();
    compare("signals", std::exchange(m_sent, {}), std::exchange(m_model->sent, {}));
    compare("log", std::exchange(m_logged, {}), std::exchange(m_model->logged, {}));
    checkNoDeadEnd();
}

void TestWalk::compareMainWindow()
{
    const WalkedWindow &window = *m_window;
    const SessionModel &model = *m_model;
    compare("main window enabled", window.isEnabled(), model.mainEnabled);
    struct Control
    {
        const char *name;
        const QWidget *widget;
        bool enabled;
    };
    const std::array<Control, 18> controls = {{
        {"Practice", window.pushButtonPractice, true},
        {"Experiment", window.pushButtonExperiment, model.experimentEnabled},
        {"Go", window.pushButtonGo, model.goEnabled},
        {"Quit", window.pushButtonQuit, true},
        {"save box", window.checkBoxSaveData, true},
        {"feedback box", window.checkBoxFeedBack, true},
        {"automatic box", window.checkBoxAutoPlay, model.feedBackBox},
        {"subject code", window.lineEditSubCode, true},
        {"session number", window.lineEditSesNum, true},
        {"times", window.lineEditNTimes, true},
        {"rate", window.lineEditFs, false},
        {"duration", window.lineEditDuration, false},
        {"silent interval", window.lineEditSi, false},
        {"sound folder", window.lineEditWavFilePath, false},
        {"sound file", window.lineEditWavFileName, false},
        {"output folder", window.lineEditOutputFilePath, false},
        {"output file", window.lineEditOutputFileName, false},
        {"status", window.lineEditStatus, false},
    }};
    for (const Control &control : controls) {
        if (!control.widget->isVisible())
            fail(QString("%1 is not visible").arg(control.name));
        if (control.widget->isEnabledTo(m_window.get()) != control.enabled)
            fail(QString("%1 is %2").arg(control.name, control.enabled ? "disabled" : "enabled"));
    }
    compare("hidden selector", window.comboBoxSesType->isVisible(), false);
    compare("session type", window.comboBoxSesType->currentIndex(), model.sesType);
    compare("save box", window.checkBoxSaveData->isChecked(), model.saveBox);
    compare("feedback box", window.checkBoxFeedBack->isChecked(), model.feedBackBox);
    compare("automatic box", window.checkBoxAutoPlay->isChecked(), model.autoPlayBox);
    compare("subject code", window.lineEditSubCode->text(), model.subCodeText);
    compare("session number", window.lineEditSesNum->text(), model.sesNumText);
    compare("times", window.lineEditNTimes->text(), model.nTimesText);
    compare("rate", window.lineEditFs->text(), QString("48000"));
    compare("duration", window.lineEditDuration->text(), model.durationText);
    compare("silent interval", window.lineEditSi->text(), model.siText);
    compare("sound folder", window.lineEditWavFilePath->text(), model.wavFilePathText);
    compare("sound file", window.lineEditWavFileName->text(), model.wavFileNameText);
    compare("output folder", window.lineEditOutputFilePath->text(), model.outputFilePathText);
    compare("output file", window.lineEditOutputFileName->text(), model.outputFileNameText);
    compare("status", window.lineEditStatus->text(), model.statusText);
}

void TestWalk::compareData()
{
    const Data &actual = m_window->data;
    const Data &expected = m_model->data;
    compare("fs", actual.fs, expected.fs);
    compare("soundDuration", actual.soundDuration, expected.soundDuration);
    compare("nSamples", actual.nSamples, expected.nSamples);
    compare("durationToPlot", actual.durationToPlot, expected.durationToPlot);
    compare("nPointsToPlot", actual.nPointsToPlot, expected.nPointsToPlot);
    compare("alwaysPlotEntireWaveformFlag", actual.alwaysPlotEntireWaveformFlag,
            expected.alwaysPlotEntireWaveformFlag);
    compare("desktopPath", actual.desktopPath, expected.desktopPath);
    compare("outputFilePath", actual.outputFilePath, expected.outputFilePath);
    compare("wavFilePath", actual.wavFilePath, expected.wavFilePath);
    compare("subCode", actual.subCode, expected.subCode);
    compare("outputFileName", actual.outputFileName, expected.outputFileName);
    compare("outputFileName_entries", actual.outputFileName_entries,
            expected.outputFileName_entries);
    compare("outputFileName_parameters", actual.outputFileName_parameters,
            expected.outputFileName_parameters);
    compare("sesTypeIndex", actual.sesTypeIndex, expected.sesTypeIndex);
    compare("soundTypeIndex", actual.soundTypeIndex, 0);
    compare("mainParameterIndex", actual.mainParameterIndex, 0);
    compare("sesNum", actual.sesNum, expected.sesNum);
    compare("nTimes", actual.nTimes, expected.nTimes);
    compare("si", actual.si, expected.si);
    compare("wavFileName", actual.wavFileName, expected.wavFileName);
    compare("threshold", actual.threshold, 0.0);
    compare("reactionTime", actual.reactionTime, 0.0);
    compare("saveData", actual.saveData, expected.saveData);
    compare("feedBack", actual.feedBack, expected.feedBack);
    compare("autoPlay", actual.autoPlay, expected.autoPlay);
    compare("number of records", actual.records.size(), expected.records.size());
    compare("number of entries", actual.entries.size(), expected.entries.size());
    if (!m_problem.isEmpty())
        return;
    for (qsizetype i = 0; i < expected.records.size(); ++i) {
        const Record &record = actual.records.at(i);
        const Record &wanted = expected.records.at(i);
        compareAt("folder of record", i, record.filePath, wanted.filePath);
        compareAt("file of record", i, record.filename, wanted.filename);
        compareAt("stim of record", i, record.stim, wanted.stim);
        compareAt("nMother of record", i, record.nMother, wanted.nMother);
        compareAt("nStranger of record", i, record.nStranger, wanted.nStranger);
        compareAt("rt of record", i, record.rt, wanted.rt);
        compareAt("rt_correct of record", i, record.rt_correct, wanted.rt_correct);
        compareAt("rt_incorrect of record", i, record.rt_incorrect, wanted.rt_incorrect);
    }
    for (qsizetype i = 0; i < expected.entries.size(); ++i) {
        const Entry &entry = actual.entries.at(i);
        const Entry &wanted = expected.entries.at(i);
        compareAt("folder of entry", i, entry.filePath, wanted.filePath);
        compareAt("file of entry", i, entry.filename, wanted.filename);
        compareAt("stim of entry", i, entry.stim, wanted.stim);
        compareAt("resp of entry", i, entry.resp, wanted.resp);
        compareAt("correctness of entry", i, entry.correctness, wanted.correctness);
        compareAt("rt of entry", i, entry.rt, wanted.rt);
    }
}

void TestWalk::compareSession()
{
    WalkedWindow &window = *m_window;
    const SessionModel &model = *m_model;
    compare("order", window.randomSequence, model.sequence);
    compare("trialIndex", window.trialIndex, model.trialIndex);
    compare("tokenIndex", window.tokenIndex, model.tokenIndex);
    compare("nTokens", window.nTokens, model.nTokens);
    compare("nTimesSeq", window.nTimesSeq, model.nTimesSeq);
    compare("playCount", window.playCount, model.playCount);
    compare("reactionTimerStarts", window.reactionTimerStarts, model.clockStarts);
    if (free()) // they outlast the entries while the folder is chosen
        compare("timings", window.presentationTimings.size(), model.data.entries.size());
    compare("output kept awake", window.silentStream != nullptr, model.outputAwake);
    compare("\"Mother\" counts", window.trendY, model.motherCounts);
    compare("points of the trend", window.trendPoints.size(), model.motherCounts.size());
    for (qsizetype i = 0; i < window.trendPoints.size() && m_problem.isEmpty(); ++i)
        compareAt("point of the trend", i, window.trendPoints.at(i),
                  QPointF(static_cast<double>(i) + 1, model.motherCounts.at(i)));
    compare("sound", window.soundWave, QList<double>(model.nPoints, model.level));

    compare("timer", window.presentationTimer.isActive(), model.timerRuns);
    if (model.timerRuns && window.presentationTimer.intervalAsDuration() != never) {
        compare("delay", window.presentationTimer.interval(), model.timerInterval);
        compare("single shot", window.presentationTimer.isSingleShot(), true);
        window.presentationTimer.setInterval(never);
    }

    StreamFollower::State state = StreamFollower::State::Idle;
    if (model.stream == SessionModel::Stream::Sounding)
        state = StreamFollower::State::Following;
    else if (model.stream == SessionModel::Stream::Dead)
        state = StreamFollower::State::Stopped;
    compare("state of the stream", static_cast<int>(window.streamFollower.state()),
            static_cast<int>(state));
    const bool open = model.stream != SessionModel::Stream::None;
    compare("output", window.audioSink != nullptr, open);
    compare("buffer", window.audioBuffer != nullptr, open);
    compare("samples", window.audioData != nullptr, open);
}

void TestWalk::compareSubjectWindow()
{
    const SubjectWindow *window = m_window->subjectWindow;
    const SessionModel::Subject &model = m_model->subject;
    compare("subject window enabled", window->isEnabled(), model.enabled);
    struct Control
    {
        const char *name;
        const char *objectName;
        bool visible;
        bool enabled;
    };
    const std::array<Control, 5> controls = {{
        {"Mother", "pushButtonChoice2", model.choicesVisible, model.choicesEnabled},
        {"Stranger", "pushButtonChoice4", model.choicesVisible, model.choicesEnabled},
        {"I am ready", "pushButtonIAmReady", model.readyVisible, true},
        {"Next", "pushButtonNext", model.nextVisible, model.nextEnabled},
        {"Done", "pushButtonDone", model.doneVisible, true},
    }};
    for (const Control &control : controls) {
        const QPushButton *button = subjectButton(control.objectName);
        if (button->isVisible() != control.visible)
            fail(QString("%1 is %2").arg(control.name, control.visible ? "hidden" : "visible"));
        if (button->isEnabledTo(window) != control.enabled)
            fail(QString("%1 is %2").arg(control.name, control.enabled ? "disabled" : "enabled"));
    }
    compare("look of Mother", subjectButton("pushButtonChoice2")->styleSheet(), model.motherStyle);
    compare("look of Stranger", subjectButton("pushButtonChoice4")->styleSheet(),
            model.strangerStyle);
    const auto *label = window->findChild<QLabel *>("labelResult");
    compare("result", label->text(), model.result);
    compare("result visible", label->isVisible(), false);
}

/// The files that were written since the last comparison.
void TestWalk::compareFiles()
{
    for (const QString &path : std::exchange(m_unchecked, {})) {
        if (contents(path) != m_files.value(path))
            fail(QString("the file %1 holds\n%2\nexpected\n%3")
                     .arg(path, QString(contents(path)), QString(m_files.value(path))));
        ++m_saved;
    }
}

/// What the program leaves behind are the files that were saved, and no others.
void TestWalk::checkFilesLeft()
{
    QStringList left;
    for (const QString &folder : {at("results"), at("here"), m_model->data.desktopPath}) {
        QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext())
            left.append(files.next());
    }
    left.sort();
    compare("files left", left, QStringList(m_files.keys()));
}

/// Each session has left a journal with its answers and its end.
void TestWalk::checkJournals()
{
    m_model->quit();
    const QList<SessionModel::Journaled> &journals = m_model->journals;
    const QStringList files = QDir(journalFolder()).entryList(QDir::Files, QDir::Name);
    compare("number of journals", files.size(), journals.size());
    for (qsizetype i = 0; i < files.size() && m_problem.isEmpty(); ++i) {
        const auto session = readJournal(contents(journalFolder() + '/' + files.at(i)));
        if (!session)
            return fail("a journal cannot be read");
        const SessionModel::Journaled &expected = journals.at(i);
        compareAt("order in journal", i, session->order, expected.order);
        compareAt("answers in journal", i, session->answers.size(), expected.answers.size());
        if (!session->end || session->end != expected.end)
            fail(QString("journal %1 ends otherwise than by \"%2\"")
                     .arg(i)
                     .arg(sessionEndWord(expected.end.value_or(SessionEnd::Quit))));
        for (qsizetype k = 0; k < expected.answers.size() && m_problem.isEmpty(); ++k) {
            const JournaledAnswer &answer = session->answers.at(k);
            const SessionModel::Journaled::Answer &wanted = expected.answers.at(k);
            compareAt("trial in journal", k, answer.trial, wanted.trial);
            compareAt("token in journal", k, answer.token, wanted.token);
            compareAt("file in journal", k, answer.entry.filename, wanted.entry.filename);
            compareAt("stim in journal", k, answer.entry.stim, wanted.entry.stim);
            compareAt("resp in journal", k, answer.entry.resp, wanted.entry.resp);
            compareAt("correctness in journal", k, answer.entry.correctness,
                      wanted.entry.correctness);
            compareAt("rt in journal", k, answer.entry.rt, wanted.entry.rt);
        }
        ++m_journals;
    }
}

/// No window is left over, and somebody can go on: the operator by the controls, the subject or the
/// operator by answering what is asked, or somebody by closing the subject's window.
void TestWalk::checkNoDeadEnd()
{
    QList<const QWidget *> visible;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible())
            visible.append(widget);
    }
    const bool subjectVisible = m_model->subject.visible;
    if (visible.size() != 1 + (subjectVisible ? 1 : 0) + m_dialogs.size())
        fail(QString("%1 windows are visible").arg(visible.size()));
    if (!visible.contains(m_window.get()))
        fail("the operator's window is not visible");
    if (subjectVisible && !visible.contains(m_window->subjectWindow))
        fail("the subject's window is not visible");
    if (!m_dialogs.isEmpty()) {
        if (!m_dialogs.last()->isEnabled() || QApplication::activeModalWidget() != m_dialogs.last())
            fail("the dialog in front cannot be answered");
    } else if (!subjectVisible && !m_window->pushButtonPractice->isEnabled()) {
        fail("nobody can go on");
    }
}

void TestWalk::report() const
{
    int nMet = 0;
    QString table = QString(16, ' ');
    for (const char *name : placeNames)
        table += QString(name).rightJustified(12);
    for (std::size_t event = 0; event < nEvents; ++event) {
        table += '\n' + QString(eventNames[event]).leftJustified(16);
        for (std::size_t place = 0; place < nPlaces; ++place) {
            const int met = m_met[event][place];
            nMet += met > 0 ? 1 : 0;
            table += QString::number(met).rightJustified(12);
        }
    }
    qInfo().noquote() << QString("seed %1: %2 steps in %3 programs, %4 sessions begun, %5 saved; "
                                 "%6 result files and %7 journals compared; %8 of %9 states and "
                                 "events met")
                             .arg(m_seed)
                             .arg(m_step)
                             .arg(m_programs)
                             .arg(m_sessions)
                             .arg(m_finished)
                             .arg(m_saved)
                             .arg(m_journals)
                             .arg(nMet)
                             .arg(nEvents * nPlaces);
    if (qEnvironmentVariableIsSet("OSTRINE_WALK_STEPS"))
        qInfo().noquote() << table;
}

GUI_TEST_MAIN(TestWalk)
#include "tst_walk.moc"
