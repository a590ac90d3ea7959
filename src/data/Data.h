// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Entry.h"
#include "data/Record.h"

#include <QList>
#include <QString>
#include <QStringList>

/// The indexes into the names of the session types.
enum SessionType { PracticeSession, ExperimentSession };

/// Everything a session knows: its parameters, paths, tallies and trials. The main window owns the
/// one object; durations are in seconds, frequencies in Hz.
class Data
{
public:
    Data();

    double fs = 48000.0;                     ///< sampling rate of playing and plotting
    double soundDuration = 0.25;             ///< duration of the current token
    qint32 nSamples = 12000;                 ///< samples per channel of the current token
    double durationToPlot = 0.25;            ///< length of the waveform plot
    qint32 nPointsToPlot = 12000;            ///< number of waveform points plotted
    qint32 alwaysPlotEntireWaveformFlag = 0; ///< nonzero: plot the whole token
    double upperFrequencyToPlot = 2000.0;    ///< right end of the spectrum plot
    qint32 nFreqPointsToPlot = 500;          ///< number of spectrum bins plotted
    QString desktopPath;                     ///< base folder of sounds and results
    QString outputFilePath;                  ///< folder proposed for the result files; after a
                                             ///< save, the full path of the records file
    QString wavFilePath;                     ///< folder of the sound tokens
    QString subCode;                         ///< subject code
    QString outputFileName;                  ///< name of the records file
    QString outputFileName_entries;          ///< name of the entries file
    QString outputFileName_parameters;       ///< name of the parameters file
    QStringList sesTypeNames;
    qint32 sesTypeIndex = 0; ///< index into sesTypeNames
    QStringList soundTypeNames;
    qint32 soundTypeIndex = 0; ///< index into soundTypeNames
    QStringList mainParameterNames;
    qint32 mainParameterIndex = 0; ///< index into mainParameterNames
    qint32 sesNum = 1;             ///< session number
    qint32 nTimes = 1;             ///< presentations of each token
    double si = 1.0;               ///< silent interval between presentations
    QString wavFileName;           ///< file name of the token being presented
    QList<Record> records;         ///< one per token, in the order of the folder listing
    QList<Entry> entries;          ///< one per presentation, in presentation order
    double threshold = 0.0;        ///< reserved result slot, never assigned
    double reactionTime = 0.0;     ///< reserved result slot, never assigned
    bool saveData = true;          ///< write the result files when data collection ends
    bool feedBack = true;          ///< show the subject whether an answer was correct
    bool autoPlay = true;          ///< play the next token without waiting for "Next"
};
