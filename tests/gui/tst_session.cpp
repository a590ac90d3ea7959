// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Journal.h"
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/SessionScores.h"
#include "support/SessionTest.h"
#include "support/WavFile.h"

#include <QAudioDevice>
#include <QAudioSink>
#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QMediaDevices>
#include <QMetaEnum>
#include <QPushButton>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int rate = 48000;

/// 16-bit samples that all have the value @p level / 32768.
QByteArray constantSound(int milliseconds, int level)
{
    QByteArray data;
    for (int i = 0; i < rate / 1000 * milliseconds; ++i)
        data += WavBytes::little(static_cast<std::uint32_t>(level), 2);
    return data;
}

QList<int> firstArguments(const QSignalSpy &spy)
{
    QList<int> values;
    for (const QList<QVariant> &arguments : spy)
        values.append(arguments.first().toInt());
    return values;
}

} // namespace

class TestSession : public SessionTest
{
    Q_OBJECT

public:
    /// The states of a session of two presentations, with feedback and "Next", in their order.
    enum class State { Prepared, Waiting, Delay, Playing, Answering, Feedback, Finished };
    Q_ENUM(State)

    /// How a subject answers.
    enum class Answers { Correct, Wrong, Mother, Stranger, InTurn };
    Q_ENUM(Answers)

private slots:
    void aSoundServerIsThere();
    void aWholeSessionIsScoredAsAnswered_data();
    void aWholeSessionIsScoredAsAnswered();
    void anExperimentFollowsThePracticeWithItsOwnFiles();
    void aSessionLeavesNothingForTheNext();
    void aTokenStartsItsDurationAndTheIntervalAfterThePress_data();
    void aTokenStartsItsDurationAndTheIntervalAfterThePress();
    void aTokenIsShownBeforeItIsHeard_data();
    void aTokenIsShownBeforeItIsHeard();
    void aReactionTimeRunsFromTheEndOfTheSound();
    void theFieldsAreReadAgainAtEveryStepButNext_data();
    void theFieldsAreReadAgainAtEveryStepButNext();
    void theDebugLogTellsStartNamesAndResponses_data();
    void theDebugLogTellsStartNamesAndResponses();
    void aTokenOfALowerRateIsNotReadBeyondItsEnd();
    void theWholeTokenIsPlayedWhateverCountIsReadBack();
    void aSessionWithoutPresentationsPlaysNothing();
    void anInvalidResponseIsWarnedOfAndNotScored_data();
    void anInvalidResponseIsWarnedOfAndNotScored();
    void nextAfterTheLastTokenEndsTheSession();

    void onlyAConfirmedCloseEndsTheSession_data();
    void onlyAConfirmedCloseEndsTheSession();
    void theQuestionCanBeAnsweredAsATokenComes_data();
    void theQuestionCanBeAnsweredAsATokenComes();
    void theDelayRunsOnceAndIsPreciseBelowTwoSeconds_data();
    void theDelayRunsOnceAndIsPreciseBelowTwoSeconds();
    void theScheduledTokenOfABrokenOffSessionStillPlays();
    void aPreparationStopsTheScheduledToken();
    void noEarlierScheduledTokenSoundsInTheNextSession();
    void noEarlierSoundRunsIntoTheNextSession();
    void entriesAndOrderAgreeOnACountTypedMeanwhile();
    void quitEndsTheProgramWithoutWritingFiles_data();
    void quitEndsTheProgramWithoutWritingFiles();

    void aFaultyFileDoesNotStopTheSession_data();
    void aFaultyFileDoesNotStopTheSession();
    void aSessionOfOneFaultyTokenCanBeAnswered();
    void aTokenRemovedMeanwhileDoesNotStopTheSession();

private:
    bool makeToken(const QString &name, int milliseconds, int level = 8192) const;
    bool enter(State state) const;
    bool advance(State from, State to) const;
    static QList<State> statesBetween(State from, State to);
    static QByteArray nameOf(State state);
};

bool TestSession::makeToken(const QString &name, int milliseconds, int level) const
{
    return writeFile(path("tokens/" + name),
                     WavBytes{.data = constantSound(milliseconds, level)}.bytes());
}

/// Goes into @p state from the one before it.
bool TestSession::enter(State state) const
{
    switch (state) {
    case State::Prepared:
        break; // by prepare()
    case State::Waiting:
        click(m_window->pushButtonGo);
        return m_window->subjectWindow->isVisible() && !m_window->isEnabled();
    case State::Delay:
        click(subject("pushButtonIAmReady"));
        return m_window->trialIndex == 1;
    case State::Playing:
        return QTest::qWaitFor([this] { return m_window->audioSink != nullptr; }, longestWait);
    case State::Answering:
        return awaitAnswering();
    case State::Feedback:
        click(subject("pushButtonChoice2"));
        return subject("pushButtonNext")->isEnabled();
    case State::Finished:
        click(subject("pushButtonNext"));
        if (!awaitAnswering())
            return false;
        click(subject("pushButtonChoice4"));
        return subject("pushButtonDone")->isVisible();
    }
    return false;
}

/// Goes from one state to the same or a later one.
bool TestSession::advance(State from, State to) const
{
    const QList<State> way = statesBetween(from, to);
    return std::all_of(way.begin(), way.end(), [this](State state) { return enter(state); });
}

/// The states after @p from up to @p to.
QList<TestSession::State> TestSession::statesBetween(State from, State to)
{
    QList<State> between;
    for (int state = static_cast<int>(from) + 1; state <= static_cast<int>(to); ++state)
        between.append(State(state));
    return between;
}

/// As the rows of a table are named.
QByteArray TestSession::nameOf(State state)
{
    return QByteArray(QMetaEnum::fromType<State>().valueToKey(static_cast<int>(state))).toLower();
}

// Catches a run without the sound server that all the others need.
void TestSession::aSoundServerIsThere()
{
    QVERIFY2(!QMediaDevices::defaultAudioOutput().isNull(),
             "run this by scripts/private-session.sh --audio");
}

