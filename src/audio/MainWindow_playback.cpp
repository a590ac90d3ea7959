// The current token: loading it, scheduling and playing it. Declared in app/MainWindow.h.

#include "app/FieldText.h"
#include "app/MainWindow.h"
#include "app/PresentationOrder.h"
#include "plots/WaveformSpan.h"

#include <QAudioDevice>
#include <QAudioSink>
#include <QBuffer>
#include <QDebug>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMediaDevices>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// How long a stream may go on when the program is held up, as it is for up to two seconds when the
/// charts of a token of 5 s are drawn in a new size. Qt's own choice is 70 to 250 ms.
constexpr std::chrono::microseconds longestBuffer = 10s;

/// What stays out of the buffer: a server may wait until it is full before it begins to play, so
/// that there must always be more.
constexpr std::chrono::microseconds notBuffered = trailingSilence / 4;

/// How long a server may take no samples before the operator is told: longer than one takes to wake
/// an output up. Qt 6.11 does not tell that the server has died while a token plays.
constexpr std::chrono::milliseconds longestStall = 5s;

} // namespace

void MainWindow::genWav()
{
    // Without presentations the order is empty; the first token is still shown to the operator.
    tokenIndex = randomSequence.value(trialIndex, 0);
    const Record &record = data.records.at(tokenIndex);
    data.wavFilePath = record.filePath;
    data.wavFileName = record.filename;
    if (trialIndex < data.entries.size()) {
        Entry &entry = data.entries[trialIndex];
        entry.filePath = record.filePath;
        entry.filename = record.filename;
    }

    soundPath = data.wavFilePath + u'/' + data.wavFileName;
    const bool loaded = wav.LoadWav(soundPath.toUtf8().toStdString());
    const std::optional<TokenSize> size = loaded ? tokenSize(wav) : std::nullopt;
    if (size)
        currentToken = *size;
    else
        qWarning() << "Cannot present" << soundPath << "- the previous sound is played instead.";

    data.nSamples = currentToken.nPoints;
    data.soundDuration = currentToken.duration;
    lineEditDuration->setText(millisecondsText(data.soundDuration));
    updateNPointsToPlot();
    sizeSpectrum();
    if (size) {
        if (trialIndex == 0 && playCount == 0)
            soundWave.fill(0.0);
        takeFirstChannel(wav, currentToken.nPoints, soundWave);
    }
    sizeTimeAxis();
}

void MainWindow::updateNPointsToPlot()
{
    const WaveformSpan span = waveformSpan(data.durationToPlot, data.fs, data.nSamples,
                                           data.alwaysPlotEntireWaveformFlag != 0);
    data.nPointsToPlot = span.nPoints;
    data.durationToPlot = span.duration;
}

void MainWindow::sizeTimeAxis()
{
    timeAxis.resize(data.nPointsToPlot);
    for (qsizetype i = 0; i < timeAxis.size(); ++i)
        timeAxis[i] = static_cast<double>(i) * (1 / data.fs * 1000);
}

int MainWindow::playWav()
{
    if (randomSequence.size() > trialIndex) {
        // A session that is broken off keeps its scheduled token, but once another one has been
        // prepared that token must not sound in it.
        QTimer::singleShot(presentationDelay(data.soundDuration, data.si), this,
                           [this, preparation = nPreparations] {
                               if (preparation == nPreparations)
                                   playOneSound();
                           });
    }
    return ++trialIndex;
}

