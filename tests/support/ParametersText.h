// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The text of a parameters file: what is not named has the value that the program starts with,
/// or is empty.
struct ParametersText
{
    QString fs = "48000";
    QString alwaysPlotEntireWaveformFlag = "1";
    QString upperFrequencyToPlot = "2000";
    QString outputFilePath = {};
    QString wavFilePath = {};
    QString subCode = "CHD001";
    QString outputFileName = {};
    QString outputFileName_entries = {};
    QString outputFileName_parameters = {};
    QString sesTypeNames = "practice, experiment";
    QString sesTypeIndex = "0";
    QString soundTypeNames = ".wav files, reserved";
    QString soundTypeIndex = "0";
    QString mainParameterNames = "sound files, reserved";
    QString mainParameterIndex = "0";
    QString sesNum = "1";
    QString nTimes = "1";
    QString si = "1";
    QString threshold = "0";
    QString reactionTime = "0";
    QString saveData = "1";
    QString feedBack = "1";
    QString autoPlay = "1";

    /// The file: a line for each, LF after every one but the last.
    QByteArray bytes() const
    {
        const QStringList lines = {
            "fs: " + fs,
            "alwaysPlotEntireWaveformFlag: " + alwaysPlotEntireWaveformFlag,
            "upperFrequencyToPlot: " + upperFrequencyToPlot,
            "outputFilePath: " + outputFilePath,
            "wavFilePath: " + wavFilePath,
            "subCode: " + subCode,
            "outputFileName: " + outputFileName,
            "outputFileName_entries: " + outputFileName_entries,
            "outputFileName_parameters: " + outputFileName_parameters,
            "sesTypeNames: " + sesTypeNames,
            "sesTypeIndex: " + sesTypeIndex,
            "soundTypeNames: " + soundTypeNames,
            "soundTypeIndex: " + soundTypeIndex,
            "mainParameterNames: " + mainParameterNames,
            "mainParameterIndex: " + mainParameterIndex,
            "sesNum: " + sesNum,
            "nTimes: " + nTimes,
            "si: " + si,
            "threshold: " + threshold,
            "reactionTime: " + reactionTime,
            "saveData: " + saveData,
            "feedBack: " + feedBack,
            "autoPlay: " + autoPlay,
        };
        return lines.join('\n').toUtf8();
    }
};
