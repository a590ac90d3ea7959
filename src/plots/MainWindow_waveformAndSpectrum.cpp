// SPDX-License-Identifier: GPL-3.0-or-later
// The waveform and spectrum charts of the current token. Declared in app/MainWindow.h.

#include "app/MainWindow.h"
#include "plots/PlotPoints.h"
#include "plots/Spectrum.h"

#include <QChartView>
#include <QGridLayout>
#include <QLineSeries>
#include <QValueAxis>

using namespace Qt::StringLiterals;

namespace {

constexpr int leastChartWidth = 200;

} // namespace

void MainWindow::displayEmptyWav()
{
    if (waveformChart.view != nullptr)
        return;
    waveformChart = createLineChart({u"Time Waveform"_s, u"Time (ms)"_s, u"Amplitude"_s},
                                    chartFonts, leastChartWidth);
    gridLayoutPlots->addWidget(waveformChart.view, 0, 0, 1, 1);
}

void MainWindow::displayEmptyFFT()
{
    if (spectrumChart.view != nullptr)
        return;
    spectrumChart = createLineChart({u"Amplitude Spectrum"_s, u"Frequency (Hz)"_s, u"Amplitude"_s},
                                    chartFonts, leastChartWidth);
    spectrumChart.horizontalAxis->setRange(0, data.upperFrequencyToPlot);
    spectrumChart.horizontalAxis->setLabelFormat(u"%.0f"_s);
    spectrumChart.verticalAxis->setRange(0, 1);
    gridLayoutPlots->addWidget(spectrumChart.view, 1, 0, 1, 1);
}

void MainWindow::displayWav()
{
    updateNPointsToPlot();
    wavePoints = plotPoints(timeAxis, soundWave, data.nPointsToPlot);
    const Range values = valueRange(soundWave);
    waveRange = {values.min, values.max};
    showLine(waveformChart, wavePoints, {0, data.nPointsToPlot / data.fs * 1000}, values);
}

void MainWindow::genFFT()
{
    applyWindow(soundWave, data.nSamples, fftWindowType);
    fftDuration = static_cast<double>(nFFT) / data.fs;
    freqResolution = 1 / fftDuration;
    Spectrum spectrum = amplitudeSpectrum(soundWave, data.nSamples, nFFT, freqResolution);
    frequencies.swap(spectrum.frequencies);
    amplitudes.swap(spectrum.amplitudes);
    phases.swap(spectrum.phases);
}

void MainWindow::displayFFT()
{
    spectrumPoints = plotPoints(frequencies, amplitudes, data.nFreqPointsToPlot);
    const Range values = valueRange(amplitudes);
    spectrumRange = {values.min, values.max};
    const QValueAxis *frequencyAxis = spectrumChart.horizontalAxis;
    showLine(spectrumChart, spectrumPoints, {frequencyAxis->min(), frequencyAxis->max()}, values);
}
