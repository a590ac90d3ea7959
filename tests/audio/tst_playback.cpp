// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/SilentStream.h"
#include "audio/StreamProgress.h"
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/Noise.h"
#include "support/OperatorWindow.h"
#include "support/Recording.h"
#include "support/SoundServer.h"

#include <QAudioSink>
#include <QBuffer>
#include <QDeadlineTimer>
#include <QSignalSpy>
#include <QTimer>

#include <chrono>
#include <cmath>
#include <memory>
#include <vector>

#include <dlfcn.h>

namespace {

int drains = 0; ///< how often a sink has asked to be told when its stream has been played out

} // namespace

/// Takes the place of the sound server's library for every caller in this process, and passes the
/// call on.
extern "C" void *pa_stream_drain(void *stream, void *callback, void *receiver)
{
    if (receiver != nullptr)
        ++drains;
    using Drain = void *(*)(void *, void *, void *);
    static const auto next = reinterpret_cast<Drain>(dlsym(RTLD_NEXT, "pa_stream_drain"));
    return next(stream, callback, receiver);
}

namespace {

constexpr int sampleRate = 48000;
constexpr int endTimeout = 10000; // ms

} // namespace

class TestPlayback : public QObject
{
    Q_OBJECT

private slots:
    void aTokenIsHeardWhole_data();
    void aTokenIsHeardWhole();
    void noAnswerOfTheServerIsOwedToASinkThatIsGone();
    void anUnderrunDoesNotEndTheToken();
    void aProgramHeldUpAtTheEndTellsItOnce();
    void anOutputStoppedBeforeTheEndEnablesNoAnswer();
    void aNewPlayReleasesTheOneBefore();
    void closingTheWindowReleasesWhatPlays();
    void thePeriodIsHeldFromGoToTheSessionsEnd_data();
    void thePeriodIsHeldFromGoToTheSessionsEnd();
    void aTokenPlaysByOurPeriodWhateverOthersAskFor_data();
    void aTokenPlaysByOurPeriodWhateverOthersAskFor();
};

void TestPlayback::aTokenIsHeardWhole_data()
{
    QTest::addColumn<int>("nSamples");

    QTest::addColumn<int>("heldUp"); // ms, from half a second after the start

    QTest::newRow("20 ms") << 960 << 0;
    QTest::newRow("50 ms") << 2400 << 0;
    QTest::newRow("250 ms") << 12000 << 0;
    QTest::newRow("251.3 ms, no whole tick of the sink") << 12062 << 0;
    QTest::newRow("a second") << 48000 << 0;
    QTest::newRow("three seconds, a chart drawn meanwhile") << 3 * sampleRate << 1000;
}

// Catches a token cut at its end when the output is stopped, one with a hole, and a sound whose end
// is never announced.
//
// A machine that stops for a moment takes the sound server's time away and tears a gap into any
// sound. A play with a gap is therefore repeated, a cut one is not: a hole of the program's own
// making comes back each time.
void TestPlayback::aTokenIsHeardWhole()
{
    QFETCH(const int, nSamples);
    QFETCH(const int, heldUp);
    OperatorWindow window;
    QSignalSpy playing(&window, &MainWindow::soundPlaying);
    Recording recording;
    QVERIFY(recording.isRunning());

    constexpr int nWhole = 3;
    constexpr int mostGaps = 3;
    int gaps = 0;
    for (quint32 play = 0; play < quint32(nWhole + gaps); ++play) {
        window.soundWave = noise(nSamples, play);
        window.playCount = 0;
        playing.clear();
        window.playOneSound();
        QTimer::singleShot(500, &window, [=] { QTest::qSleep(heldUp); });
        QCOMPARE(playing.size(), 1);
        QCOMPARE(playing.at(0).at(0).toInt(), 1);
        QVERIFY(playing.wait(endTimeout));
        QCOMPARE(playing.at(1).at(0).toInt(), -1);
        QCOMPARE(window.audioSink, nullptr);
        QCOMPARE(window.audioBuffer, nullptr);
        QCOMPARE(window.audioData, nullptr);

        const HeardToken heard = findToken(recording.samples(), noise(nSamples, play));
        if (heard.whole)
            continue;
        QVERIFY2(heard.hasGap() && gaps < mostGaps, qPrintable(heard.text()));
        qInfo().noquote() << heard.text() << "- once more";
        ++gaps;
    }
}