void TestSession::aWholeSessionIsScoredAsAnswered_data()
{
    QTest::addColumn<bool>("feedBack");
    QTest::addColumn<bool>("autoPlay");
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QString>("subCode");
    QTest::newRow("feedback, automatic, all correct")
        << true << true << Answers::Correct << "CHD001";
    QTest::newRow("feedback, automatic, all wrong") << true << true << Answers::Wrong << "CHD001";
    QTest::newRow("feedback and Next, always mother")
        << true << false << Answers::Mother << "CHD001";
    QTest::newRow("feedback and Next, always stranger")
        << true << false << Answers::Stranger << "CHD001";
    QTest::newRow("no feedback, always mother") << false << true << Answers::Mother << "CHD001";
    QTest::newRow("no feedback, in turn") << false << true << Answers::InTurn << "CHD001";
    QTest::newRow("empty code, all mothers") << false << true << Answers::Mother << "";
}

// Catches a trial that is lost, scored wrongly, written to another entry or record or shown as
// another, a session which asks for "Next" where it must not, and means over the wrong count.
void TestSession::aWholeSessionIsScoredAsAnswered()
{
    QFETCH(const bool, feedBack);
    QFETCH(const bool, autoPlay);
    QFETCH(const Answers, answers);
    QFETCH(const QString, subCode);
    constexpr int thinking = 25; // ms
    constexpr int nTrials = 4;
    QVERIFY(makeToken("MOV001.wav", 20));
    QVERIFY(makeToken("MOV002.wav", 50));
    m_window->lineEditNTimes->setText("2");
    m_window->lineEditSubCode->setText(subCode);
    m_window->checkBoxFeedBack->setChecked(feedBack);
    m_window->checkBoxAutoPlay->setChecked(autoPlay);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    const QList<int> sequence = m_window->randomSequence;
    QCOMPARE(sequence.size(), nTrials);

    const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
    const QSignalSpy done(m_window.get(), &MainWindow::doneDataCollection);
    QVERIFY(enter(State::Waiting));
    const QSignalSpy responses(m_window->subjectWindow, &SubjectWindow::subjectResponded);
    click(subject("pushButtonIAmReady"));
    const QList<bool> isMother = {true, subCode.isEmpty()};
    SessionScores scores(isMother);
    for (int trial = 0; trial < nTrials; ++trial) {
        QVERIFY(awaitAnswering());
        QCOMPARE(m_window->lineEditStatus->text(),
                 QString("practice %1/%2").arg(trial + 1).arg(nTrials));
        const int token = sequence.at(trial);
        const QString name = token == 0 ? "MOV001.wav" : "MOV002.wav";
        QCOMPARE(m_window->lineEditWavFileName->text(), name);
        QCOMPARE(m_window->data.nSamples, (token == 0 ? 20 : 50) * rate / 1000);

        QTest::qWait(thinking);
        const bool mother = answers == Answers::Mother ||
                            (answers == Answers::Correct && isMother.at(token)) ||
                            (answers == Answers::Wrong && !isMother.at(token)) ||
                            (answers == Answers::InTurn && trial % 2 == 0);
        QPushButton *button = subject(mother ? "pushButtonChoice2" : "pushButtonChoice4");
        click(button);

        const bool correct = mother == isMother.at(token);
        const Entry &entry = m_window->data.entries.at(trial);
        QCOMPARE(entry.filePath, path("tokens"));
        QCOMPARE(entry.filename, name);
        scores.add(token, mother, entry.rt);
        QCOMPARE(scoreText(entry), scoreText(scores.entry()));
        QVERIFY2(entry.rt >= thinking - 1 && entry.rt < 2000,
                 qPrintable(QString::number(entry.rt)));
        QCOMPARE(entry.rt, double(qint64(entry.rt)));
        QCOMPARE(button->styleSheet().contains("/correct.png"), feedBack && correct);
        QCOMPARE(button->styleSheet().contains("/incorrect.png"), feedBack && !correct);
        QCOMPARE(m_window->trendY.at(token), scores.record(token).nMother);

        if (trial == nTrials - 1) {
            QCOMPARE(m_window->trialIndex, nTrials);
        } else if (feedBack && !autoPlay) {
            QCOMPARE(m_window->trialIndex, trial + 1);
            QVERIFY(subject("pushButtonNext")->isEnabled());
            click(subject("pushButtonNext"));
            QCOMPARE(m_window->trialIndex, trial + 2);
        } else {
            QCOMPARE(m_window->trialIndex, trial + 2);
            QVERIFY(!subject("pushButtonNext")->isVisible());
        }
    }

    QCOMPARE(done.size(), 1);
    QVERIFY(subject("pushButtonDone")->isVisible());
    QVERIFY(!subject("pushButtonNext")->isVisible());
    QCOMPARE(subject("pushButtonChoice2")->isVisible(), feedBack);
    const bool manual = feedBack && !autoPlay;
    QCOMPARE(responses.size(), 1 + nTrials + (manual ? nTrials - 1 : 0));
    QCOMPARE(firstArguments(sound), QList<int>({1, -1, 1, -1, 1, -1, 1, -1}));
    QCOMPARE(m_window->subjectWindow->findChild<QLabel *>("labelResult")->text(),
             QString("Frequency Difference = %1 %,   Reaction Time = 0 ms")
                 .arg(sequence.last() == 0 ? 2 : 5));

    for (int token = 0; token < 2; ++token) {
        const Record &record = m_window->data.records.at(token);
        QCOMPARE(scoreText(record), scoreText(scores.record(token)));
        QCOMPARE(record.nMother + record.nStranger, 2);
    }
}

