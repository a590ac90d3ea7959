// SPDX-License-Identifier: GPL-3.0-or-later
// What becomes of a session when its sound goes wrong. Each function needs a private session of its
// own: Qt keeps its connection to the sound server for as long as the program runs.

#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/Noise.h"
#include "support/Recording.h"
#include "support/ResidentMemory.h"
#include "support/SessionTest.h"
#include "support/SoundServer.h"
#include "support/WavFile.h"

#include <QAudioDevice>
#include <QAudioSink>
#include <QBuffer>
#include <QCheckBox>
#include <QMediaDevices>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTimer>

#include <optional>

namespace {

constexpr int rate = 48000;
constexpr int longToken = 3 * rate;
const char *const stopWarning = "Audio stopped unexpectedly";

void expectOneWarning()
{
    QTest::ignoreMessage(QtWarningMsg, stopWarning);
    QTest::failOnWarning(QRegularExpression(stopWarning));
}

} // namespace

class TestFaults : public SessionTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aServerThatDiesWhilePlayingEnablesNoAnswer();
    void aServerGoneBeforePlayingEnablesNoAnswer();
    void manyPlaysWithoutAServerLeaveNothingBehind();
    void theNextTokenPlaysOnTheNewDefaultOutput();
    void theAnswerIsEnabledAfterTheOutputWasSuspended();
    void anOutputSuspendedBeforePlayingIsHeardToTheEnd();
    void aStalledServerEnablesNoAnswerUntilItGoesOn_data();
    void aStalledServerEnablesNoAnswerUntilItGoesOn();
    void aLateServerIsReportedWithItsTrial();
    void aLateReactionClockIsReportedWithItsTrial_data();
    void aLateReactionClockIsReportedWithItsTrial();
    void aRefusedFormatEnablesNoAnswer_data();
    void aRefusedFormatEnablesNoAnswer();

private:
    bool makeToken(const QString &name, int nSamples, quint32 seed) const;
    bool getReady(const QString &folder = "tokens") const;
    bool getReadyForLongToken() const;
    bool start() const;
    bool awaitTaken(int nSamples) const;
    bool awaitFailure() const;
    void awaitConnections(int nConnections) const;
    bool isLocked() const;
    bool leave() const;
    void heardBeforeAnswering();
    void sessionGoesOn();
    void sessionWorks();

    SoundServer m_server;
};

// Catches a run without the sound server that all the others need.
void TestFaults::initTestCase()
{
    QVERIFY2(!QMediaDevices::defaultAudioOutput().isNull(),
             "run this by scripts/private-session.sh --audio");
}

bool TestFaults::makeToken(const QString &name, int nSamples, quint32 seed) const
{
    return writeFile(path("tokens/" + name), wavBytes(noise(nSamples, seed)));
}

/// Goes as far as the subject's "I am ready".
bool TestFaults::getReady(const QString &folder) const
{
    if (!prepare(m_window->pushButtonPractice, path(folder)))
        return false;
    click(m_window->pushButtonGo);
    return m_window->subjectWindow->isVisible() && !m_window->isEnabled();
}

/// The same with a token during which something may happen.
bool TestFaults::getReadyForLongToken() const
{
    return makeToken("MOV001.wav", longToken, 1) && getReady();
}

/// "I am ready": waits until the token is said to play.
bool TestFaults::start() const
{
    QSignalSpy playing(m_window.get(), &MainWindow::soundPlaying);
    click(subject("pushButtonIAmReady"));
    return playing.wait(longestWait) && playing.first().first().toInt() == 1;
}

/// Waits until the server has taken @p nSamples.
bool TestFaults::awaitTaken(int nSamples) const
{
    return QTest::qWaitFor([&] { return m_window->readStream().taken > nSamples; }, longestWait);
}

/// Waits until the output has stopped by itself, or has been given up.
bool TestFaults::awaitFailure() const
{
    return QTest::qWaitFor(
        [this] {
            return m_window->streamFollower.state() == StreamFollower::State::Stopped ||
                   m_window->streamFollower.state() == StreamFollower::State::Stalled;
        },
        longestWait);
}