// Catches a sink that is deleted while the server still owes it an answer. The server's thread
// hands that to the deleted sink, and once in many times the program ends by it.
void TestPlayback::noAnswerOfTheServerIsOwedToASinkThatIsGone()
{
    drains = 0;
    {
        OperatorWindow window;
        QSignalSpy playing(&window, &MainWindow::soundPlaying);
        SilentStream silence(window.audioOutputFormat);
        window.soundWave = noise(sampleRate / 4, 1);
        window.playOneSound();
        QVERIFY(playing.wait(endTimeout));
        QCOMPARE(playing.size(), 2);
        QTest::qWait(1000); // the silence behind the token, and that of the silent stream
        window.playCount = 0;
        window.playOneSound();
        QTest::qWait(200);
    }
    QCOMPARE(drains, 0);
}

// Catches an output that ran dry for a moment being taken for the end of the sound.
void TestPlayback::anUnderrunDoesNotEndTheToken()
{
    OperatorWindow window;
    QSignalSpy playing(&window, &MainWindow::soundPlaying);
    window.soundWave = noise(sampleRate, 1);
    window.playOneSound();
    QCOMPARE(playing.size(), 1);

    window.handleAudioStateChanged(QAudio::IdleState);
    QVERIFY(window.audioSink != nullptr);
    QTest::qWait(200);
    QCOMPARE(playing.size(), 1);

    QVERIFY(playing.wait(endTimeout));
    QCOMPARE(playing.size(), 2);
    QCOMPARE(playing.at(1).at(0).toInt(), -1);
}

// Catches a token that never ends, or ends twice, when the program has missed its end and all of
// the silence behind it, and a crash of the output that has run dry.
void TestPlayback::aProgramHeldUpAtTheEndTellsItOnce()
{
    OperatorWindow window;
    QSignalSpy playing(&window, &MainWindow::soundPlaying);
    for (int play = 0; play < 5; ++play) {
        window.soundWave = noise(12000, 1);
        window.playCount = 0;
        playing.clear();
        window.playOneSound();
        QTest::qWait(150);
        QTest::qSleep(1500);
        QTRY_COMPARE_WITH_TIMEOUT(playing.size(), 2, endTimeout);
        QCOMPARE(window.audioSink, nullptr);
        QTest::qWait(300);
        QCOMPARE(playing.size(), 2);
    }
}

// Catches an answer to a token whose last moments were lost: the output stops when the server has
// taken all of the token, but has not played it yet.
void TestPlayback::anOutputStoppedBeforeTheEndEnablesNoAnswer()
{
    OperatorWindow window;
    QSignalSpy playing(&window, &MainWindow::soundPlaying);
    // What is left of the token then lasts some 10 ms: a machine that stops for a moment misses it.
    for (int play = 0; play < 5 && window.audioSink == nullptr; ++play) {
        window.soundWave = noise(12000, 1);
        window.playCount = 0;
        playing.clear();
        window.playOneSound();
        const qint64 behind = window.audioOutputFormat.framesForDuration(trailingSilence.count());
        const qint64 tokenEnd =
            window.audioData->size() / window.audioOutputFormat.bytesPerFrame() - behind;
        for (const QDeadlineTimer limit(endTimeout);
             window.audioSink != nullptr && window.readStream().taken < tokenEnd;) {
            QVERIFY(!limit.hasExpired());
            QCoreApplication::processEvents();
        }
        QTest::qWait(6); // by then the program knows it as well
    }
    QVERIFY(window.audioSink != nullptr);
    window.audioSink->stop();
    QTest::qWait(500);
    QCOMPARE(playing.size(), 1);
}

