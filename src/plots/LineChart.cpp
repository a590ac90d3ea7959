// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/LineChart.h"

#include "plots/PaletteChartView.h"

#include <QChart>
#include <QGraphicsLayout>
#include <QLegend>
#include <QLineSeries>
#include <QValueAxis>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

QValueAxis *createAxis(const QString &title, const ChartFonts &fonts)
{
    auto *axis = new QValueAxis;
    axis->setTitleText(title);
    axis->setTitleFont(fonts.axisTitles);
    axis->setLabelsFont(fonts.axisLabels);
    return axis;
}

/// The label format of an axis whose ends are equal. Qt derives the decimals of a label from the
/// distance between ticks, and here there is only one tick.
constexpr auto singleValueFormat = "%.6g"_L1;

/// Whether Qt takes the ends of @p range as equal, and so would not lay out an axis for it.
bool isSingleValue(Range range)
{
    return qFuzzyCompare(range.min, range.max);
}

Range rangeOf(const QValueAxis *axis)
{
    return {axis->min(), axis->max()};
}

void setRange(QValueAxis *axis, Range range)
{
    axis->setRange(range.min, range.max);
}

/// Lays out @p axis for @p range. If the ends are equal, uses a range around their value, with that
/// value in the middle and at the only tick.
void layOutAxis(QValueAxis *axis, Range range)
{
    // A tick distance that was set for another range could give millions of ticks in this one.
    axis->setTickType(QValueAxis::TicksFixed);
    if (!isSingleValue(range)) {
        if (axis->labelFormat() == singleValueFormat)
            axis->setLabelFormat(QString());
        setRange(axis, range);
        return;
    }
    if (axis->labelFormat().isEmpty())
        axis->setLabelFormat(singleValueFormat);
    const double value = range.min;
    const double width = qFuzzyIsNull(value) ? 1 : std::abs(value);
    setRange(axis, {value - width / 2, value + width / 2});
    axis->setTickAnchor(value);
    axis->setTickInterval(width);
    axis->setTickType(QValueAxis::TicksDynamic);
}

/// Lays out the axes for these ranges, and finishes the layout here: in the event loop it would
/// find the equal ends that setSingleValues() sets, and leave no room for their label.
void layOutAxes(const LineChart &chart, Range horizontal, Range vertical)
{
    layOutAxis(chart.horizontalAxis, horizontal);
    layOutAxis(chart.verticalAxis, vertical);
    chart.chart->layout()->activate();
}

/// Sets the equal ends, which layOutAxes() does not set. Qt then keeps the layout of the axis, and,
/// because the ends do not even differ by rounding, that of the line.
void setSingleValues(const LineChart &chart, Range horizontal, Range vertical)
{
    if (isSingleValue(horizontal))
        setRange(chart.horizontalAxis, {horizontal.min, horizontal.min});
    if (isSingleValue(vertical))
        setRange(chart.verticalAxis, {vertical.min, vertical.min});
}

/// Makes a chart lay itself out in a new size where Qt does not: when the ends of an axis are
/// equal.
void followSize(const LineChart &chart)
{
    QObject::connect(chart.chart, &QChart::geometryChanged, chart.chart, [chart] {
        const Range horizontal = rangeOf(chart.horizontalAxis);
        const Range vertical = rangeOf(chart.verticalAxis);
        if (isSingleValue(horizontal) || isSingleValue(vertical)) {
            layOutAxes(chart, horizontal, vertical);
            setSingleValues(chart, horizontal, vertical);
        }
    });
}

} // namespace

LineChart createLineChart(const ChartTexts &texts, const ChartFonts &fonts, int minimumWidth)
{
    LineChart created;
    created.series = new QLineSeries;
    created.horizontalAxis = createAxis(texts.horizontalAxis, fonts);
    created.verticalAxis = createAxis(texts.verticalAxis, fonts);

    created.chart = new QChart;
    // Before the axes: a chart lays out what it has at each of these, and in the size that it has
    // before its window is shown, it tries many times to fit the texts.
    created.chart->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
    created.chart->setMinimumWidth(minimumWidth);
    created.chart->addSeries(created.series);
    created.chart->addAxis(created.horizontalAxis, Qt::AlignBottom);
    created.chart->addAxis(created.verticalAxis, Qt::AlignLeft);
    created.series->attachAxis(created.horizontalAxis);
    created.series->attachAxis(created.verticalAxis);
    created.chart->setTitle(texts.title);
    created.chart->setTitleFont(fonts.title);
    created.chart->legend()->hide();
    created.chart->setMargins(QMargins());

    followSize(created);

    created.view = new PaletteChartView(created.chart);
    return created;
}

void showLine(const LineChart &chart, const QList<QPointF> &points, Range horizontal,
              Range vertical)
{
    // A chart lays out its line again at every change of a range; without points that takes no
    // time.
    chart.series->clear();
    layOutAxes(chart, horizontal, vertical);
    chart.series->replace(points);
    setSingleValues(chart, horizontal, vertical);
}
