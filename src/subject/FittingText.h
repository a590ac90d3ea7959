// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSizeF>

/// The pixel size of the font in which a text fills a button of the size @p button, with a margin
/// around it. In the usual font, of @p usualPixelSize, the text has the size @p usualText; the
/// result is never smaller than that font.
int fittingPixelSize(QSizeF button, QSizeF usualText, int usualPixelSize);
