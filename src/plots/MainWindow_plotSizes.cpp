// SPDX-License-Identifier: GPL-3.0-or-later
// How much of the current token the charts show, and the lists that hold it. Declared in
// app/MainWindow.h.

#include "app/MainWindow.h"
#include "plots/Spectrum.h"
#include "plots/WaveformSpan.h"

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

/// Sizes the spectrum for the current token and the lists that hold it.
void MainWindow::sizeSpectrum()
{
    const SpectrumSize size = spectrumSize(data.nSamples, data.fs, data.upperFrequencyToPlot);
    nFFT = size.nFFT;
    fftDuration = size.duration;
    data.nFreqPointsToPlot = size.nFreqPointsToPlot;
    for (QList<double> *list : {&frequencies, &amplitudes, &phases})
        list->resize(nFFT / 2);
    spectrumPoints.resize(data.nFreqPointsToPlot);
}