void MainWindow::playOneSound()
{
    if (playCount >= maxPlayCount)
        return;

    releaseAudioOutput(); // the sound of a session that was broken off may still be there
    const qint64 before = streamProgress.leadingSilence(soundWave.size());
    const auto behind = audioOutputFormat.framesForDuration(trailingSilence.count());
    audioData = new QByteArray(playbackBytes(before, soundWave, behind));
    audioBuffer = new QBuffer(audioData);
    audioBuffer->open(QIODevice::ReadOnly);
    audioSink = new QAudioSink(QMediaDevices::defaultAudioOutput(), audioOutputFormat, this);
    connect(audioSink, SIGNAL(stateChanged(QAudio::State)), this,
            SLOT(handleAudioStateChanged(QAudio::State)));
    audioSink->setBufferSize(std::min<qsizetype>(
        audioOutputFormat.bytesForDuration(longestBuffer.count()),
        audioData->size() - audioOutputFormat.bytesForDuration(notBuffered.count())));
    stallTimer->start(longestStall);
    audioSink->start(audioBuffer);
    handleAudioStateChanged(audioSink->state()); // some versions fail to start without a word
    streamProgress.start(before + soundWave.size());
    followStream();

    ++playCount;
    emit soundPlaying(playCount);
}

void MainWindow::handleAudioStateChanged(QAudio::State audioState)
{
    // A late notification may be of an output that has been released.
    if (audioSink != nullptr && audioState == QAudio::StoppedState &&
        audioSink->error() != QAudio::NoError)
        reportStop();
    // Idle tells neither the end of a sound, nor of the stream: a sink is idle as well when it has
    // run dry for a moment, and when it has read its source with all of that still in its buffer.
}

/// The output has stopped, or seems to. Disconnecting makes it a single warning however often that
/// is told.
void MainWindow::reportStop()
{
    stallTimer->stop();
    if (audioSink->disconnect(this))
        qWarning() << "Audio stopped unexpectedly";
}

qint64 MainWindow::nFramesTaken() const
{
    const qint64 buffered = audioSink->bufferSize() - audioSink->bytesFree();
    return (audioBuffer->pos() - buffered) / audioOutputFormat.bytesPerFrame();
}

/// Looks every millisecond how much of the stream has been taken, and ends the sound when the token
/// has been heard whole. A stream that stops by itself is not followed any further.
void MainWindow::followStream()
{
    if (audioSink->state() == QAudio::StoppedState)
        return;
    const qint64 takenBefore = streamProgress.taken();
    const std::optional<qint64> unheard = streamProgress.unheard(
        nFramesTaken(), audioOutputFormat.framesForDuration(audioSink->processedUSecs()));
    if (streamProgress.taken() > takenBefore)
        stallTimer->start();
    const auto wait = unheard ? std::chrono::microseconds(audioOutputFormat.durationForFrames(
                                    static_cast<qint32>(*unheard)))
                              : 1ms;
    // Events are processed while a sink is deleted: what waits for it must not meet another one.
    QTimer::singleShot(std::chrono::round<std::chrono::milliseconds>(wait), Qt::PreciseTimer,
                       audioSink, [this, sink = audioSink, heard = unheard.has_value()] {
                           if (audioSink != sink || sink->state() == QAudio::StoppedState)
                               return;
                           if (!heard) {
                               followStream();
                               return;
                           }
                           // Releasing the output may take some 10 ms: the clock must not wait.
                           endSound();
                           releaseAudioOutput();
                       });
}

/// The token has been heard: after the last play the reaction clock runs and the subject may
/// answer.
void MainWindow::endSound()
{
    if (playCount != maxPlayCount)
        return;
    if (reactionTimerStarts == 0)
        reactionTimer->start();
    else
        reactionTimer->restart();
    ++reactionTimerStarts;
    emit soundPlaying(-1);
}

/// Silences and deletes what plays, if anything does. The members are cleared first: deleting a
/// sink can process events, and what they call must find nothing half released.
void MainWindow::releaseAudioOutput()
{
    QAudioSink *sink = std::exchange(audioSink, nullptr);
    QBuffer *buffer = std::exchange(audioBuffer, nullptr);
    QByteArray *bytes = std::exchange(audioData, nullptr);
    if (sink != nullptr) {
        stallTimer->stop();
        sink->disconnect(this);
        sink->reset(); // stop() may play what is left in the buffer first, and wait for it
        buffer->close();
    }
    delete sink;
    delete buffer;
    delete bytes;
}