// Catches an experiment that is not offered after practice, a file that is not written, one that
// carries the other session's type or trials, and a journal that names another output.
void TestSession::anExperimentFollowsThePracticeWithItsOwnFiles()
{
    QVERIFY(makeToken("MOV001.wav", 20));
    QVERIFY(makeToken("MOV002.wav", 20));
    m_window->checkBoxSaveData->setChecked(true);
    m_window->lineEditNTimes->setText("2");
    QDir(journalFolder()).removeRecursively();
    for (const QString type : {"practice", "experiment"}) {
        QVERIFY(prepare(type == "practice" ? m_window->pushButtonPractice
                                           : m_window->pushButtonExperiment,
                        path("tokens")));
        QVERIFY(enter(State::Waiting));
        click(subject("pushButtonIAmReady"));
        ModalAnswer answers;
        answers.choose(path(type + ".txt"));
        for (int trial = 0; trial < 4; ++trial) {
            QVERIFY(awaitAnswering());
            click(subject("pushButtonChoice4"));
        }
        QCOMPARE(answers.problem(), "");
        QCOMPARE(answers.dialogs().first().typed, "CHD001_" + type + "001.txt");
        const QList<QByteArray> entries = contents(path(type + "_entries.txt")).split('\n');
        QCOMPARE(entries.size(), 5);
        for (int trial = 0; trial < 4; ++trial) {
            const QString name =
                m_window->data.records.at(m_window->randomSequence.at(trial)).filename;
            QVERIFY(entries.at(trial + 1).startsWith(
                (name +
                 (name == "MOV001.wav" ? "\tmother\tstranger\t0\t" : "\tstranger\tstranger\t1\t"))
                    .toUtf8()));
        }
        QVERIFY(contents(path(type + ".txt")).contains("\nMOV001.wav\t0\t2\t"));
        QVERIFY(contents(path(type + "_parameters.txt"))
                    .contains(type == "practice" ? "\nsesTypeIndex: 0\n" : "\nsesTypeIndex: 1\n"));

        answers.press(QMessageBox::Yes);
        click(subject("pushButtonDone"));
        QCOMPARE(answers.problem(), "");
        QVERIFY(m_window->pushButtonExperiment->isEnabled());
        QVERIFY(!m_window->pushButtonGo->isEnabled());

        const QString output = QMediaDevices::defaultAudioOutput().description();
        QVERIFY(output != "" && output != QMediaDevices::defaultAudioInput().description());
        const auto journaledOutput = [] {
            const QString newest =
                QDir(journalFolder()).entryList(QDir::Files, QDir::Name).value(0);
            const auto session = readJournal(contents(journalFolder() + '/' + newest));
            return session ? session->output : QString();
        };
        QTRY_COMPARE(journaledOutput(), output);
        QVERIFY(QDir(journalFolder()).removeRecursively());
    }
}

// Catches what one session leaves behind for the next: trials, tallies, or the closed window's
// answers.
void TestSession::aSessionLeavesNothingForTheNext()
{
    QVERIFY(makeToken("MOV001.wav", 20));
    for (int session = 0; session < 4; ++session) {
        QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
        const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
        QVERIFY(enter(State::Waiting));
        QVERIFY(enter(State::Delay));
        QVERIFY(awaitAnswering());
        click(subject("pushButtonChoice2"));
        QCOMPARE(firstArguments(sound), QList<int>({1, -1}));
        QCOMPARE(m_window->data.entries.size(), 1);
        QCOMPARE(m_window->data.records.first().nMother, 1);
        QCOMPARE(m_window->data.records.first().rt, m_window->data.entries.first().rt);
        ModalAnswer answers;
        answers.press(QMessageBox::Yes);
        click(subject("pushButtonDone"));
        QCOMPARE(answers.problem(), "");
    }
}

void TestSession::aTokenStartsItsDurationAndTheIntervalAfterThePress_data()
{
    QTest::addColumn<State>("pressed"); // the state in which the button is pressed
    QTest::newRow("ready") << State::Waiting;
    QTest::newRow("answer") << State::Answering;
    QTest::newRow("Next") << State::Feedback;
}

// Catches a token that does not start when its duration and the silent interval have passed since
// the button was pressed, but at half or twice that time or without one of the two, and a timing
// that counts from another time.
void TestSession::aTokenStartsItsDurationAndTheIntervalAfterThePress()
{
    QFETCH(const State, pressed);
    constexpr int duration = 250;
    constexpr int interval = 350;
    QVERIFY(makeToken("MOV001.wav", duration));
    m_window->lineEditNTimes->setText("2");
    m_window->checkBoxAutoPlay->setChecked(pressed == State::Answering);
    m_window->lineEditSi->setText("-250.000"); // the first token comes at once
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(enter(State::Waiting));
    QVERIFY(advance(State::Waiting, pressed));

    QElapsedTimer sincePress;
    qint64 started = -1;
    qint64 ended = -1;
    connect(m_window.get(), &MainWindow::soundPlaying, this,
            [&](int index) { (index == 1 ? started : ended) = sincePress.elapsed(); });
    m_window->lineEditSi->setText(QString::number(interval));
    if (pressed == State::Feedback)
        m_window->data.si = interval / 1000.0; // the field is not read again
    QPushButton *button = subject(pressed == State::Waiting     ? "pushButtonIAmReady"
                                  : pressed == State::Answering ? "pushButtonChoice2"
                                                                : "pushButtonNext");
    sincePress.start();
    click(button);
    QVERIFY(QTest::qWaitFor([&] { return started >= 0; }, longestWait));
    QVERIFY2(started >= duration + interval - 1 && started < 1100,
             qPrintable(QString::number(started)));
    QVERIFY(!m_window->subjectWindow->isEnabled());
    QVERIFY(awaitAnswering());
    const qint64 heard = sincePress.elapsed() - started;
    QVERIFY2(heard >= duration, qPrintable(QString::number(heard)));
    // The timing that is kept counts from when the token was due: as long after the press as it
    // took the program to schedule it, and the delay.
    const double clockStart =
        m_window->presentationTimings.value(m_window->trialIndex - 1).clockStart;
    const auto latest = static_cast<double>(ended - duration - interval);
    QVERIFY2(clockStart < latest + 2 && clockStart > latest - 250,
             qPrintable(QString("%1 of %2").arg(clockStart).arg(latest)));
}