/// Gives Qt 6.4 the time to be connected anew, which it needs to play; newer versions do that when
/// they play.
void TestFaults::awaitConnections(int nConnections) const
{
    (void)QTest::qWaitFor([&] { return m_server.nConnections() == nConnections; }, longestWait);
}

bool TestFaults::isLocked() const
{
    return !subject("pushButtonChoice2")->isEnabled() && !subject("pushButtonChoice4")->isEnabled();
}

/// Breaks the session off, as whoever sits before the locked window must.
bool TestFaults::leave() const
{
    return closeSubjectWindow(QMessageBox::Yes) && m_window->isEnabled() &&
           m_window->pushButtonPractice->isEnabled();
}

/// The end of the long token, which plays, is heard before it can be answered.
void TestFaults::heardBeforeAnswering()
{
    Recording recording;
    QVERIFY(recording.isRunning());
    QVERIFY(isLocked());
    QVERIFY(awaitAnswering());
    const HeardToken heard = findToken(recording.samples(), noise(longToken, 1));
    QVERIFY2(heard.toItsEnd, qPrintable(heard.text()));
    sessionGoesOn();
}

/// The token can be answered, and the next session works.
void TestFaults::sessionGoesOn()
{
    click(subject("pushButtonChoice2"));
    QCOMPARE(m_window->data.entries.first().resp, "mother");
    QVERIFY(leave());
    sessionWorks();
}

/// A whole session of one token. The server may still tear a gap into it, but not cut its end off.
void TestFaults::sessionWorks()
{
    const QList<double> token = noise(9600, 99);
    QVERIFY(QDir().mkpath(path("next")));
    QVERIFY(writeFile(path("next/MOV001.wav"), wavBytes(token)));
    Recording recording;
    QVERIFY(recording.isRunning());
    QVERIFY(getReady("next"));
    QVERIFY(start());
    QVERIFY(awaitAnswering());
    const HeardToken heard = findToken(recording.samples(), token);
    QVERIFY2(heard.whole || heard.hasGap(), qPrintable(heard.text()));
    click(subject("pushButtonChoice2"));
    QCOMPARE(m_window->data.entries.first().resp, "mother");
    QVERIFY(subject("pushButtonDone")->isVisible());
    QVERIFY(leave());
}

// Catches a crash, an answer to a token of which the end was not heard, a failure without a
// word, and a program that stays mute when the server is back. Qt looks for the server once again,
// three seconds after it has lost it.
void TestFaults::aServerThatDiesWhilePlayingEnablesNoAnswer()
{
    constexpr int nSamples = 2 * rate;
    QVERIFY(makeToken("MOV001.wav", nSamples, 1));
    expectOneWarning();
    QVERIFY(getReady());
    const QSignalSpy playing(m_window.get(), &MainWindow::soundPlaying);
    QVERIFY(start());
    const int nConnections = m_server.nConnections();
    QVERIFY(nConnections > 0);

    // Qt 6.4 hangs for good when the server vanishes while it feeds the output. By then all of the
    // stream is in the buffer, and nothing is fed any more.
    QVERIFY(awaitTaken(nSamples / 2));
    QCOMPARE(m_window->audioBuffer->pos(), m_window->audioBuffer->size());
    QVERIFY(m_server.kill());
    QVERIFY(awaitFailure());
    QVERIFY(m_server.start());
    QTest::qWait(2000); // the rest of the token, and more
    QCOMPARE(playing.size(), 1);
    QVERIFY(isLocked());

    QVERIFY(leave());
    awaitConnections(nConnections);
    sessionWorks();
}

