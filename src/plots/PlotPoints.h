// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plots/Range.h"

#include <QList>
#include <QPointF>

#include <span>

/// The first @p n pairs of @p x and @p y as points; as many as there are when one of them is
/// shorter.
QList<QPointF> plotPoints(std::span<const double> x, std::span<const double> y, qsizetype n);

/// From the smallest to the largest of @p values; 0 and 0 when there are none.
Range valueRange(std::span<const double> values);
