// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/Spectrum.h"

#include "plots/FFTReal.h"

#include <algorithm>
#include <bit>
#include <cmath>

SpectrumSize spectrumSize(qint32 nSamples, double fs, double upperFrequency)
{
    const auto nFFT =
        nSamples > 0 ? static_cast<qint64>(std::bit_ceil(static_cast<quint64>(nSamples))) : 0;
    const double duration = static_cast<double>(nFFT) / fs;
    const auto bins = std::min(static_cast<qint64>(duration * upperFrequency), nFFT / 2);
    return {nFFT, duration, static_cast<qint32>(bins)};
}

void applyWindow(std::span<double> samples, qint32 nSamples, qint32 windowType)
{
    if (windowType == 0)
        return;
    if (windowType != 1) {
        std::fill(samples.begin(), samples.end(), 0.0);
        return;
    }
    constexpr double twoPi = 6.283185307179586;
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] *= 0.5 * (1 - std::cos(twoPi * static_cast<double>(i) / (nSamples - 1)));
}

Spectrum amplitudeSpectrum(std::span<const double> samples, qint32 nSamples, qint64 nFFT,
                           double freqResolution)
{
    if (nFFT < 2)
        return {};

    QList<double> input(nFFT, 0.0);
    std::copy_n(samples.begin(), std::min<qint64>(std::ssize(samples), nFFT), input.begin());
    QList<double> output(nFFT);
    FFTReal<double>(nFFT).do_fft(output.data(), input.constData());

    const qsizetype nBins = nFFT / 2;
    const qint32 halfToken = nSamples / 2;
    const double scale = halfToken;
    Spectrum spectrum = {QList<double>(nBins), QList<double>(nBins), QList<double>(nBins)};
    const double *const real = output.constData();
    const double *const minusImaginary = real + nBins;
    double *const frequencies = spectrum.frequencies.data();
    double *const amplitudes = spectrum.amplitudes.data();
    double *const phases = spectrum.phases.data();
    for (qsizetype bin = 0; bin < nBins; ++bin) {
        const double re = real[bin];
        const double im = -minusImaginary[bin];
        frequencies[bin] = freqResolution * static_cast<double>(bin);
        amplitudes[bin] = std::sqrt(re * re + im * im) / scale;
        phases[bin] = std::atan2(im, re);
    }
    return spectrum;
}
