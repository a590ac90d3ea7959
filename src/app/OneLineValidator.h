// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QValidator>

/// Drops the control characters from what is typed or pasted into a field, or set. All else is
/// accepted as it is.
class OneLineValidator : public QValidator
{
    Q_OBJECT

public:
    using QValidator::QValidator;

    State validate(QString &input, int &pos) const override;
};
