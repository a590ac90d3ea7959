// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/WaveformSpan.h"

#include <cmath>

WaveformSpan waveformSpan(double duration, double fs, qint32 nSamples, bool entireToken)
{
    const auto nPoints = static_cast<qint32>(std::floor(duration * fs));
    if (nSamples < nPoints || (nSamples > nPoints && entireToken))
        return {nSamples, nSamples / fs};
    return {nPoints, duration};
}