void TestSession::aTokenIsShownBeforeItIsHeard_data()
{
    QTest::addColumn<bool>("autoPlay");
    QTest::newRow("automatic") << true;
    QTest::newRow("Next") << false;
}

// Catches a waveform or spectrum of an earlier token, or none, when a token is prepared or starts.
void TestSession::aTokenIsShownBeforeItIsHeard()
{
    QFETCH(const bool, autoPlay);
    QVERIFY(makeToken("MOV001.wav", 20, 8192));
    QVERIFY(makeToken("MOV002.wav", 30, 16384));
    m_window->checkBoxAutoPlay->setChecked(autoPlay);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));

    // A constant sound has twice its value at the frequency 0.
    const auto shown = [this] {
        const QList<QPointF> waveform = m_window->waveformChart.series->points();
        const QList<QPointF> spectrum = m_window->spectrumChart.series->points();
        return QString("%1 points of %2, %3 at 0 Hz")
            .arg(waveform.size())
            .arg(waveform.value(0).y())
            .arg(spectrum.value(0).y());
    };
    QStringList expected;
    for (const int token : std::as_const(m_window->randomSequence))
        expected.append(token == 0 ? "960 points of 0.25, 0.5 at 0 Hz"
                                   : "1440 points of 0.5, 1 at 0 Hz");
    QCOMPARE(shown(), expected.first());

    QStringList heard;
    connect(m_window.get(), &MainWindow::soundPlaying, this, [&](int index) {
        if (index == 1)
            heard.append(shown());
    });
    QVERIFY(advance(State::Prepared, State::Answering));
    click(subject("pushButtonChoice2"));
    if (!autoPlay)
        click(subject("pushButtonNext"));
    QCOMPARE(shown(), expected.last());
    QVERIFY(awaitAnswering());
    QCOMPARE(heard, expected);
}

// Catches a reaction clock that runs on from an earlier trial, starts with the sound or stops late.
void TestSession::aReactionTimeRunsFromTheEndOfTheSound()
{
    constexpr int longestDelay = 60; // ms, between two readings of the clock on a busy machine
    QVERIFY(makeToken("MOV001.wav", 100));
    m_window->lineEditNTimes->setText("3");
    m_window->lineEditSi->setText("-100.000"); // each token comes at once
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QElapsedTimer sinceEnd;
    connect(m_window.get(), &MainWindow::soundPlaying, this, [&](int index) {
        if (index == -1)
            sinceEnd.start();
    });
    QVERIFY(enter(State::Waiting));
    QVERIFY(enter(State::Delay));
    const QList<int> thinking = {150, 40, 90}; // ms
    for (qsizetype trial = 0; trial < thinking.size(); ++trial) {
        QVERIFY(awaitAnswering());
        QTest::qWait(thinking.at(trial));
        QTest::mousePress(subject("pushButtonChoice2"), Qt::LeftButton);
        const auto expected = static_cast<double>(sinceEnd.elapsed());
        QTest::mouseRelease(subject("pushButtonChoice2"), Qt::LeftButton);
        const double rt = m_window->data.entries.at(trial).rt;
        QVERIFY2(expected >= thinking.at(trial) && rt >= expected && rt < expected + longestDelay,
                 qPrintable(QString("%1 instead of %2").arg(rt).arg(expected)));
    }
}

void TestSession::theFieldsAreReadAgainAtEveryStepButNext_data()
{
    QTest::addColumn<bool>("autoPlay");
    QTest::newRow("automatic") << true;
    QTest::newRow("Next") << false;
}

// Catches fields that are not read when a session is prepared, at "Go", at its start or in the
// automatic path, and fields that are read after "Next".
void TestSession::theFieldsAreReadAgainAtEveryStepButNext()
{
    QFETCH(const bool, autoPlay);
    QVERIFY(makeToken("MOV001.wav", 20));
    m_window->lineEditNTimes->setText("2");
    m_window->checkBoxAutoPlay->setChecked(autoPlay);
    m_window->lineEditSi->setText("11.000");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QCOMPARE(m_window->data.si, 0.011);
    m_window->lineEditSi->setText("12.000");
    QVERIFY(enter(State::Waiting));
    QCOMPARE(m_window->data.si, 0.012);
    m_window->lineEditSi->setText("13.000");
    QVERIFY(enter(State::Delay));
    QCOMPARE(m_window->data.si, 0.013);
    QVERIFY(awaitAnswering());
    m_window->lineEditSi->setText("14.000");
    click(subject("pushButtonChoice2"));
    QCOMPARE(m_window->data.si, autoPlay ? 0.014 : 0.013);
    if (!autoPlay) {
        click(subject("pushButtonNext"));
        QCOMPARE(m_window->data.si, 0.013);
    }
    QVERIFY(awaitAnswering());
}

void TestSession::theDebugLogTellsStartNamesAndResponses_data()
{
    QTest::addColumn<bool>("autoPlay");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("automatic") << true
                               << QStringList({"Test just started", "\"MOV001.wav\"",
                                               "response:  2", "response:  4"});
    QTest::newRow("Next") << false
                          << QStringList({"Test just started", "\"MOV001.wav\"", "response:  2",
                                          "\"MOV001.wav\"", "response:  4"});
}

