// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PresentationDelay.h"

#include <algorithm>
#include <limits>

std::chrono::milliseconds presentationDelay(double soundDuration, double silentInterval)
{
    constexpr double longest = std::numeric_limits<int>::max();
    return std::chrono::milliseconds(
        static_cast<int>(std::min((soundDuration + silentInterval) * 1000, longest)));
}
