// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "timing/NoiseToken.h"

#include <QList>

#include <optional>
#include <span>

/// A token in a recording of it that is no exact copy.
struct MatchedToken
{
    HeardToken token;
    double end = 0;         ///< where its last sample is over, in samples, with their fractions
    double correlation = 0; ///< of the end of the token with the recording there, up to 1
};

/// Finds @p token, which is noise, in @p recording, which may come from a microphone at a
/// loudspeaker: attenuated, limited in its band, with reversed polarity, with an echo and among
/// other sounds, and with a rate that is off by up to 0.02 %. Nothing when the last 250 ms of the
/// token do not correlate with any part of the recording clearly more than other noise would.
///
/// Of several copies the first one counts that is nearly as strong as the strongest: sound that
/// reaches the microphone directly is heard before its echo. What was heard of the token is counted
/// in blocks, which are 10 ms long where the recording is good, and longer where it is not; a block
/// that lies more than 1 ms from its place does not count.
std::optional<MatchedToken> matchToken(std::span<const float> recording,
                                       const QList<double> &token);