// Catches a program that waits for a server that is not there, and what the test above catches.
void TestFaults::aServerGoneBeforePlayingEnablesNoAnswer()
{
    sessionWorks();
    if (QTest::currentTestFailed())
        return;
    const int nConnections = m_server.nConnections();
    QVERIFY(nConnections > 0);
    QVERIFY(makeToken("MOV001.wav", 9600, 1));
    expectOneWarning();
    QVERIFY(getReady());
    const QSignalSpy playing(m_window.get(), &MainWindow::soundPlaying);

    QVERIFY(m_server.kill());
    QVERIFY(start());
    QVERIFY(awaitFailure());
    QVERIFY(m_server.start());
    QTest::qWait(500); // the token, and more
    QCOMPARE(playing.size(), 1);
    QVERIFY(isLocked());

    QVERIFY(leave());
    awaitConnections(nConnections);
    sessionWorks();
}

// Catches outputs, sources and samples that pile up when nothing can be played, a play that fails
// without a word, and the crash or the answer that may come of it.
void TestFaults::manyPlaysWithoutAServerLeaveNothingBehind()
{
    constexpr int nSettled = 5;
    constexpr int nPlays = 25;
    // A play takes 290 KB with its samples; of 20 plays less than 4 may be left.
    constexpr qint64 mostGrowth = 1'000'000;
    QVERIFY(makeToken("MOV001.wav", rate, 1));
    QVERIFY(getReady());
    QVERIFY(m_server.kill());
    for (int play = 0; play < nPlays; ++play)
        QTest::ignoreMessage(QtWarningMsg, stopWarning);
    QVERIFY(start());
    QVERIFY(awaitFailure());

    const QSignalSpy playing(m_window.get(), &MainWindow::soundPlaying);
    QList<QPointer<QObject>> released;
    qint64 settled = 0;
    for (int play = 1; play < nPlays; ++play) {
        if (play == nSettled)
            settled = residentMemory();
        released << m_window->audioSink << m_window->audioBuffer;
        m_window->playCount = 0;
        m_window->playOneSound();
        QVERIFY(awaitFailure());
        QTest::qWait(50);
        QCOMPARE(m_window->findChildren<QAudioSink *>().size(), 1);
    }
    const qint64 growth = residentMemory() - settled;
    qInfo("%d plays: %+lld KB resident", nPlays - nSettled, growth / 1000);
    QVERIFY(settled > 0);
    QVERIFY2(growth < mostGrowth, qPrintable(QString::number(growth)));
    for (const QPointer<QObject> &object : released)
        QVERIFY(object.isNull());
    QCOMPARE(playing.size(), nPlays - 1);
    QVERIFY(isLocked());

    QVERIFY(leave());
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QCOMPARE(m_window->findChildren<QAudioSink *>().size(), 0);
}

// Catches an output that is kept for all trials, and one that is chosen once and for all.
void TestFaults::theNextTokenPlaysOnTheNewDefaultOutput()
{
    constexpr int nTokens = 5;
    for (int token = 1; token <= nTokens; ++token)
        QVERIFY(makeToken(QString("MOV%1.wav").arg(token), 12000, token));
    m_window->checkBoxAutoPlay->setChecked(false);
    QVERIFY(m_server.addOutput("second"));
    const auto presentedIn = [this](Recording &recording) {
        return findToken(recording.samples(), noise(12000, m_window->tokenIndex + 1));
    };

    QVERIFY(getReady());
    {
        Recording first("out");
        QVERIFY(first.isRunning());
        QVERIFY(start());
        QVERIFY(awaitAnswering());
        const HeardToken heard = presentedIn(first);
        QVERIFY2(heard.toItsEnd, qPrintable(heard.text()));
        click(subject("pushButtonChoice2"));
    }

    QVERIFY(m_server.setDefaultOutput("second"));
    // Qt 6.4 looks at an output again only when something happens to it, here a recording, and may
    // be told then what has been before.
    bool noticed = false;
    for (int tries = 0; tries < 5 && !noticed; ++tries) {
        Recording event("second");
        QVERIFY(event.isRunning());
        noticed = QTest::qWaitFor(
            [] { return QMediaDevices::defaultAudioOutput().id() == "second"; }, longestWait / 4);
    }
    QVERIFY(noticed);
    Recording second("second");
    QVERIFY(second.isRunning());
    // A stall of the server tears a gap into any sound: only then another token may come instead.
    for (bool whole = false; !whole;) {
        QVERIFY2(m_window->trialIndex < nTokens, "a gap in each token");
        click(subject("pushButtonNext"));
        QVERIFY(awaitAnswering());
        const HeardToken heard = presentedIn(second);
        whole = heard.whole;
        QVERIFY2(whole || heard.hasGap(), qPrintable(heard.text()));
        click(subject("pushButtonChoice4"));
        QCOMPARE(m_window->data.entries.at(m_window->trialIndex - 1).resp, "stranger");
    }
}

