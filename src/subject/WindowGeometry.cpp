// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/WindowGeometry.h"

#include <algorithm>

namespace {

int shareOf(int available, double fraction)
{
    return static_cast<int>(available * std::max(std::min(fraction, 1.0), 0.0));
}

} // namespace

QRect windowGeometry(QSize available, bool center, QPoint topLeft, double widthFraction,
                     double heightFraction)
{
    const int width = shareOf(available.width(), widthFraction);
    const int height = shareOf(available.height(), heightFraction);
    if (center) {
        return {(available.width() - width) / 2, (available.height() - height) / 2, width, height};
    }
    return {std::max(topLeft.x(), 5), std::max(topLeft.y(), 40), width, height};
}
