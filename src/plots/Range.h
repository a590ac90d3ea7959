// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What an axis or a list of values goes from and to.
struct Range
{
    double min = 0.0;
    double max = 0.0;

    bool operator==(const Range &) const = default;
};
