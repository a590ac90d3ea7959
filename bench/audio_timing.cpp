// SPDX-License-Identifier: GPL-3.0-or-later
// Measures when a token is heard and when the reaction clock starts, by a recording of what the
// sound server plays. To be run by audio_timing.sh, which gives it a server of its own.
//
//   audio_timing [plays per condition, 50 [part of the names of the conditions to run]]
//
// Prints a Markdown table to the standard output, and the program's log to the standard error. All
// times are those of the monotonic clock, in milliseconds.

#include "audio/SilentStream.h"
#include "subject/SubjectWindow.h"
#include "support/ModalAnswer.h"
#include "support/Noise.h"
#include "support/OperatorWindow.h"
#include "support/WaitFor.h"
#include "support/WavFile.h"
#include "timing/OtherPrograms.h"
#include "timing/Play.h"
#include "timing/SoundRecorder.h"
#include "timing/Statistics.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <pulse/simple.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <optional>
#include <vector>

namespace {

constexpr size_t otherPeriod = 256; ///< samples, of another program that uses sound

void wait(int ms)
{
    waitFor([] { return false; }, ms);
}

constexpr auto monitor = "out.monitor";

/// Another program that uses sound: it records the output in periods of @c otherPeriod samples and
/// discards them, until it is ended.
int listen()
{
    std::array<float, otherPeriod> samples;
    pa_simple *const stream = openRecording("listener", monitor, samples.size());
    while (stream != nullptr &&
           pa_simple_read(stream, samples.data(), sizeof(samples), nullptr) == 0) {
    }
    return EXIT_FAILURE;
}

/// Starts this executable as another program, which does what @p option says.
void startOther(QProcess &process, const char *option)
{
    process.setProcessEnvironment(environmentOfOthers());
    process.start(QCoreApplication::applicationFilePath(), {option});
}

void end(QProcess &process)
{
    process.kill();
    process.waitForFinished();
}

/// While it exists, PipeWire grants other programs the period that they ask for, as it does by
/// default. Other servers are left alone.
class ShortPeriodsGranted
{
public:
    ShortPeriodsGranted()
        : m_before(QRegularExpression("value:'(\\d+)'").match(metadata({})).captured(1))
    {
        if (!m_before.isEmpty())
            metadata(QString::number(otherPeriod));
    }
    ~ShortPeriodsGranted()
    {
        if (!m_before.isEmpty())
            metadata(m_before);
    }

private:
    static QString metadata(const QString &value)
    {
        QProcess process;
        QStringList arguments = {"-n", "settings", "0", "clock.min-quantum"};
        if (!value.isEmpty())
            arguments.append(value);
        process.start("pw-metadata", arguments);
        process.waitForFinished();
        return process.readAllStandardOutput();
    }

    QString m_before;
};

/// A recording of the output, from now on.
class OutputRecording
{
public:
    OutputRecording()
    {
        constexpr int longestStart = 10000; // ms
        const auto begins = [this] {
            m_recording.append(m_recorder.newFragments());
            return !m_recording.samples().empty();
        };
        if (!waitFor(begins, longestStart))
            qFatal("nothing is recorded");
    }

    /// What has been recorded until now.
    const StampedRecording &finish()
    {
        constexpr int settle = 500; // ms, what has been played must have arrived
        wait(settle);
        m_recording.append(m_recorder.newFragments());
        return m_recording;
    }

private:
    SoundRecorder m_recorder{monitor};
    StampedRecording m_recording;
};

/// Notes when a timer of the program fired last.
class TimerWatch : public QObject
{
public:
    TimerWatch() { QCoreApplication::instance()->installEventFilter(this); }

    double lastFired() const { return m_lastFired; }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Timer)
            m_lastFired = monotonicMs();
        return false;
    }

private:
    double m_lastFired = 0;
};

/// Noise that no other token has.
QList<double> newNoise(int nSamples)
{
    return noise(nSamples, QRandomGenerator::global()->generate());
}

/// A condition under which tokens are played.
struct Condition
{
    QString name;
    int nSamples = 0;
    bool charts = false; ///< load the token from its file, and draw it, before each play
    bool load = false;   ///< while another process keeps one core busy
    bool resize = false; ///< resize the window, so that the charts are drawn again, at each play
    enum {
        NoOther,      ///< nothing else uses sound
        OtherRecords, ///< another program records all the time
        OtherComes,   ///< another program begins to record while a token plays, and ends before it
    } other = NoOther;
};

class Measurement
{
public:
    explicit Measurement(int nPlays)
        : m_nPlays(nPlays)
    {
    }

    void printHeader() const
    {
        std::printf(
            "| condition | samples heard | whole plays | cut at the end | begin of the "
            "sound after it was due "
            "| clock zero error | the same, of plays with a regular server "
            "| presentation timer error | time to start the sound | told to have been late: "
            "clock; server (of them with a gap) |\n"
            "|---|---|---|---|---|---|---|---|---|---|\n");
    }

