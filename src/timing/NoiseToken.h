// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include <span>

/// Noise that occurs nowhere else, so that it can be found in a recording. Its samples are exact as
/// 32-bit floats and in 16 bits, and none is 0.
QList<double> noise(qsizetype nSamples, quint32 seed);

/// What a recording holds of a token of noise.
struct HeardToken
{
    qsizetype length = 0;          ///< the token's samples
    qsizetype nSamples = 0;        ///< how many of them were heard, in their order
    bool fromItsBeginning = false; ///< the first one among them
    bool toItsEnd = false;         ///< the last one among them
    bool whole = false;            ///< all of them, without a gap
    size_t first = 0;              ///< where in the recording the first one heard is
    size_t last = 0;               ///< where the last one heard is

    /// Whether the token was heard from its beginning to its end, but something in between is
    /// missing or was put in. This is the effect of a sound server that stalls, and not of a sound
    /// that was cut.
    bool hasGap() const { return fromItsBeginning && toItsEnd && !whole; }

    /// Tells how much was heard.
    QString text() const;
};

/// Finds @p token, which is noise, in @p recording. Other sounds may be there as well.
HeardToken findToken(std::span<const float> recording, const QList<double> &token);
