// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The tool tip that shows exactly @p text, even if that looks like HTML.
QString plainToolTip(const QString &text);
