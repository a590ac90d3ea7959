// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

/// The size and place of a window, the same rule for both windows.
///
/// The size is @p available times the two fractions (each limited to 0 .. 1), truncated to whole
/// pixels. Centred, the window lies in the middle of a screen area of that size that starts at
/// (0, 0): the area's own origin is ignored on purpose. Otherwise the window keeps @p topLeft, but
/// at least 5 pixels from the left and 40 from the top.
QRect windowGeometry(QSize available, bool center, QPoint topLeft, double widthFraction,
                     double heightFraction);
