// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The ends of an axis, or the smallest and the largest value of a list.
struct Range
{
    double min = 0.0;
    double max = 0.0;

    bool operator==(const Range &) const = default;
};
