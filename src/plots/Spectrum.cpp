#include "plots/Spectrum.h"

#include <algorithm>
#include <bit>

SpectrumSize spectrumSize(qint32 nSamples, double fs, double upperFrequency)
{
    const auto nFFT =
        nSamples > 0 ? static_cast<qint64>(std::bit_ceil(static_cast<quint64>(nSamples))) : 0;
    const double duration = static_cast<double>(nFFT) / fs;
    const auto bins = std::min(static_cast<qint64>(duration * upperFrequency), nFFT / 2);
    return {nFFT, duration, static_cast<qint32>(bins)};
}