// Catches a line of the log that is missing, in other words or at another event: a file name is
// told at the start and after "Next" alone.
void TestSession::theDebugLogTellsStartNamesAndResponses()
{
    QFETCH(const bool, autoPlay);
    static QStringList lines;
    lines.clear();
    QVERIFY(makeToken("MOV001.wav", 20));
    m_window->lineEditNTimes->setText("2");
    m_window->checkBoxAutoPlay->setChecked(autoPlay);
    const QtMessageHandler before = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext &, const QString &message) {
            if (type == QtDebugMsg)
                lines.append(message);
        });
    const auto restore = qScopeGuard([before] { qInstallMessageHandler(before); });
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(advance(State::Prepared, State::Answering));
    click(subject("pushButtonChoice2"));
    if (!autoPlay)
        click(subject("pushButtonNext"));
    QVERIFY(awaitAnswering());
    click(subject("pushButtonChoice4"));
    QTEST(lines, "lines");
}

// Catches samples read beyond a token whose own rate is lower than the session's.
void TestSession::aTokenOfALowerRateIsNotReadBeyondItsEnd()
{
    for (const char *name : {"tokens/a.wav", "tokens/b.wav"})
        QVERIFY(writeFile(
            path(name),
            WavBytes{.sampleRate = 8000, .data = constantSound(10, 8192).first(800)}.bytes()));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QCOMPARE(m_window->soundWave, QList<double>(400, 0.25));
    QVERIFY(enter(State::Waiting));
    QVERIFY(enter(State::Delay));
    QCOMPARE(m_window->data.nSamples, 2400);
    QVERIFY(awaitAnswering());
    click(subject("pushButtonChoice2"));
    QVERIFY(awaitAnswering());
    QCOMPARE(m_window->soundWave, QList<double>(400, 0.25));
    click(subject("pushButtonChoice2"));
    QVERIFY(subject("pushButtonDone")->isVisible());
}

// Catches a token cut to the number of samples that the parameters, read back between two
// presentations, come to: by the duration's three decimals or by the session's rate.
void TestSession::theWholeTokenIsPlayedWhateverCountIsReadBack()
{
    constexpr int nRounded = 12010; // 250.208 ms, and 12009 samples again
    constexpr int nFast = 9600;
    const auto ramp = [](int length) {
        QByteArray samples;
        for (int i = 1; i <= length; ++i)
            samples += WavBytes::little(static_cast<std::uint32_t>(i), 2);
        return samples;
    };
    QVERIFY(writeFile(path("tokens/rounded.wav"), WavBytes{.data = ramp(nRounded)}.bytes()));
    QVERIFY(writeFile(path("tokens/fast.wav"),
                      WavBytes{.sampleRate = 2 * rate, .data = ramp(nFast)}.bytes()));
    m_window->lineEditNTimes->setText("2");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));

    QStringList played;
    connect(m_window.get(), &MainWindow::soundPlaying, this, [&](int index) {
        if (index != 1)
            return;
        const bool rounded = m_window->data.wavFileName == "rounded.wav";
        const int length = rounded ? nRounded : nFast;
        QList<float> samples;
        for (int i = 1; i <= length; ++i)
            samples.append(static_cast<float>(i) / 32768.0F);
        const QByteArray bytes(reinterpret_cast<const char *>(samples.constData()),
                               length * qsizetype{sizeof(float)});
        const bool whole = m_window->audioData->contains(bytes);
        const bool readBack = m_window->data.nSamples == (rounded ? nRounded - 1 : nFast / 2);
        played.append(whole && readBack ? "whole" : "cut " + m_window->data.wavFileName);
    });
    QVERIFY(enter(State::Waiting));
    QVERIFY(enter(State::Delay));
    for (int trial = 0; trial < 4; ++trial) {
        QVERIFY(awaitAnswering());
        click(subject("pushButtonChoice2"));
    }
    QCOMPARE(played, QStringList(4, "whole"));
}

// Catches a token played although none is to be presented, and a session that cannot be left.
void TestSession::aSessionWithoutPresentationsPlaysNothing()
{
    QVERIFY(makeToken("MOV001.wav", 20));
    m_window->lineEditNTimes->setText("0");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
    QVERIFY(enter(State::Waiting));
    click(subject("pushButtonIAmReady"));
    QTest::qWait(400);
    QCOMPARE(sound.size(), 0);
    QVERIFY(!m_window->subjectWindow->isEnabled());
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QVERIFY(m_window->isEnabled());

    m_window->lineEditNTimes->setText("1");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(enter(State::Waiting));
    QVERIFY(enter(State::Delay));
    QVERIFY(awaitAnswering());
}

void TestSession::anInvalidResponseIsWarnedOfAndNotScored_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {1, 3, 6, -1, 2147483647})
        QTest::addRow("%d", code) << code;
}

// Catches a code that is taken for an answer, a warning in other words, and plays that count on.
void TestSession::anInvalidResponseIsWarnedOfAndNotScored()
{
    QFETCH(const int, code);
    QVERIFY(makeToken("MOV001.wav", 20));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(enter(State::Waiting));
    QVERIFY(enter(State::Delay));
    QVERIFY(awaitAnswering());
    ModalAnswer answers;
    answers.press(QMessageBox::Ok);
    QCOMPARE(m_window->playCount, 1);
    emit m_window->subjectWindow->subjectResponded(code);
    QCOMPARE(m_window->playCount, 0);
    QCOMPARE(answers.problem(), "");
    const ModalAnswer::Box box = answers.boxes().first();
    QCOMPARE(box.title, "Warning");
    QCOMPARE(box.text, "Invalid response");
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::Ok);
    QVERIFY(!box.parent);
    QCOMPARE(m_window->trialIndex, 1);
    QCOMPARE(m_window->data.entries.first().resp, "");
    click(subject("pushButtonChoice2"));
    QCOMPARE(m_window->data.entries.first().resp, "mother");
}

