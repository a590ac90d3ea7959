// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPushButton>

/// A button whose text is as large as fits into it. The layout gives it no more room for that than
/// a button with the usual font needs.
class LargeTextButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;

    /// Makes the texts of @p buttons equally large: as large as fits into each of them, so that
    /// none stands out.
    static void matchTexts(const QList<LargeTextButton *> &buttons);

    /// Whether the style sheet shows a feedback picture. The text is below it then.
    void setPictured(bool pictured);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    int fittingSize() const;
    void fitText();

    QList<LargeTextButton *> m_matched{this};
    bool m_isPictured = false;
};
