#pragma once

#include <QtGlobal>

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
