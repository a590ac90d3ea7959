// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

/// The part of a token that the waveform chart shows.
struct WaveformSpan
{
    qint32 nPoints;  ///< number of samples shown, from the first on
    double duration; ///< length in seconds
};

/// The span for a token of @p nSamples samples when @p duration seconds are asked for at the
/// sampling rate @p fs (Hz): floor(duration x fs) samples, but the whole token when it is shorter,
/// or when it is longer and @p entireToken is set.
WaveformSpan waveformSpan(double duration, double fs, qint32 nSamples, bool entireToken);
