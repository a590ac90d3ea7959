// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include <optional>

/// The largest number of presentations that a session may have. It is far more than anybody can
/// listen to, and keeps a mistyped "N times per token" from exhausting the memory.
inline constexpr int maxPresentations = 1'000'000;

/// The number of presentations of a session: @p nTokens tokens, @p nTimes each; 0 when @p nTimes is
/// not positive, and no value when the number would exceed maxPresentations.
std::optional<int> presentationCount(int nTokens, int nTimes);

/// The token indexes 0 .. @p nTokens - 1, each @p nTimes times, in an order drawn uniformly by a
/// Fisher-Yates shuffle from a 32-bit Mersenne Twister seeded with @p seed. Repeats of a token may
/// follow each other. Empty when either count is not positive.
QList<int> presentationOrder(int nTokens, int nTimes, quint32 seed);
