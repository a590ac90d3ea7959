// SPDX-License-Identifier: GPL-3.0-or-later
// The session parameters and the controls that show them. Declared in app/MainWindow.h.

#include "app/FieldText.h"
#include "app/MainWindow.h"
#include "audio/ServerPeriod.h"

#include <QAudioDevice>
#include <QCheckBox>
#include <QComboBox>
#include <QDebug>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMediaDevices>
#include <QPushButton>

#include <cmath>

using namespace Qt::StringLiterals;

void MainWindow::initParameters()
{
    showParameters();
    initPlots();
    initPlaying();
}

/// Copies the parameters into the controls and sets which of them the operator may use.
void MainWindow::showParameters()
{
    comboBoxSesType->addItems(data.sesTypeNames);
    comboBoxSoundType->addItems(data.soundTypeNames);
    comboBoxMainParameter->addItems(data.mainParameterNames);
    data.sesTypeIndex = 0;
    data.soundTypeIndex = 0;
    data.mainParameterIndex = 0;
    for (QComboBox *comboBox : {comboBoxSesType, comboBoxSoundType, comboBoxMainParameter})
        comboBox->setCurrentIndex(0);

    lineEditDuration->setText(millisecondsText(data.soundDuration));
    checkBoxSaveData->setChecked(data.saveData);
    checkBoxFeedBack->setChecked(data.feedBack);
    checkBoxAutoPlay->setChecked(data.autoPlay);
    lineEditSi->setText(millisecondsText(data.si));
    lineEditWavFilePath->setText(data.wavFilePath);
    lineEditWavFileName->setText(data.wavFileName);
    lineEditOutputFilePath->setText(data.outputFilePath);
    updateOutputFilePath();
    updateOutputFileName();
    lineEditSubCode->setText(data.subCode);
    lineEditSesNum->setText(QString::number(data.sesNum));
    lineEditNTimes->setText(QString::number(data.nTimes));
    lineEditFs->setText(QString::number(data.fs));
    for (QLineEdit *lineEdit :
         {lineEditDuration, lineEditSi, lineEditWavFilePath, lineEditWavFileName,
          lineEditOutputFilePath, lineEditOutputFileName, lineEditStatus, lineEditFs})
        lineEdit->setEnabled(false);

    pushButtonPractice->setEnabled(true);
    pushButtonExperiment->setEnabled(false);
    pushButtonGo->setEnabled(false);
    lineEditStatus->setText(u"not started yet"_s);
}

/// Sizes the lists that the charts show by the parameters, and sets the charts' fonts.
void MainWindow::initPlots()
{
    timeAxis.resize(data.nPointsToPlot);
    data.alwaysPlotEntireWaveformFlag = 1;
    data.nPointsToPlot = static_cast<qint32>(std::floor(data.fs * data.durationToPlot));
    wavePoints.resize(data.nPointsToPlot);
    waveRange.resize(2);
    spectrumRange.resize(2);
    trendPoints.resize(nTokens);
    sizeSpectrum();

    chartFonts.axisLabels.setPixelSize(10);
    chartFonts.axisTitles.setPixelSize(10);
    chartFonts.title.setPixelSize(12);
    for (QFont *font : {&chartFonts.axisLabels, &chartFonts.axisTitles, &chartFonts.title})
        font->setWeight(QFont::Normal);
}

/// Sets the playback format and checks whether the output supports it.
void MainWindow::initPlaying()
{
    maxPlayCount = 1;
    reactionTimer = new QElapsedTimer;

    requestServerPeriod(); // first: the check below opens the connection to the sound server
    audioOutputFormat.setSampleRate(static_cast<int>(data.fs));
    audioOutputFormat.setChannelCount(1);
    audioOutputFormat.setSampleFormat(QAudioFormat::Float);
    if (!QMediaDevices::defaultAudioOutput().isFormatSupported(audioOutputFormat))
        qWarning() << "Raw audio format not supported by backend, cannot play audio.";
}

void MainWindow::getParameters()
{
    data.sesTypeIndex = comboBoxSesType->currentIndex();
    data.soundTypeIndex = comboBoxSoundType->currentIndex();
    data.mainParameterIndex = comboBoxMainParameter->currentIndex();
    data.fs = lineEditFs->text().toDouble();
    data.soundDuration = secondsOfMillisecondsText(lineEditDuration->text());
    data.si = secondsOfMillisecondsText(lineEditSi->text());
    data.saveData = checkBoxSaveData->isChecked();
    data.wavFilePath = lineEditWavFilePath->text();
    data.wavFileName = lineEditWavFileName->text();
    data.subCode = lineEditSubCode->text();
    data.sesNum = intOrZero(lineEditSesNum->text());
    data.nTimes = intOrZero(lineEditNTimes->text());
    data.feedBack = checkBoxFeedBack->isChecked();
    data.autoPlay = checkBoxAutoPlay->isChecked();
    data.outputFilePath = data.desktopPath + u'/' + data.subCode;
    data.outputFileName = lineEditOutputFileName->text();
    // The field has only three decimals, so about 43 % of all token lengths come back one sample
    // short; a token of 96 kHz comes back with half its samples, because the session's rate is used
    // here. This must not cut a sound: all of soundWave is played whatever nSamples says.
    data.nSamples = static_cast<qint32>(std::floor(data.soundDuration * data.fs));
    updateNPointsToPlot();
}
