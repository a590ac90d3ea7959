// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Data.h"

#include <QJsonObject>

/// Calls @p visit with the name and the field of each parameter of @p data, a Data or const Data,
/// in the order of the parameters file.
template<typename SomeData, typename Visit>
void forEachParameter(SomeData &data, Visit visit)
{
    visit("fs", data.fs);
    visit("alwaysPlotEntireWaveformFlag", data.alwaysPlotEntireWaveformFlag);
    visit("upperFrequencyToPlot", data.upperFrequencyToPlot);
    visit("outputFilePath", data.outputFilePath);
    visit("wavFilePath", data.wavFilePath);
    visit("subCode", data.subCode);
    visit("outputFileName", data.outputFileName);
    visit("outputFileName_entries", data.outputFileName_entries);
    visit("outputFileName_parameters", data.outputFileName_parameters);
    visit("sesTypeNames", data.sesTypeNames);
    visit("sesTypeIndex", data.sesTypeIndex);
    visit("soundTypeNames", data.soundTypeNames);
    visit("soundTypeIndex", data.soundTypeIndex);
    visit("mainParameterNames", data.mainParameterNames);
    visit("mainParameterIndex", data.mainParameterIndex);
    visit("sesNum", data.sesNum);
    visit("nTimes", data.nTimes);
    visit("si", data.si);
    visit("threshold", data.threshold);
    visit("reactionTime", data.reactionTime);
    visit("saveData", data.saveData);
    visit("feedBack", data.feedBack);
    visit("autoPlay", data.autoPlay);
}

/// The parameters of @p data under their names: numbers, strings, true or false, lists of strings.
QJsonObject parametersToJson(const Data &data);

/// Sets the parameters of @p data to those in @p json, which parametersToJson() has made. One that
/// is missing or of another type becomes 0, empty or false.
void parametersFromJson(const QJsonObject &json, Data &data);