    void run(const Condition &condition) const
    {
        QProcess burner;
        if (condition.load)
            startOther(burner, "--burn");
        std::optional<ShortPeriodsGranted> granted;
        if (condition.other != Condition::NoOther)
            granted.emplace();
        QProcess listener;
        if (condition.other == Condition::OtherRecords)
            startOther(listener, "--listen");

        OutputRecording output;
        std::vector<Play> plays;
        {
            Presenter presenter(condition);
            for (int i = 0; i <= m_nPlays; ++i) {
                const Play play = presenter.present();
                if (i > 0) // the first one opens the connection to the server
                    plays.push_back(play);
            }
        }
        const StampedRecording &recording = output.finish();
        end(burner);
        end(listener);

        print(condition.name, recording, plays);
    }

private:
    /// Presents tokens by the program's own playback.
    class Presenter
    {
    public:
        explicit Presenter(const Condition &condition)
            : m_condition(condition)
        {
            m_window.resize(width, 810);
            m_window.silentStream = std::make_unique<SilentStream>(m_window.audioOutputFormat);
            if (condition.charts)
                m_window.show();
            Record record;
            record.filePath = m_folder.path();
            record.filename = "token.wav";
            m_window.data.records = {record};
            m_window.data.si = 0.25;
            QObject::connect(&m_window, &MainWindow::soundPlaying, [this](int index) {
                if (index == -1) {
                    m_play.ended = monotonicMs();
                    return;
                }
                m_play.begun = m_timerWatch.lastFired();
                m_play.started = monotonicMs();
                if (m_condition.other == Condition::OtherComes) {
                    QTimer::singleShot(otherComesAfter, &m_window,
                                       [this] { startOther(m_listener, "--listen"); });
                    QTimer::singleShot(otherGoesAfter, &m_window, [this] { m_listener.kill(); });
                }
                if (m_condition.resize)
                    QTimer::singleShot(resizeAfter, &m_window, [this] {
                        m_window.resize(m_window.width() == width ? width + 2 : width,
                                        m_window.height());
                    });
            });
        }

        Play present()
        {
            m_play = Play();
            m_play.token = newNoise(m_condition.nSamples);
            m_window.playCount = 0;
            m_window.trialIndex = 0;
            m_window.presentationTimings = {PresentationTiming()};
            m_window.randomSequence = {0};
            if (m_condition.charts) {
                if (!writeFile(m_folder.filePath("token.wav"), wavBytes(m_play.token)))
                    qFatal("a token cannot be written");
                m_window.genWav();
                m_window.displayWav();
                m_window.genFFT();
                m_window.displayFFT();
                QCoreApplication::processEvents(); // painted during the longer pause of a session
            } else {
                m_window.soundWave = m_play.token;
            }
            m_window.data.soundDuration = 0; // the same pause for tokens of any length
            m_play.due = monotonicMs() + m_window.data.si * 1000;
            m_window.playWav();
            const int longest = 5000 + m_condition.nSamples / (recordingRate / 1000);
            if (!waitFor([this] { return m_play.ended != 0; }, longest))
                qFatal("a sound has not ended");
            m_play.timing = m_window.presentationTimings.first();
            wait(450);
            return m_play;
        }

    private:
        static constexpr int width = 1152;
        static constexpr std::chrono::milliseconds resizeAfter{500};
        static constexpr std::chrono::milliseconds otherComesAfter{150};
        static constexpr std::chrono::milliseconds otherGoesAfter{650};

        Condition m_condition;
        TimerWatch m_timerWatch;
        QTemporaryDir m_folder;
        OperatorWindow m_window;
        QProcess m_listener;
        Play m_play;
    };

    static void print(const QString &name, const StampedRecording &recording,
                      const std::vector<Play> &plays)
    {
        // The clock depends on the periods before the token's end. After it the server goes back to
        // the period that it has without the token.
        constexpr double before = 200; // ms
        constexpr double after = 1;

        size_t sent = 0;
        size_t received = 0;
        int whole = 0;
        int cut = 0;
        int lateClocks = 0;
        int lateServers = 0;
        int lateServersWithGap = 0;
        Statistics begin;
        Statistics zero;
        Statistics regularZero;
        Statistics timer;
        Statistics start;
        for (const Play &play : plays) {
            const HeardPlay heard = findExactly(recording, play);
            sent += static_cast<size_t>(play.token.size());
            received += static_cast<size_t>(heard.token.nSamples);
            timer.add(play.begun - play.due);
            start.add(play.started - play.begun);
            whole += heard.token.whole ? 1 : 0;
            const QString problem = timingProblem(play.timing);
            lateClocks += problem.contains("clock") ? 1 : 0;
            lateServers += problem.contains("server") ? 1 : 0;
            lateServersWithGap += problem.contains("server") && !heard.token.whole ? 1 : 0;
            if (!heard.token.toItsEnd) {
                ++cut;
                continue;
            }
            begin.add(heard.first - play.due);
            zero.add(play.ended - heard.end);
            if (recording.isRegular(heard.end - before, heard.end + after))
                regularZero.add(play.ended - heard.end);
        }
        std::printf(
            "| %s | %.2f %% | %d of %zu | %d | %s | %s | %zu: %s | %s | %s | %d; %d (%d) |\n",
            qPrintable(name), 100.0 * static_cast<double>(received) / static_cast<double>(sent),
            whole, plays.size(), cut, qPrintable(begin.text()), qPrintable(zero.text()),
            regularZero.count(), qPrintable(regularZero.text()), qPrintable(timer.text()),
            qPrintable(start.text()), lateClocks, lateServers, lateServersWithGap);
        std::fflush(stdout);
    }