// Catches a session that does not end as by an answer when "Next" comes after the last token.
void TestSession::nextAfterTheLastTokenEndsTheSession()
{
    QVERIFY(makeToken("MOV001.wav", 20));
    m_window->checkBoxSaveData->setChecked(true);
    m_window->checkBoxAutoPlay->setChecked(false);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    const QSignalSpy done(m_window.get(), &MainWindow::doneDataCollection);
    QVERIFY(advance(State::Prepared, State::Answering));
    ModalAnswer answers;
    answers.choose(path("results.txt"));
    emit m_window->subjectWindow->subjectResponded(NextResponse);
    QCOMPARE(answers.problem(), "");
    QCOMPARE(done.size(), 1);
    QVERIFY(subject("pushButtonDone")->isVisible());
    QVERIFY(QFileInfo::exists(path("results_entries.txt")));
    QCOMPARE(m_window->trialIndex, 1);
}

void TestSession::onlyAConfirmedCloseEndsTheSession_data()
{
    QTest::addColumn<State>("state");
    QTest::addColumn<int>("button");
    for (const State state : statesBetween(State::Prepared, State::Finished)) {
        const QByteArray name = nameOf(state);
        QTest::addRow("%s, Yes", name.constData()) << state << int(QMessageBox::Yes);
        QTest::addRow("%s, No", name.constData()) << state << int(QMessageBox::No);
        QTest::addRow("%s, Cancel", name.constData()) << state << int(QMessageBox::Cancel);
    }
}

// Catches a session that ends although closing was refused or goes on although it was confirmed,
// and an operator's window that stays locked.
void TestSession::onlyAConfirmedCloseEndsTheSession()
{
    QFETCH(const State, state);
    QFETCH(const int, button);
    QVERIFY(makeToken("MOV001.wav", 60));
    QVERIFY(makeToken("MOV002.wav", 60));
    m_window->checkBoxAutoPlay->setChecked(false);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    const QSignalSpy done(m_window.get(), &MainWindow::doneDataCollection);
    QVERIFY(advance(State::Prepared, state));

    QVERIFY(closeSubjectWindow(QMessageBox::StandardButton(button)));
    if (button != QMessageBox::Yes) {
        QVERIFY(m_window->subjectWindow->isVisible());
        QVERIFY(!m_window->isEnabled());
        QVERIFY(advance(state, State::Finished));
        QCOMPARE(done.size(), 1);
        return;
    }
    QVERIFY(!m_window->subjectWindow->isVisible());
    QVERIFY(m_window->isEnabled());
    QVERIFY(m_window->pushButtonPractice->isEnabled());
    QVERIFY(m_window->pushButtonExperiment->isEnabled());
    QVERIFY(m_window->lineEditNTimes->isEnabled());
    QVERIFY(!m_window->pushButtonGo->isEnabled());
    QCOMPARE(done.size(), state == State::Finished ? 1 : 0);
    QCOMPARE(m_window->data.entries.size(), 2);

    QVERIFY(prepare(m_window->pushButtonExperiment, path("tokens")));
    QVERIFY(advance(State::Prepared, State::Finished));
    QCOMPARE(done.size(), state == State::Finished ? 2 : 1);
}

void TestSession::theQuestionCanBeAnsweredAsATokenComes_data()
{
    QTest::addColumn<State>("asked");
    QTest::addColumn<bool>("dies");
    QTest::addColumn<bool>("yes");
    for (const bool yes : {true, false}) {
        const char *answer = yes ? "Yes" : "escape";
        QTest::addRow("asked before the token, %s", answer) << State::Delay << false << yes;
        QTest::addRow("asked before the token of a dead output, %s", answer)
            << State::Delay << true << yes;
        QTest::addRow("asked while it sounds, %s", answer) << State::Playing << false << yes;
    }
}

// Catches a question that is locked together with the window below it: while a token sounds, or
// for good when its end does not come.
void TestSession::theQuestionCanBeAnsweredAsATokenComes()
{
    QFETCH(const State, asked);
    QFETCH(const bool, dies);
    QFETCH(const bool, yes);
    QVERIFY(makeToken("MOV001.wav", 150));
    m_window->lineEditNTimes->setText("2");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(advance(State::Prepared, State::Answering));
    // The answer leaves the window unlocked until the next token starts.
    click(subject("pushButtonChoice2"));
    QVERIFY(m_window->subjectWindow->isEnabled());
    if (asked == State::Playing)
        QVERIFY(enter(State::Playing));

    QElapsedTimer sinceDeath;
    ModalAnswer answers;
    (yes ? answers.press(QMessageBox::Yes) : answers.escape()).when([&] {
        if (m_window->audioSink == nullptr || m_window->subjectWindow->isEnabled())
            return false;
        if (!dies)
            return true;
        if (!sinceDeath.isValid()) {
            m_window->audioSink->reset();
            sinceDeath.start();
        }
        return sinceDeath.elapsed() > 300;
    });
    m_window->subjectWindow->close();
    QCOMPARE(answers.problem(), "");
    QCOMPARE(m_window->subjectWindow->isVisible(), !yes);
    QCOMPARE(m_window->isEnabled(), yes);
    if (!yes && !dies) {
        QVERIFY(awaitAnswering());
        click(subject("pushButtonChoice2"));
        QVERIFY(subject("pushButtonDone")->isVisible());
    }
}

void TestSession::theDelayRunsOnceAndIsPreciseBelowTwoSeconds_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::addColumn<QString>("interval"); // ms
    QTest::addColumn<int>("delay");
    QTest::addColumn<Qt::TimerType>("type");
    QTest::newRow("below two seconds") << 12000 << "1749.500" << 1999 << Qt::PreciseTimer;
    QTest::newRow("two seconds") << 12000 << "1750.000" << 2000 << Qt::CoarseTimer;
    // The token's 250.0208 ms count as they are shown.
    QTest::newRow("three decimals of the duration")
        << 12001 << "749.97905" << 1000 << Qt::PreciseTimer;
}

