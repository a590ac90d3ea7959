// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <span>

/// Samples whose magnitude stays below this are silence: -60 dBFS.
inline constexpr double silenceLimit = 0.001;

/// So many samples in a row at the limit of their range are taken for clipped ones. A recording
/// that has been brought to full scale reaches it for a sample or two.
inline constexpr qsizetype shortestClip = 3;

/// What can be measured of a sound. Values are relative to full scale, which is 1.
struct SoundMeasures
{
    qsizetype nSamples = 0;
    double peak = 0; ///< the largest magnitude
    double mean = 0;
    double rms = 0;              ///< root mean square, of all samples; a full-scale sine has 0.707
    double last = 0;             ///< the last sample
    qsizetype silentAtStart = 0; ///< samples of silence before the first other one
    qsizetype silentAtEnd = 0;   ///< the same at the end; both are all samples of a silent sound
    qsizetype clipped = 0;       ///< samples in runs of at least shortestClip at the limit

    bool isSilent() const { return silentAtStart == nSamples; }

    bool operator==(const SoundMeasures &) const = default;
};

/// Measures every @p stride th of @p samples, from the first one on. Samples are at the limit of
/// their range when their magnitude is @p limit or more.
SoundMeasures measureSound(std::span<const double> samples, qsizetype stride, double limit);

/// The largest magnitude that both signs of a sample of @p bits bits have.
double sampleLimit(int bits);

/// A value relative to full scale in dB: 0 dB is 1, and minus infinity is 0.
double decibels(double value);
