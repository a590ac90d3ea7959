// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Noise.h"

#include "support/WavFile.h"

QByteArray wavBytes(const QList<double> &samples)
{
    QByteArray data;
    for (const double sample : samples)
        data += WavBytes::little(static_cast<std::uint32_t>(qRound(sample * 32768)), 2);
    return WavBytes{.data = data}.bytes();
}