// Catches a delay that is rounded, of another duration than is shown, kept by the other kind of
// timer, or repeated.
void TestSession::theDelayRunsOnceAndIsPreciseBelowTwoSeconds()
{
    QFETCH(const int, nSamples);
    QFETCH(const QString, interval);
    QVERIFY(writeFile(path("tokens/MOV001.wav"),
                      WavBytes{.data = QByteArray(2 * nSamples, '\0')}.bytes()));
    m_window->lineEditSi->setText(interval);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(!m_window->presentationTimer.isActive());
    QVERIFY(advance(State::Prepared, State::Delay));
    QVERIFY(m_window->presentationTimer.isActive());
    QVERIFY(m_window->presentationTimer.isSingleShot());
    QTEST(m_window->presentationTimer.interval(), "delay");
    QTEST(m_window->presentationTimer.timerType(), "type");
}

// Catches a scheduled token of a broken session that fails or does not play.
void TestSession::theScheduledTokenOfABrokenOffSessionStillPlays()
{
    QVERIFY(makeToken("MOV001.wav", 40));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
    QVERIFY(advance(State::Prepared, State::Delay));
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QVERIFY(QTest::qWaitFor([&] { return sound.size() == 2; }, longestWait));
    QCOMPARE(firstArguments(sound), QList<int>({1, -1}));
    QVERIFY(m_window->isEnabled());
    QVERIFY(!m_window->subjectWindow->isVisible());
    QVERIFY(!m_window->audioSink && !m_window->audioBuffer && !m_window->audioData);
}

// Catches the scheduled token of a broken session that sounds when the next one has been prepared:
// it would be that one's first token, before the subject is ready.
void TestSession::aPreparationStopsTheScheduledToken()
{
    QVERIFY(makeToken("MOV001.wav", 20));
    m_window->lineEditSi->setText("600.000");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(advance(State::Prepared, State::Delay));
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QVERIFY(m_window->presentationTimer.isActive());

    const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QTest::qWait(800);
    QCOMPARE(sound.size(), 0);
}

// Catches the scheduled token of a broken session that sounds in the next one.
void TestSession::noEarlierScheduledTokenSoundsInTheNextSession()
{
    QVERIFY(makeToken("MOV001.wav", 20));
    m_window->lineEditSi->setText("900.000");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(advance(State::Prepared, State::Delay));
    QElapsedTimer sinceReady;
    sinceReady.start();
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));

    m_window->lineEditSi->setText("20.000");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
    QVERIFY(advance(State::Prepared, State::Delay));
    QVERIFY(awaitAnswering());
    QVERIFY2(sinceReady.elapsed() < 900, "too slow to tell");
    QTest::qWait(static_cast<int>(1300 - sinceReady.elapsed()));
    QCOMPARE(firstArguments(sound), QList<int>({1, -1}));
    QVERIFY(subject("pushButtonChoice2")->isEnabled());
    click(subject("pushButtonChoice2"));
    QVERIFY(subject("pushButtonDone")->isVisible());
}

// Catches the sound of a broken session that runs into the next one, or ends its first token.
void TestSession::noEarlierSoundRunsIntoTheNextSession()
{
    constexpr int longSound = 1500; // ms
    QVERIFY(makeToken("MOV001.wav", 20));
    QVERIFY(QDir().mkpath(path("long")));
    QVERIFY(writeFile(path("long/MOV001.wav"),
                      WavBytes{.data = constantSound(longSound, 4096)}.bytes()));
    m_window->lineEditSi->setText("0.000");
    QVERIFY(prepare(m_window->pushButtonPractice, path("long")));
    QVERIFY(advance(State::Prepared, State::Playing));
    QElapsedTimer sinceStart;
    sinceStart.start();
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QVERIFY(m_window->audioSink);

    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(!m_window->audioSink && !m_window->audioBuffer && !m_window->audioData);
    const QSignalSpy sound(m_window.get(), &MainWindow::soundPlaying);
    QVERIFY(advance(State::Prepared, State::Delay));
    QVERIFY(awaitAnswering());
    QVERIFY2(sinceStart.elapsed() < longSound, "too slow to tell");
    QTest::qWait(static_cast<int>(longSound + 400 - sinceStart.elapsed()));
    QCOMPARE(firstArguments(sound), QList<int>({1, -1}));
    click(subject("pushButtonChoice2"));
    QVERIFY(subject("pushButtonDone")->isVisible());
}

// Catches entries of one count of presentations and an order of another: the field may be typed in
// while the preparation waits for the earlier sound's release, or for the folder.
void TestSession::entriesAndOrderAgreeOnACountTypedMeanwhile()
{
    QVERIFY(makeToken("MOV001.wav", 400));
    m_window->lineEditSi->setText("0.000");
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(advance(State::Prepared, State::Playing));
    QVERIFY(closeSubjectWindow(QMessageBox::Yes));
    QVERIFY(m_window->audioSink);

    QTimer::singleShot(0, m_window.get(), [this] { m_window->lineEditNTimes->setText("3"); });
    ModalAnswer answers;
    answers.choose(path("tokens")).when([this] {
        m_window->lineEditNTimes->setText("2");
        return true;
    });
    click(m_window->pushButtonPractice);
    QCOMPARE(answers.problem(), "");
    QCOMPARE(m_window->nTimesSeq, m_window->data.nTimes);
    QCOMPARE(m_window->data.entries.size(), m_window->data.nTimes);
    QCOMPARE(m_window->randomSequence.size(), m_window->data.nTimes);
}

void TestSession::quitEndsTheProgramWithoutWritingFiles_data()
{
    QTest::addColumn<State>("state");
    QTest::newRow("prepared") << State::Prepared;
    for (const State state : statesBetween(State::Prepared, State::Finished))
        QTest::newRow(nameOf(state).constData()) << state;
}

