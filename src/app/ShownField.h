// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

/// A field that only shows something while it is disabled. Its text can be read like any other, not
/// in the pale colour of a disabled field; when it is too long its middle is left out, and the tool
/// tip has the whole. Enabled, it is a line edit like any other.
class ShownField : public QLineEdit
{
    Q_OBJECT

public:
    explicit ShownField(const QString &text = {});

protected:
    void paintEvent(QPaintEvent *event) override;
};
