// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/ExperimentWindow.h"

#include "audio/SilentStream.h"

#include <QValueAxis>

ExperimentWindow::ExperimentWindow(QWidget *parent)
    : MainWindow(parent)
{
    connect(&streamFollower, &StreamFollower::stalled, this, &ExperimentWindow::soundFailed);
}

bool ExperimentWindow::loadToken(const QString &folder, const QString &fileName)
{
    stopSound();
    Record record;
    record.filePath = folder;
    record.filename = fileName;
    data.records = {record};
    randomSequence = {0};
    trialIndex = 0;
    playCount = 0;

    // A token that cannot be presented leaves the previous one in place, and here is none.
    currentToken = {};
    soundWave.clear();
    genWav();
    if (soundWave.isEmpty() || !canTakeFirstChannel(wav.numChannels)) {
        clearSound();
        return false;
    }
    displayWav();
    genFFT();
    displayFFT();
    return true;
}

void ExperimentWindow::setSound(const QList<double> &samples)
{
    stopSound();
    soundWave = samples;
}

void ExperimentWindow::clearSound()
{
    setSound({});
    for (const LineChart &chart : {waveformChart, spectrumChart})
        showLine(chart, {}, {chart.horizontalAxis->min(), chart.horizontalAxis->max()}, {0, 1});
}

void ExperimentWindow::openOutput()
{
    if (!isOutputOpen())
        silentStream = std::make_unique<SilentStream>(audioOutputFormat);
}

void ExperimentWindow::closeOutput()
{
    stopSound();
    silentStream.reset();
}

void ExperimentWindow::present(std::chrono::milliseconds pause)
{
    stopSound();
    if (soundWave.isEmpty())
        return;
    randomSequence = {0};
    trialIndex = 0;
    playCount = 0;
    presentationTimings = {PresentationTiming()};
    data.soundDuration = 0; // the pause of a session depends on the token's length
    data.si = std::chrono::duration<double>(pause).count();
    playWav();
}

void ExperimentWindow::stopSound()
{
    presentationTimer.stop();
    releaseAudioOutput();
}

bool ExperimentWindow::isPresenting() const
{
    return presentationTimer.isActive() || audioSink != nullptr;
}
