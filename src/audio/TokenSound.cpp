// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/TokenSound.h"

#include "audio/CWav.h"

#include <algorithm>
#include <limits>

std::optional<TokenSize> tokenSize(const CWav &wav)
{
    if (wav.numChannels == 0 || wav.sampleRate == 0)
        return std::nullopt;
    const std::uint32_t nPoints = wav.numSamples / wav.numChannels;
    if (nPoints == 0 || nPoints > std::numeric_limits<qint32>::max() ||
        wav.sampleVector.size() < wav.numSamples)
        return std::nullopt;
    const double duration = static_cast<double>(nPoints) / wav.sampleRate;
    if (duration > longestToken)
        return std::nullopt;
    return TokenSize{static_cast<qint32>(nPoints), duration};
}

bool canTakeFirstChannel(std::uint16_t numChannels)
{
    return numChannels == 1 || numChannels == 2;
}

bool takeFirstChannel(const CWav &wav, qint32 nPoints, QList<double> &soundWave)
{
    soundWave.resize(nPoints);
    if (!canTakeFirstChannel(wav.numChannels))
        return false;
    for (qsizetype i = 0; i < nPoints; ++i)
        soundWave[i] = wav.samples[i * wav.numChannels];
    return true;
}

QByteArray playbackBytes(qsizetype before, std::span<const double> soundWave, qsizetype behind)
{
    QList<float> samples(before + std::ssize(soundWave) + behind, 0.0F);
    std::transform(soundWave.begin(), soundWave.end(), samples.begin() + before,
                   [](double sample) { return static_cast<float>(sample); });
    return {reinterpret_cast<const char *>(samples.constData()),
            samples.size() * qsizetype{sizeof(float)}};
}
