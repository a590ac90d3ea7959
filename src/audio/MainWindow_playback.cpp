// SPDX-License-Identifier: GPL-3.0-or-later
// The current token: loading it, scheduling and playing it. Declared in app/MainWindow.h.

#include "app/FieldText.h"
#include "app/MainWindow.h"
#include "audio/PresentationDelay.h"
#include "audio/TokenMemory.h"
#include "audio/UnendingBuffer.h"
#include "subject/SubjectWindow.h"

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
#include <string>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// How long a stream can play on while the program is busy: drawing the charts of a token of 5 s in
/// a new size takes up to two seconds. Qt's own choice is 70 to 250 ms.
constexpr std::chrono::microseconds longestBuffer = 10s;

/// How much shorter than the stream the buffer is, because some servers start only when it is full.
constexpr std::chrono::microseconds notBuffered = trailingSilence / 4;

/// What is played is one channel of floats.
constexpr qint64 bytesPerFrame = sizeof(float);

/// Delays from this one on use a coarse timer, which may be 5 % off, as Qt's single shots do.
constexpr std::chrono::milliseconds coarseFrom = 2s;

} // namespace

void MainWindow::genWav()
{
    // Without presentations the order is empty; the operator is still shown the first token.
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
    const std::string file = soundPath.toUtf8().toStdString();
    const qint64 memory = tokenMemory(file);
    const bool loaded =
        canTakeMemory(memory - reusableMemory(currentTokenMemory)) && wav.LoadWav(file);
    const std::optional<TokenSize> size = loaded ? tokenSize(wav) : std::nullopt;
    if (size) {
        currentToken = *size;
        currentTokenMemory = memory;
    }

    data.nSamples = currentToken.nPoints;
    data.soundDuration = currentToken.duration;
    lineEditDuration->setText(millisecondsText(data.soundDuration));
    updateNPointsToPlot();
    sizeSpectrum();
    bool taken = false;
    if (size) {
        if (trialIndex == 0 && playCount == 0)
            soundWave.fill(0.0);
        taken = takeFirstChannel(wav, currentToken.nPoints, soundWave);
    }
    if (!taken)
        qWarning() << "Cannot present" << soundPath << "- the previous sound is played instead.";
    sizeTimeAxis();
}

int MainWindow::playWav()
{
    if (randomSequence.size() > trialIndex) {
        const std::chrono::milliseconds delay = presentationDelay(data.soundDuration, data.si);
        presentationTimer.setTimerType(delay < coarseFrom ? Qt::PreciseTimer : Qt::CoarseTimer);
        presentationTimer.start(delay);
        presentationDue = streamFollower.now() + delay;
    }
    return ++trialIndex;
}

void MainWindow::playOneSound()
{
    if (playCount >= maxPlayCount)
        return;

    releaseAudioOutput(); // the sound of a session that was broken off may still be playing
    const qint64 before = streamFollower.progress().leadingSilence(soundWave.size());
    const auto behind = audioOutputFormat.framesForDuration(trailingSilence.count());
    audioData = new QByteArray(playbackBytes(before, soundWave, behind));
    audioBuffer = new UnendingBuffer(audioData);
    audioBuffer->open(QIODevice::ReadOnly);
    audioSink = new QAudioSink(QMediaDevices::defaultAudioOutput(), audioOutputFormat, this);
    connect(audioSink, SIGNAL(stateChanged(QAudio::State)), this,
            SLOT(handleAudioStateChanged(QAudio::State)));
    audioSink->setBufferSize(std::min<qsizetype>(
        audioOutputFormat.bytesForDuration(longestBuffer.count()),
        audioData->size() - audioOutputFormat.bytesForDuration(notBuffered.count())));
    audioSink->start(audioBuffer);
    streamFollower.follow(before + soundWave.size(), [this] { return readStream(); });

    ++playCount;
    emit soundPlaying(playCount);
}

void MainWindow::handleAudioStateChanged(QAudio::State audioState)
{
    if (audioState == QAudio::StoppedState)
        streamFollower.look();
    // Idle marks the end of neither the token nor the stream: a sink is also idle when it has run
    // out of samples for a moment, and when it has read all of its source but not played it yet.
}

StreamFollower::Reading MainWindow::readStream() const
{
    if (audioSink->state() == QAudio::StoppedState)
        return {.stopped = true};
    const qint64 buffered = audioSink->bufferSize() - audioSink->bytesFree();
    return {.taken = (audioBuffer->pos() - buffered) / bytesPerFrame,
            .played = audioOutputFormat.framesForDuration(audioSink->processedUSecs())};
}

/// Logs that the output has stopped with an error, or that the sound server takes no more samples.
void MainWindow::reportStop() const
{
    if (streamFollower.state() == StreamFollower::State::Stalled ||
        audioSink->error() != QAudio::NoError)
        qWarning() << "Audio stopped unexpectedly";
}

/// The token has been heard: after its last play, starts the reaction clock and lets the subject
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
    const StreamFollower::Time clockStart = streamFollower.now();
    emit soundPlaying(tokenHasEnded);
    keepTiming(clockStart);
}

/// Stores the timing of the presentation with its trial, and logs what was wrong with it.
void MainWindow::keepTiming(StreamFollower::Time clockStart)
{
    const PresentationTiming timing =
        presentationTiming(streamFollower.progress(), presentationDue, clockStart);
    const qint32 trial = trialIndex - 1;
    if (trial >= 0 && trial < presentationTimings.size())
        presentationTimings[trial] = timing;
    const QString problem = timingProblem(timing);
    if (!problem.isEmpty())
        qWarning().noquote() << "Trial" << trialIndex << "-" << problem;
}

void MainWindow::releaseAudioOutput()
{
    // The members are cleared first, because deleting a sink can process events, whose handlers
    // must not find an output that is half released.
    QAudioSink *sink = std::exchange(audioSink, nullptr);
    QBuffer *buffer = std::exchange(audioBuffer, nullptr);
    QByteArray *bytes = std::exchange(audioData, nullptr);
    streamFollower.release();
    if (sink != nullptr) {
        sink->disconnect(this);
        sink->reset(); // stop() may play what is left in the buffer first, and wait for it
        buffer->close();
    }
    delete sink;
    delete buffer;
    delete bytes;
}
