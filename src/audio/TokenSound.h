// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <optional>
#include <span>

class CWav;

/// The longest token that is presented, in seconds. A header may declare a sampling rate by which
/// an ordinary file lasts for weeks, and the subject would wait all that time.
inline constexpr double longestToken = 3600.0;

/// The size of a token's sound, per channel.
struct TokenSize
{
    qint32 nPoints = 0;    ///< number of samples
    double duration = 0.0; ///< seconds at the file's own sampling rate
};

/// The size of the sound in @p wav, or nothing when it cannot be presented: no channel, no sampling
/// rate, no sample, fewer samples than the header declares, more than an int counts, or more than
/// longestToken seconds of them.
std::optional<TokenSize> tokenSize(const CWav &wav);

/// Whether a sound of @p numChannels channels is presented: mono is, and stereo by its left
/// channel.
bool canTakeFirstChannel(std::uint16_t numChannels);

/// Makes @p soundWave @p nPoints long and copies the first channel of @p wav into it. When it
/// cannot be taken, nothing is copied, the list keeps what it held, and the answer is false.
bool takeFirstChannel(const CWav &wav, qint32 nPoints, QList<double> &soundWave);

/// @p soundWave as 32-bit floats in native byte order, unscaled and unclipped, with @p before zeros
/// before it and @p behind zeros behind it.
QByteArray playbackBytes(qsizetype before, std::span<const double> soundWave, qsizetype behind);
