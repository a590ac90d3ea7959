// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/PaletteChartView.h"

#include <QAbstractAxis>
#include <QChart>
#include <QEvent>
#include <QGraphicsLayout>

namespace {

QColor mixed(const QColor &one, const QColor &other, float share)
{
    const auto mix = [share](float a, float b) { return a + (b - a) * share; };
    return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                            mix(one.blueF(), other.blueF()));
}

} // namespace

PaletteChartView::PaletteChartView(QChart *chart)
    : QChartView(chart)
{
    setRenderHint(QPainter::Antialiasing);
    setFocusPolicy(Qt::NoFocus);
    chart->layout()->setContentsMargins(0, 0, 0, 0);
    colour();
}

void PaletteChartView::changeEvent(QEvent *event)
{
    QChartView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        colour();
}

void PaletteChartView::colour()
{
    // Never those of a disabled window: the operator follows a session in the charts.
    const QColor background = palette().color(QPalette::Active, QPalette::Base);
    const QColor text = palette().color(QPalette::Active, QPalette::Text);
    chart()->setBackgroundBrush(background);
    chart()->setTitleBrush(text);
    const QList<QAbstractAxis *> axes = chart()->axes();
    for (QAbstractAxis *axis : axes) {
        axis->setTitleBrush(text);
        axis->setLabelsColor(text);
        axis->setLinePenColor(mixed(background, text, 0.5F));
        axis->setGridLineColor(mixed(background, text, 0.15F));
    }
}
