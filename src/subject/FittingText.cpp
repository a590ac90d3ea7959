// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/FittingText.h"

#include <algorithm>

namespace {

// How much of the button the text may take.
constexpr double widthShare = 0.9;
constexpr double heightShare = 0.6;

} // namespace

int fittingPixelSize(QSizeF button, QSizeF usualText, int usualPixelSize)
{
    if (usualText.isEmpty())
        return usualPixelSize;
    const double factor = std::min(button.width() * widthShare / usualText.width(),
                                   button.height() * heightShare / usualText.height());
    return static_cast<int>(usualPixelSize * std::max(factor, 1.0));
}
