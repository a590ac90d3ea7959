// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>

/// The delay from scheduling a presentation to its start: the token's duration plus the silent
/// interval, both given in seconds, truncated to whole milliseconds.
std::chrono::milliseconds presentationDelay(double soundDuration, double silentInterval);
