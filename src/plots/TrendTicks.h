// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1StringView>

/// How an axis from token 1 to the last one is divided.
struct TrendTicks
{
    int count;                     ///< at equal distances, both ends included: 2 or more
    QLatin1StringView labelFormat; ///< as printf() takes it
};

/// The ticks for @p nTokens tokens. Up to 1,000 there is one for each token, though an axis has two
/// ticks at least. With more there are as many as can be read, each labelled with the token that
/// is nearest: Qt takes seconds to lay out thousands of ticks, and shows none of their labels.
TrendTicks trendTicks(int nTokens);
