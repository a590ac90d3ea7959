// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldText.h"

int intOrZero(const QString &text)
{
    return text.toInt(nullptr, 10);
}

QString millisecondsText(double seconds)
{
    return QString::number(seconds * 1000, 'f', 3);
}

double secondsOfMillisecondsText(const QString &text)
{
    return text.toDouble() / 1000;
}
