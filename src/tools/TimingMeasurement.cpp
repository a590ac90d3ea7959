// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TimingMeasurement.h"

#include "timing/SoundRecorder.h"
#include "timing/SoundServerInfo.h"
#include "tools/ExperimentWindow.h"

#include <QEvent>
#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// The lengths of the tokens in samples: 50 ms, 251.3 ms, which is no multiple of what a server
/// takes at a time, and 1 s.
constexpr std::array<int, 3> lengths = {2400, 12062, 48000};

/// The one of the first play. From a shorter one the program does not learn how the server takes a
/// stream.
constexpr int firstLength = 12062;

constexpr auto silentInterval = 250ms;
constexpr auto longestStart = 10s; ///< of the recording
constexpr auto longestDelay = 5s;  ///< of a token's end

/// After the end of a token, until all of it has been recorded.
constexpr auto settle = std::chrono::milliseconds(static_cast<int>(longestRecordedDelay) + 100);

} // namespace

/// The experiment, which notes when its presentation timer fires.
class MeasuredWindow : public ExperimentWindow
{
public:
    MeasuredWindow() { presentationTimer.installEventFilter(this); }

    double timerFired() const { return m_timerFired; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == &presentationTimer && event->type() == QEvent::Timer)
            m_timerFired = monotonicMs();
        return ExperimentWindow::eventFilter(watched, event);
    }

private:
    double m_timerFired = 0;
};

TimingMeasurement::TimingMeasurement(QObject *parent)
    : QObject(parent)
{
    for (QTimer *const timer : {&m_next, &m_deadline}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    m_next.callOnTimeout(this, &TimingMeasurement::takeStep);
    m_deadline.callOnTimeout(this, &TimingMeasurement::giveUp);
}

TimingMeasurement::~TimingMeasurement()
{
    stop();
}

int TimingMeasurement::nPlays() const
{
    return m_options.playsPerLength * static_cast<int>(lengths.size());
}

void TimingMeasurement::start(const Options &options)
{
    stop();
    m_options = options;
    m_options.playsPerLength = std::clamp(options.playsPerLength, 1, mostPlays);
    m_report = {};
    m_nBegun = 0;
    if (!prepare())
        return;
    m_recorder = std::make_unique<SoundRecorder>(m_sourceName);
    m_recording = std::make_unique<StampedRecording>();
    m_window = std::make_unique<MeasuredWindow>();
    connect(m_window.get(), &MainWindow::soundPlaying, this, &TimingMeasurement::takeSignal);
    // Queued, because the window is deleted then.
    connect(
        m_window.get(), &ExperimentWindow::soundFailed, this,
        [this] {
            if (isRunning())
                fail(u"The sound server has stopped playing."_s);
        },
        Qt::QueuedConnection);
    m_window->openOutput();
    m_deadline.start(longestStart);
    takeStep();
}

/// Finds out what is to be recorded; says why when that is not possible.
bool TimingMeasurement::prepare()
{
    const std::optional<SoundServerInfo> server = askSoundServer();
    if (!server) {
        fail(u"There is no sound server, or it does not answer."_s);
        return false;
    }
    if (server->monitor.isEmpty()) {
        fail(u"The sound server has no output, or one that cannot be recorded."_s);
        return false;
    }
    m_report.machine = thisMachine();
    m_report.server = server->name;
    m_report.isInput = !m_options.input.isEmpty();
    m_report.isExact = !m_report.isInput;
    m_report.device = server->output;
    m_sourceName = server->monitor;
    if (!m_report.isInput)
        return true;

    const auto source =
        std::find_if(server->sources.begin(), server->sources.end(),
                     [this](const SoundSource &each) { return each.name == m_options.input; });
    if (source == server->sources.end()) {
        QStringList names;
        for (const SoundSource &each : server->sources)
            names.append(each.name);
        fail(u"There is no input %1. There are: %2."_s.arg(m_options.input, names.join(u", "_s)));
        return false;
    }
    m_report.device = source->description;
    m_sourceName = source->name;
    return true;
}

void TimingMeasurement::stop()
{
    m_next.stop();
    m_deadline.stop();
    // The members are cleared first: the end of a sound may process events.
    const std::unique_ptr<MeasuredWindow> window = std::move(m_window);
    const std::unique_ptr<SoundRecorder> recorder = std::move(m_recorder);
    if (window) {
        window->disconnect(this);
        window->closeOutput();
    }
}

void TimingMeasurement::fail(const QString &reason)
{
    stop();
    emit failed(reason);
}

void TimingMeasurement::giveUp()
{
    fail(m_recording->samples().empty()
             ? u"Nothing is recorded from %1."_s.arg(m_report.device)
             : u"A token has not ended: the sound server does not play it."_s);
}

/// Takes what has been recorded, evaluates the play that it is about, and begins the next one. The
/// first play waits until sound is recorded: what is played before that is lost.
void TimingMeasurement::takeStep()
{
    const std::vector<Fragment> fragments = m_recorder->newFragments();
    m_recording->append(fragments);
    if (m_recording->samples().empty() && !m_recorder->hasFailed()) {
        m_next.start(20ms);
        return;
    }
    if (fragments.empty()) {
        fail(u"%1 cannot be recorded, or not any longer."_s.arg(m_report.device));
        return;
    }
    if (m_nBegun > 0)
        evaluate();
    if (!isRunning())
        return; // stopped by who was told of the play
    if (m_nBegun <= nPlays()) {
        playNext();
        return;
    }
    stop();
    emit finished();
}

void TimingMeasurement::playNext()
{
    const auto index = static_cast<size_t>(m_nBegun + 2) % lengths.size();
    const int length = m_nBegun == 0 ? firstLength : lengths[index];
    ++m_nBegun;
    m_play = {.token = noise(length, QRandomGenerator::global()->generate())};
    m_window->setSound(m_play.token);
    m_window->present(silentInterval);
    m_play.due = std::chrono::duration<double, std::milli>(m_window->dueTime()).count();
    m_deadline.start(silentInterval + longestDelay +
                     std::chrono::milliseconds(length * 1000 / recordingRate));
}

void TimingMeasurement::takeSignal(int index)
{
    const double now = monotonicMs();
    if (index != -1) {
        m_play.begun = m_window->timerFired();
        m_play.started = now;
        return;
    }
    m_play.ended = now;
    m_deadline.stop();
    m_next.start(settle);
}

void TimingMeasurement::evaluate()
{
    const bool isFirst = m_nBegun == 1;
    m_play.timing = m_window->lastTiming();
    HeardPlay heard;
    if (m_report.isExact)
        heard = findExactly(*m_recording, m_play);
    // An output of another rate, or with a volume of its own, does not keep the samples as they
    // are.
    if (isFirst && heard.token.nSamples == 0)
        m_report.isExact = false;
    if (!m_report.isExact)
        heard = findByMatching(*m_recording, m_play);
    m_recording->discardUntil(m_play.ended);
    if (isFirst)
        return;
    m_report.add(playResult(m_play, heard));
    emit played();
}