// Catches an answer that is never enabled when the output has been put to sleep, and a session that
// stays mute after that. PipeWire wakes an output up again as soon as it finds something to play,
// but plays what is left of the token as silence, which nothing tells.
void TestFaults::theAnswerIsEnabledAfterTheOutputWasSuspended()
{
    QTest::failOnWarning(QRegularExpression(stopWarning));
    QVERIFY(getReadyForLongToken());
    QVERIFY(start());
    QVERIFY(awaitTaken(longToken / 3));

    QVERIFY(m_server.suspendOutput("out", true));
    QVERIFY(isLocked());
    QVERIFY(m_server.suspendOutput("out", false));
    QVERIFY(awaitAnswering());
    sessionGoesOn();
}

// Catches an output that sleeps when the session begins and is not waited for, or in vain.
void TestFaults::anOutputSuspendedBeforePlayingIsHeardToTheEnd()
{
    QTest::failOnWarning(QRegularExpression(stopWarning));
    QVERIFY(makeToken("MOV001.wav", longToken, 1));
    QVERIFY(prepare(m_window->pushButtonPractice, path("tokens")));
    QVERIFY(m_server.suspendOutput("out", true));
    QVERIFY(m_server.isSuspended("out"));
    click(m_window->pushButtonGo);
    QVERIFY(start());
    heardBeforeAnswering();
}

void TestFaults::aStalledServerEnablesNoAnswerUntilItGoesOn_data()
{
    QTest::addColumn<int>("duration");
    QTest::addColumn<bool>("warning");

    QTest::newRow("for a moment") << 2500 << false;
    QTest::newRow("for long") << 6500 << true;
}

// Catches an end that is told by the clock: a server that stands still for longer than the token
// would still last has not played it. Catches as well that nothing is said of it, and that a
// token which goes on in the end cannot be answered.
void TestFaults::aStalledServerEnablesNoAnswerUntilItGoesOn()
{
    QFETCH(const int, duration);
    QFETCH(const bool, warning);
    if (warning)
        QTest::ignoreMessage(QtWarningMsg, stopWarning);
    QTest::failOnWarning(QRegularExpression(stopWarning));
    QVERIFY(getReadyForLongToken());
    const QAudioFormat &format = m_window->audioOutputFormat;
    std::optional<qint64> untaken; // when the answer is enabled
    connect(m_window.get(), &MainWindow::soundPlaying, this, [&](int index) {
        if (index == -1 && !untaken)
            untaken =
                m_window->audioData->size() / format.bytesPerFrame() - m_window->readStream().taken;
    });
    QVERIFY(start());
    QVERIFY(awaitTaken(longToken / 3));

    QVERIFY(m_server.pause(true));
    QTest::qWait(duration);
    QVERIFY(isLocked());
    // The virtual output may make up for the lost time at once, faster than anyone can record it.
    QVERIFY(m_server.pause(false));
    QVERIFY(awaitAnswering());
    QVERIFY(untaken && *untaken <= format.framesForDuration(trailingSilence.count()));
    sessionGoesOn();
}

