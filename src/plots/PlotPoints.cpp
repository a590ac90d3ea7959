// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/PlotPoints.h"

#include <algorithm>

QList<QPointF> plotPoints(std::span<const double> x, std::span<const double> y, qsizetype n)
{
    QList<QPointF> points(std::min<qsizetype>({n, std::ssize(x), std::ssize(y)}));
    std::transform(x.begin(), x.begin() + points.size(), y.begin(), points.begin(),
                   [](double px, double py) { return QPointF(px, py); });
    return points;
}

Range valueRange(std::span<const double> values)
{
    if (values.empty())
        return {};
    const auto [smallest, largest] = std::minmax_element(values.begin(), values.end());
    return {*smallest, *largest};
}
