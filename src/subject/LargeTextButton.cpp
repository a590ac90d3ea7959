// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/LargeTextButton.h"

#include "subject/FittingText.h"

#include <QApplication>
#include <QFontInfo>
#include <QMouseEvent>
#include <QStyleOptionButton>
#include <QStylePainter>

#include <algorithm>

namespace {

/// What is drawn in a feedback picture is no higher than this, and in the picture's middle.
constexpr int pictureHeight = 134;

QSize textSize(const QFontMetrics &metrics, const QString &text)
{
    return metrics.size(Qt::TextShowMnemonic, text);
}

} // namespace

void LargeTextButton::matchTexts(const QList<LargeTextButton *> &buttons)
{
    for (LargeTextButton *button : buttons)
        button->m_matched = buttons;
}

void LargeTextButton::setPictured(bool pictured)
{
    m_isPictured = pictured;
    update();
}

QSize LargeTextButton::sizeHint() const
{
    QStyleOptionButton option;
    initStyleOption(&option);
    option.fontMetrics = QFontMetrics(QApplication::font(this));
    return style()->sizeFromContents(QStyle::CT_PushButton, &option,
                                     textSize(option.fontMetrics, text()), this);
}

int LargeTextButton::fittingSize() const
{
    const QFont usual = QApplication::font(this);
    return fittingPixelSize(size(), textSize(QFontMetrics(usual), text()),
                            QFontInfo(usual).pixelSize());
}

void LargeTextButton::fitText()
{
    int size = fittingSize();
    for (const LargeTextButton *button : std::as_const(m_matched))
        size = std::min(size, button->fittingSize());
    for (LargeTextButton *button : std::as_const(m_matched)) {
        QFont font = QApplication::font(button);
        font.setPixelSize(size);
        button->setFont(font);
    }
}

void LargeTextButton::resizeEvent(QResizeEvent *event)
{
    QPushButton::resizeEvent(event);
    fitText();
}

void LargeTextButton::mouseReleaseEvent(QMouseEvent *event)
{
    // A finger that is lifted points at nothing any more, but Qt leaves a mouse where it was: this
    // button would stand out at the next answer.
    if (event->source() != Qt::MouseEventNotSynthesized) {
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(this, &leave);
    }
    QPushButton::mouseReleaseEvent(event);
}

void LargeTextButton::paintEvent(QPaintEvent *event)
{
    if (!m_isPictured) {
        QPushButton::paintEvent(event);
        return;
    }
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    painter.drawControl(QStyle::CE_PushButtonBevel, option);

    // Where there is too little room below the picture, the text is as small as it may be and
    // covers as little of the picture as possible.
    const int room = (height() - pictureHeight) / 2;
    const int usualSize = QFontInfo(QApplication::font(this)).pixelSize();
    QFont font = this->font();
    const int size = QFontInfo(font).pixelSize();
    font.setPixelSize(std::clamp(size * room / fontMetrics().height(), usualSize, size));
    const int textHeight = QFontMetrics(font).height();
    option.rect = QRect(0, height() - std::max(room, textHeight), width(), textHeight);
    painter.setFont(font);
    painter.drawControl(QStyle::CE_PushButtonLabel, option);
}
