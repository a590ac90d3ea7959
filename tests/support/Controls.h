// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>
#include <QString>
#include <QWidget>

/// The widget within @p window that assistive programs call @p name; null when there is none.
template<typename Widget>
Widget *namedControl(const QWidget &window, const QString &name)
{
    const QList<Widget *> widgets = window.findChildren<Widget *>();
    for (Widget *widget : widgets) {
        if (widget->accessibleName() == name)
            return widget;
    }
    return nullptr;
}

/// The button within @p window that shows @p text; null when there is none. The letter that presses
/// it together with Alt is not marked in @p text.
inline QPushButton *shownButton(const QWidget &window, const QString &text)
{
    const QList<QPushButton *> buttons = window.findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->text().remove('&') == text)
            return button;
    }
    return nullptr;
}