// Catches a server that stood still for a moment without a word about it, or about another trial.
void TestFaults::aLateServerIsReportedWithItsTrial()
{
    constexpr int duration = 100; // ms
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression("^Trial 1 - .*the sound server was \\d+\\.\\d ms late"));
    QVERIFY(getReadyForLongToken());
    QVERIFY(start());
    QVERIFY(awaitTaken(longToken / 3));
    QVERIFY(m_server.pause(true));
    QTest::qWait(duration);
    QVERIFY(m_server.pause(false));
    QVERIFY(awaitAnswering());

    const PresentationTiming timing = m_window->presentationTimings.value(0);
    const double delay = timing.serverDelay;
    // By the time the pause begins the server may just have taken a block, which lasts. The signal
    // that pauses it may be some milliseconds late itself.
    QVERIFY2(delay > duration - timing.block - 15 && delay < duration + 200,
             qPrintable(QString::number(delay)));
    sessionGoesOn();
}

void TestFaults::aLateReactionClockIsReportedWithItsTrial_data()
{
    QTest::addColumn<bool>("told");
    QTest::newRow("before the last block is taken") << false;
    QTest::newRow("when the end is known") << true;
}

// Catches a reaction clock that was started late without a word: the program was busy with
// something else when the token ended.
void TestFaults::aLateReactionClockIsReportedWithItsTrial()
{
    QFETCH(const bool, told);
    constexpr int duration = 300; // ms
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression("^Trial 1 - the reaction clock was started \\d+\\.\\d ms after"));
    QVERIFY(getReadyForLongToken());
    QVERIFY(start());
    const StreamFollower &follower = m_window->streamFollower;
    if (told) {
        QVERIFY(QTest::qWaitFor([&] { return follower.progress().tokenHeardAt().has_value(); },
                                longestWait));
        QVERIFY(isLocked());
    } else {
        QVERIFY(awaitTaken(longToken - 4000));
        QVERIFY(!follower.progress().tokenHeardAt());
    }
    QTest::qSleep(duration);
    QVERIFY(awaitAnswering());

    const PresentationTiming timing = m_window->presentationTimings.value(0);
    // What is left of the token when the program is held up, and a block that cannot be told.
    const double least = duration - 1000.0 * 4000 / rate - 2 * timing.block;
    QVERIFY2(timing.clockDelay() > least && timing.clockDelay() < duration + 200,
             qPrintable(QString::number(timing.clockDelay())));
    QCOMPARE(timing.longestBlindness >= duration, !told);
    sessionGoesOn();
}

void TestFaults::aRefusedFormatEnablesNoAnswer_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("sampleRate");

    QTest::newRow("no channel") << 0 << rate;
    QTest::newRow("200 channels") << 200 << rate;
    QTest::newRow("rate 0") << 1 << 0;
    QTest::newRow("negative rate") << 1 << -1;
    QTest::newRow("rate of 10 MHz") << 1 << 10'000'000;
}

// Catches a division by a frame of no bytes, an answer to a sound that the output refused, and a
// refusal without a word.
void TestFaults::aRefusedFormatEnablesNoAnswer()
{
    QFETCH(const int, channels);
    QFETCH(const int, sampleRate);
    const QAudioFormat good = m_window->audioOutputFormat;
    m_window->audioOutputFormat.setChannelCount(channels);
    m_window->audioOutputFormat.setSampleRate(sampleRate);
    QVERIFY(!QMediaDevices::defaultAudioOutput().isFormatSupported(m_window->audioOutputFormat));
    QVERIFY(makeToken("MOV001.wav", 9600, 1));
    expectOneWarning();
    QVERIFY(getReady());
    const QSignalSpy playing(m_window.get(), &MainWindow::soundPlaying);
    QVERIFY(start());
    QVERIFY(awaitFailure());
    QTest::qWait(1000); // the token, and more
    QCOMPARE(playing.size(), 1);
    QVERIFY(isLocked());

    QVERIFY(leave());
    m_window->audioOutputFormat = good;
    sessionWorks();
}

GUI_TEST_MAIN(TestFaults)

#include "tst_faults.moc"
