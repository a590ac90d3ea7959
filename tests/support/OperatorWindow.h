// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/MainWindow.h"

/// The operator's window with the protected members that tests use made public.
class OperatorWindow : public MainWindow
{
    Q_OBJECT

public:
    using MainWindow::MainWindow;

    using MainWindow::centerAndResizeMainWindow;
    using MainWindow::computeResults;
    using MainWindow::disableAllComponents;
    using MainWindow::displayEmptyFFT;
    using MainWindow::displayEmptyTrend;
    using MainWindow::displayEmptyWav;
    using MainWindow::displayFFT;
    using MainWindow::displayWav;
    using MainWindow::finishIt;
    using MainWindow::genFFT;
    using MainWindow::genWav;
    using MainWindow::getParameters;
    using MainWindow::initDataEntries;
    using MainWindow::playWav;
    using MainWindow::updateStatusString;
    using MainWindow::updateTrend;
    using MainWindow::writeDataToTxt;

    using MainWindow::audioBuffer;
    using MainWindow::audioData;
    using MainWindow::audioOutputFormat;
    using MainWindow::audioSink;
    using MainWindow::currentToken;
    using MainWindow::currentTokenMemory;
    using MainWindow::data;
    using MainWindow::nTimesSeq;
    using MainWindow::nTokens;
    using MainWindow::playCount;
    using MainWindow::presentationTimer;
    using MainWindow::presentationTimings;
    using MainWindow::randomSequence;
    using MainWindow::reactionTimer;
    using MainWindow::readStream;
    using MainWindow::silentStream;
    using MainWindow::soundWave;
    using MainWindow::streamFollower;
    using MainWindow::subjectWindow;
    using MainWindow::tokenIndex;
    using MainWindow::trialIndex;

    using MainWindow::amplitudes;
    using MainWindow::chartFonts;
    using MainWindow::fftDuration;
    using MainWindow::fftWindowType;
    using MainWindow::freqResolution;
    using MainWindow::frequencies;
    using MainWindow::nFFT;
    using MainWindow::phases;
    using MainWindow::spectrumChart;
    using MainWindow::spectrumPoints;
    using MainWindow::spectrumRange;
    using MainWindow::timeAxis;
    using MainWindow::trendChart;
    using MainWindow::trendPoints;
    using MainWindow::trendRange;
    using MainWindow::trendX;
    using MainWindow::trendY;
    using MainWindow::waveformChart;
    using MainWindow::wavePoints;
    using MainWindow::waveRange;

    using MainWindow::comboBoxMainParameter;
    using MainWindow::comboBoxSesType;
    using MainWindow::comboBoxSoundType;
    using MainWindow::gridLayoutControls;
    using MainWindow::gridLayoutMain;
    using MainWindow::gridLayoutPlots;
    using MainWindow::labelMainParameter;
    using MainWindow::labelSesType;
    using MainWindow::labelSoundType;
    using MainWindow::rowLayouts;

    using MainWindow::checkBoxAutoPlay;
    using MainWindow::checkBoxFeedBack;
    using MainWindow::checkBoxSaveData;
    using MainWindow::lineEditNTimes;
    using MainWindow::lineEditOutputFileName;
    using MainWindow::lineEditOutputFilePath;
    using MainWindow::lineEditSesNum;
    using MainWindow::lineEditSi;
    using MainWindow::lineEditStatus;
    using MainWindow::lineEditSubCode;
    using MainWindow::lineEditWavFileName;
    using MainWindow::lineEditWavFilePath;
    using MainWindow::pushButtonExperiment;
    using MainWindow::pushButtonGo;
    using MainWindow::pushButtonPractice;
    using MainWindow::pushButtonQuit;
};