    int m_nPlays;
};

/// A whole session with a subject who presses a button with the mouse some time after each token.
void measureReactionTimes(int nTrials)
{
    QTemporaryDir folder;
    for (int i = 0; i < nTrials; ++i) {
        if (!writeFile(folder.filePath(QString("MOV001_%1.wav").arg(i)),
                       wavBytes(newNoise(9600 + 1234 * (i % 5)))))
            qFatal("a token cannot be written");
    }

    OperatorWindow window;
    window.show();
    window.lineEditSi->setText("300.000");
    window.checkBoxAutoPlay->setChecked(true);
    window.checkBoxSaveData->setChecked(false);
    {
        ModalAnswer answer;
        answer.choose(folder.path());
        window.pushButtonPractice->click();
    }
    window.pushButtonGo->click();

    std::vector<Play> plays;
    std::vector<double> presses;
    Play play;
    QObject::connect(&window, &MainWindow::soundPlaying,
                     [&](int index) { (index == -1 ? play.ended : play.started) = monotonicMs(); });

    OutputRecording output;
    QTest::mouseClick(window.subjectWindow->findChild<QPushButton *>("pushButtonIAmReady"),
                      Qt::LeftButton);
    auto *const button = window.subjectWindow->findChild<QPushButton *>("pushButtonChoice2");
    for (int trial = 0; trial < nTrials; ++trial) {
        play = Play();
        play.due = monotonicMs();
        if (!waitFor([&] { return play.ended != 0; }, 10000))
            qFatal("a sound has not ended");
        play.token = window.soundWave;
        plays.push_back(play);
        wait(QRandomGenerator::global()->bounded(200, 600));
        QTest::mousePress(button, Qt::LeftButton);
        presses.push_back(monotonicMs());
        QTest::mouseRelease(button, Qt::LeftButton);
    }
    const StampedRecording &recording = output.finish();

    Statistics error;
    for (size_t i = 0; i < plays.size(); ++i) {
        const HeardPlay heard = findExactly(recording, plays[i]);
        if (heard.token.toItsEnd)
            error.add(window.data.entries.at(static_cast<qsizetype>(i)).rt -
                      (presses[i] - heard.end));
    }
    std::printf(
        "\n%d trials of a session, recorded reaction time minus the true one (mean, SD, min "
        ".. max): %s\n",
        nTrials, qPrintable(error.text()));
}

} // namespace

int main(int argc, char *argv[])
{
    if (const std::optional<int> status = recorderMain(argc, argv))
        return *status;
    if (argc == 2 && qstrcmp(argv[1], "--listen") == 0)
        return listen();
    if (argc == 2 && qstrcmp(argv[1], "--burn") == 0) {
        for (volatile unsigned counter = 0;;)
            counter = counter + 1;
    }

    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const int nPlays = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 50;

    const QString wanted = argc > 2 ? argv[2] : "";

    const Measurement measurement(nPlays);
    std::printf("Values are mean, SD, min .. max in ms over %d plays.\n\n", nPlays);
    measurement.printHeader();
    for (const Condition &condition : {
             Condition{"20 ms", 960},
             Condition{"50 ms", 2400},
             Condition{"250 ms", 12000},
             Condition{"251.3 ms", 12062},
             Condition{"1 s", 48000},
             Condition{"5 s", 240000},
             Condition{"250 ms, charts drawn", 12000, true},
             Condition{"1 s, charts drawn", 48000, true},
             Condition{"5 s, window resized after 0.5 s", 240000, true, false, true},
             Condition{"250 ms, one core busy", 12000, false, true},
             Condition{"1 s, charts drawn, one core busy", 48000, true, true},
             Condition{"251.3 ms, another program records at 256", 12062, false, false, false,
                       Condition::OtherRecords},
             Condition{"1 s, another program begins and ends to record at 256", 48000, false, false,
                       false, Condition::OtherComes},
         })
        if (condition.name.contains(wanted))
            measurement.run(condition);
    if (wanted.isEmpty())
        measureReactionTimes(nPlays);
    return EXIT_SUCCESS;
}