// Catches the long sound of a session that was broken off sounding on into the next one, ending its
// token or announcing an end of its own.
void TestPlayback::aNewPlayReleasesTheOneBefore()
{
    OperatorWindow window;
    QSignalSpy playing(&window, &MainWindow::soundPlaying);
    Recording recording;
    QVERIFY(recording.isRunning());

    window.soundWave = noise(3 * sampleRate, 1);
    window.playOneSound();
    QTest::qWait(300);
    const QList<double> token = noise(12000, 2);
    window.soundWave = token;
    window.playCount = 0;
    window.playOneSound();
    QTRY_COMPARE_WITH_TIMEOUT(playing.size(), 3, endTimeout);
    QCOMPARE(playing.at(2).at(0).toInt(), -1);
    QTest::qWait(3000);
    QCOMPARE(playing.size(), 3);

    const std::vector<float> samples = recording.samples();
    const HeardToken heard = findToken(samples, token);
    QVERIFY2(heard.whole, qPrintable(heard.text()));
    for (size_t i = heard.last + 1; i < samples.size(); ++i)
        QCOMPARE(samples[i], 0.0F);
}

// Catches a sink, buffer or timer outliving the window, which the sanitizers or a crash would show.
void TestPlayback::closingTheWindowReleasesWhatPlays()
{
    {
        OperatorWindow window;
        window.soundWave = noise(sampleRate, 1);
        window.playOneSound();
        QTest::qWait(100);
        QVERIFY(window.audioSink != nullptr);
    }
    QTest::qWait(300);
    OperatorWindow next;
    QSignalSpy playing(&next, &MainWindow::soundPlaying);
    next.soundWave = noise(960, 1);
    next.playOneSound();
    QTRY_COMPARE_WITH_TIMEOUT(playing.size(), 2, endTimeout);
}

void TestPlayback::thePeriodIsHeldFromGoToTheSessionsEnd_data()
{
    QTest::addColumn<bool>("quit");
    QTest::newRow("the subject window is closed") << false;
    QTest::newRow("the program is ended") << true;
}

// Catches a period that is asked for only while a token plays, too late for the first one, or for
// ever.
void TestPlayback::thePeriodIsHeldFromGoToTheSessionsEnd()
{
    QFETCH(const bool, quit);
    const SoundServer server;
    auto window = std::make_unique<OperatorWindow>();
    window->show();
    QSignalSpy playing(window.get(), &MainWindow::soundPlaying);
    QCOMPARE(server.nStreamsWithPeriod(), 0);
    window->pushButtonGo_clicked();
    QTRY_COMPARE_WITH_TIMEOUT(server.nStreamsWithPeriod(), 1, endTimeout);

    window->soundWave = noise(2 * sampleRate, 1);
    window->playOneSound();
    QTRY_COMPARE_WITH_TIMEOUT(server.nStreamsWithPeriod(), 2, 1500);
    QTRY_COMPARE_WITH_TIMEOUT(playing.size(), 2, endTimeout);
    QTRY_COMPARE_WITH_TIMEOUT(server.nStreamsWithPeriod(), 1, endTimeout);
    QTest::qWait(1000); // the session goes on for longer than anything is fed
    QCOMPARE(server.nStreamsWithPeriod(), 1);

    if (quit) {
        window.reset();
    } else {
        ModalAnswer answers;
        answers.press(QMessageBox::Yes);
        window->subjectWindow->close();
        QCOMPARE(answers.problem(), "");
    }
    QTRY_COMPARE_WITH_TIMEOUT(server.nStreamsWithPeriod(), 0, endTimeout);
}

void TestPlayback::aTokenPlaysByOurPeriodWhateverOthersAskFor_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::newRow("256") << 256;
    QTest::newRow("1024") << 1024;
    QTest::newRow("2048") << 2048;
}

// Catches a token that is played by the period that other programs ask for, in which its end cannot
// be told.
void TestPlayback::aTokenPlaysByOurPeriodWhateverOthersAskFor()
{
    QFETCH(const int, nSamples);
    SoundServer server;
    QVERIFY(server.setPeriod(nSamples));
    OperatorWindow window;
    QSignalSpy playing(&window, &MainWindow::soundPlaying);
    window.pushButtonGo_clicked();
    window.soundWave = noise(sampleRate, 1);
    window.playOneSound();
    QTRY_COMPARE_WITH_TIMEOUT(playing.size(), 2, endTimeout);
    const double block =
        std::chrono::duration<double, std::milli>(window.streamFollower.progress().block()).count();
    QVERIFY2(std::abs(block - 2048 / 48.0) < 0.1, qPrintable(QString::number(block)));
    QVERIFY(server.setPeriod(2048)); // as the other tests have it
}

GUI_TEST_MAIN(TestPlayback)

#include "tst_playback.moc"
