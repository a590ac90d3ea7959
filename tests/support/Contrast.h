// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>

#include <algorithm>
#include <cmath>

/// The contrast ratio of two colours: 1 for the same, 21 for black and white. Text needs 4.5.
inline double contrast(const QColor &one, const QColor &other)
{
    const auto luminance = [](const QColor &colour) {
        const auto linear = [](double value) {
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
               0.0722 * linear(colour.blueF());
    };
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return std::max(a / b, b / a);
}

/// The highest contrast of a pixel in @p area, in the pixels of @p image, with @p background.
inline double highestContrast(const QImage &image, QRect area, const QColor &background)
{
    double highest = 1;
    area &= image.rect();
    for (int x = area.left(); x <= area.right(); ++x) {
        for (int y = area.top(); y <= area.bottom(); ++y)
            highest = std::max(highest, contrast(image.pixelColor(x, y), background));
    }
    return highest;
}
