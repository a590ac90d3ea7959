#pragma once

#include <QList>
#include <QPointF>

/// The first @p n pairs of @p x and @p y as points; as many as there are when one of the lists is
/// shorter.
QList<QPointF> plotPoints(const QList<double> &x, const QList<double> &y, qsizetype n);

/// The smallest and the largest of @p values, in this order; 0 and 0 when there are none.
QList<double> valueRange(const QList<double> &values);
