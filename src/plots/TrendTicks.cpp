// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/TrendTicks.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int mostSingleTicks = 1000; ///< one for each token
constexpr int readableTicks = 11;

} // namespace

TrendTicks trendTicks(int nTokens)
{
    if (nTokens <= mostSingleTicks)
        return {std::max(nTokens, 2), "%g"_L1};
    return {readableTicks, "%.0f"_L1};
}
