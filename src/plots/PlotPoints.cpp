#include "plots/PlotPoints.h"

#include <algorithm>

QList<QPointF> plotPoints(const QList<double> &x, const QList<double> &y, qsizetype n)
{
    QList<QPointF> points(std::min({n, x.size(), y.size()}));
    std::transform(x.cbegin(), x.cbegin() + points.size(), y.cbegin(), points.begin(),
                   [](double px, double py) { return QPointF(px, py); });
    return points;
}

QList<double> valueRange(const QList<double> &values)
{
    if (values.isEmpty())
        return {0.0, 0.0};
    const auto [smallest, largest] = std::minmax_element(values.cbegin(), values.cend());
    return {*smallest, *largest};
}
