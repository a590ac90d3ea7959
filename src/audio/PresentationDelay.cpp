// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/PresentationDelay.h"

std::chrono::milliseconds presentationDelay(double soundDuration, double silentInterval)
{
    return std::chrono::milliseconds(static_cast<int>((soundDuration + silentInterval) * 1000));
}
