// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ShownField.h"

#include "app/ToolTip.h"

#include <QStyleOptionFrame>
#include <QStylePainter>

ShownField::ShownField(const QString &text)
    : QLineEdit(text)
{
    const auto showWhole = [this](const QString &whole) { setToolTip(plainToolTip(whole)); };
    showWhole(text);
    connect(this, &QLineEdit::textChanged, this, showWhole);
}

void ShownField::paintEvent(QPaintEvent *event)
{
    if (isEnabled()) {
        QLineEdit::paintEvent(event);
        return;
    }
    QStylePainter painter(this);
    QStyleOptionFrame option;
    initStyleOption(&option);
    painter.drawPrimitive(QStyle::PE_PanelLineEdit, option);

    constexpr int margin = 2; // that of a line edit
    const QRect room = style()
                           ->subElementRect(QStyle::SE_LineEditContents, &option, this)
                           .adjusted(margin, 0, -margin, 0);
    painter.setPen(palette().color(QPalette::Active, QPalette::WindowText));
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideMiddle, room.width()));
}
