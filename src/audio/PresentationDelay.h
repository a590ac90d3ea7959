// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

/// The delay from scheduling a presentation to its start: the token's duration plus the silent
/// interval, both given in seconds, truncated to whole milliseconds. The delay is limited to the
/// largest int, about 25 days: a token whose header declares a rate of a few Hz may be longer.
std::chrono::milliseconds presentationDelay(double soundDuration, double silentInterval);
