// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FieldText.h"

QString withoutControlCharacters(QString text)
{
    return text.removeIf([](QChar character) {
        const QChar::Category category = character.category();
        return category == QChar::Other_Control || category == QChar::Separator_Line ||
               category == QChar::Separator_Paragraph;
    });
}

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
