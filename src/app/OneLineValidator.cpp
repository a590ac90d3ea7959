// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OneLineValidator.h"

#include "app/FieldText.h"

QValidator::State OneLineValidator::validate(QString &input, int &pos) const
{
    pos = static_cast<int>(withoutControlCharacters(input.first(pos)).size());
    input = withoutControlCharacters(input);
    return Acceptable;
}
