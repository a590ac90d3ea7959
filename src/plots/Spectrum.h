// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include <span>

/// The sizes of a token's spectrum.
struct SpectrumSize
{
    qint64 nFFT;              ///< transform length: 0 or a power of two
    double duration;          ///< nFFT / fs, in seconds
    qint32 nFreqPointsToPlot; ///< bins below the upper frequency, at most nFFT / 2
};

/// The sizes for a token of @p nSamples samples at the sampling rate @p fs (Hz), plotted up to
/// @p upperFrequency (Hz). The transform length is the smallest power of two not below nSamples,
/// 0 for a token without samples.
SpectrumSize spectrumSize(qint32 nSamples, double fs, double upperFrequency);

/// Weights @p samples in place by the window @p windowType: 0 leaves them alone, 1 is the Hann
/// window 0.5 (1 - cos(2 pi i / (nSamples - 1))), and any other value silences them.
void applyWindow(std::span<double> samples, qint32 nSamples, qint32 windowType);

/// One entry per bin from 0 to below the Nyquist frequency.
struct Spectrum
{
    QList<double> frequencies; ///< Hz
    QList<double> amplitudes;  ///< linear: a sine of amplitude 1 that fills the token shows 1
    QList<double> phases;      ///< radians, -pi to pi
};

/// The spectrum of @p samples, cut or padded with zeros to @p nFFT (a power of two, or 0).
/// Amplitudes are scaled by the integer @p nSamples / 2 of the token, not by the transform's
/// length. In bin 0 the Nyquist term takes the place of the imaginary part, so its amplitude
/// combines the sum of the samples with that term. Empty when nFFT is below 2; otherwise nSamples
/// must be 2 or more. @p freqResolution is the distance between bins in Hz.
Spectrum amplitudeSpectrum(std::span<const double> samples, qint32 nSamples, qint64 nFFT,
                           double freqResolution);
