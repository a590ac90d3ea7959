// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QValidator>

/// Removes control characters from a text that is typed or pasted into a field, or set by the
/// program. Everything else is accepted as it is.
class OneLineValidator : public QValidator
{
    Q_OBJECT

public:
    using QValidator::QValidator;

    State validate(QString &input, int &pos) const override;
};
