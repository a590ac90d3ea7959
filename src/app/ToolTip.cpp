// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ToolTip.h"

#include <QTextDocument>

QString plainToolTip(const QString &text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}
