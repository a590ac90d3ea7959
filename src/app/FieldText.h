// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What may be in the operator's fields, and how numbers are written there and read back. A text
/// that does not parse gives 0; nothing else is validated.

/// @p text without control characters, tabs and line breaks of any kind. A field of one line shows
/// them as blanks or not at all.
QString withoutControlCharacters(QString text);

/// The base-10 int that @p text holds, or 0 when it does not parse or does not fit in 32 bits.
int intOrZero(const QString &text);

/// A duration in seconds as milliseconds with three decimals: 0.25 gives "250.000".
QString millisecondsText(double seconds);

/// The duration in seconds of a text in milliseconds, or 0.0 when it is not a number.
double secondsOfMillisecondsText(const QString &text);