// Catches a program that does not end with its main window, asks or saves on the way, or fails
// while it is taken down.
void TestSession::quitEndsTheProgramWithoutWritingFiles()
{
    QFETCH(const State, state);
    QVERIFY(makeToken("MOV001.wav", 200));
    QVERIFY(makeToken("MOV002.wav", 200));
    m_window->checkBoxSaveData->setChecked(state != State::Finished);
    m_window->checkBoxAutoPlay->setChecked(false);
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(advance(State::Prepared, state));

    const ModalAnswer nothing;
    QApplication::setQuitOnLastWindowClosed(true);
    QTimer::singleShot(0, m_window.get(), [this] { m_window->close(); });
    QTimer watchdog;
    connect(&watchdog, &QTimer::timeout, [] { QCoreApplication::exit(EXIT_FAILURE); });
    watchdog.start(longestWait);
    const int code = QApplication::exec();
    QApplication::setQuitOnLastWindowClosed(false);
    QCOMPARE(nothing.problem(), "");
    QCOMPARE(code, EXIT_SUCCESS);
    m_window.reset();
    QTest::qWait(100);
    QVERIFY(!QFileInfo::exists(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation) +
                               "/CHD001"));
}

void TestSession::aFaultyFileDoesNotStopTheSession_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QList<double>>("expected");

    // The good token has 20 ms of 0.25.
    const int nGood = 20 * rate / 1000;
    const QList<double> previous(nGood, 0.25);
    const QByteArray data = constantSound(10, -8192);
    const QByteArray good = WavBytes{.data = data}.bytes();
    QTest::newRow("empty") << QByteArray() << previous;
    QTest::newRow("20 bytes of a header") << good.first(20) << previous;
    QTest::newRow("20 bytes of something else") << QByteArray(20, 'x') << previous;
    QTest::newRow("header alone") << good.first(44) << previous;
    QTest::newRow("wrong magic") << WavBytes{.wave = "AIFF", .data = data}.bytes() << previous;
    QTest::newRow("float") << WavBytes{.audioFormat = 3, .bitsPerSample = 32, .data = data}.bytes()
                           << previous;
    QTest::newRow("32 bits") << WavBytes{.bitsPerSample = 32, .data = data}.bytes() << previous;
    QTest::newRow("0 bits") << WavBytes{.bitsPerSample = 0, .data = data}.bytes() << previous;
    QTest::newRow("no channel") << WavBytes{.numChannels = 0, .data = data}.bytes() << previous;
    QTest::newRow("rate 0") << WavBytes{.sampleRate = 0, .data = data}.bytes() << previous;
    QTest::newRow("truncated") << good.chopped(3) << previous;
    QTest::newRow("4 GiB - 1 declared")
        << WavBytes{.data = data, .declaredSize = 0xFFFFFFFF}.bytes() << previous;
    QTest::newRow("more channels than samples")
        << WavBytes{.numChannels = 65535, .data = data}.bytes() << previous;
    QTest::newRow("no samples") << WavBytes{}.bytes() << previous;
    QTest::newRow("half a sample") << WavBytes{.data = "x"}.bytes() << previous;
    // Readable, but with a sound of its own kind.
    QTest::newRow("three channels")
        << WavBytes{.numChannels = 3, .data = data}.bytes() << QList<double>(160, 0.25);
    QTest::newRow("odd size") << WavBytes{.data = data + 'x'}.bytes() << QList<double>(480, -0.25);
    QTest::newRow("one sample") << WavBytes{.data = WavBytes::samples16({8192})}.bytes()
                                << QList<double>{0.25};
}

// Catches a faulty file that ends the program, stops the session or is heard as noise: the trial
// goes on with the previous token's samples.
void TestSession::aFaultyFileDoesNotStopTheSession()
{
    QFETCH(const QByteArray, file);
    QFETCH(const QList<double>, expected);
    QVERIFY(makeToken("a.wav", 20));
    QVERIFY(writeFile(path("tokens/b.wav"), file));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    // The good token first, whatever has been drawn.
    m_window->randomSequence = {0, 1};
    m_window->genWav();
    QCOMPARE(m_window->soundWave, QList<double>(20 * rate / 1000, 0.25));

    QVERIFY(enter(State::Waiting));
    QVERIFY(enter(State::Delay));
    QVERIFY(awaitAnswering());
    click(subject("pushButtonChoice2"));
    QCOMPARE(m_window->soundWave, expected);
    QVERIFY(awaitAnswering());
    QCOMPARE(m_window->soundWave, expected);
    QCOMPARE(m_window->data.entries.at(1).filename, "b.wav");
    click(subject("pushButtonChoice4"));
    QVERIFY(subject("pushButtonDone")->isVisible());
    QCOMPARE(m_window->data.records.at(1).nStranger, 1);
}

// Catches a session that hangs when no token has been read before the faulty one.
void TestSession::aSessionOfOneFaultyTokenCanBeAnswered()
{
    QVERIFY(writeFile(path("tokens/b.wav"), "no sound at all"));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(m_window->soundWave.isEmpty());
    QVERIFY(enter(State::Waiting));
    QVERIFY(enter(State::Delay));
    QVERIFY(awaitAnswering());
    click(subject("pushButtonChoice4"));
    QVERIFY(subject("pushButtonDone")->isVisible());
    QCOMPARE(m_window->data.records.first().nStranger, 1);
}

// Catches a session that fails when a token vanishes in its course.
void TestSession::aTokenRemovedMeanwhileDoesNotStopTheSession()
{
    QVERIFY(makeToken("a.wav", 20, 8192));
    QVERIFY(makeToken("b.wav", 20, -8192));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    const QList<double> first = m_window->soundWave;
    QVERIFY(QDir(path("tokens")).removeRecursively());
    QVERIFY(enter(State::Waiting));
    QVERIFY(enter(State::Delay));
    QVERIFY(awaitAnswering());
    click(subject("pushButtonChoice2"));
    QCOMPARE(m_window->soundWave, first);
    QVERIFY(awaitAnswering());
    click(subject("pushButtonChoice2"));
    QVERIFY(subject("pushButtonDone")->isVisible());
}

GUI_TEST_MAIN(TestSession)
#include "tst_session.moc"
