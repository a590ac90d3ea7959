// SPDX-License-Identifier: GPL-3.0-or-later
#include "plots/LineChart.h"

#include <QChart>
#include <QChartView>
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

/// Labels the value of an axis whose ends are equal. Qt derives the decimals of a label from the
/// distance of the ticks, which a single tick does not have.
constexpr auto singleValueFormat = "%.6g"_L1;

/// Whether Qt takes the ends of @p range for equal and does not lay out an axis between them.
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

/// Lays @p axis out for @p range, or for one around its value when the ends are equal, with that
/// value in the middle and at the only tick.
void layOutAxis(QValueAxis *axis, Range range)
{
    // Ticks at a fixed distance could be millions in a range that they are not meant for.
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

/// Lays the axes out for these ranges. The layout is finished here: one that waited for the event
/// loop would find ends that are equal by then and leave no room for their label.
void layOutAxes(const LineChart &chart, Range horizontal, Range vertical)
{
    layOutAxis(chart.horizontalAxis, horizontal);
    layOutAxis(chart.verticalAxis, vertical);
    chart.chart->layout()->activate();
}

/// Sets the ends that layOutAxes does not, those of a single value. Qt leaves the layout of an axis
/// as it is then, and that of the line when the ends do not even differ by rounding.
void setSingleValues(const LineChart &chart, Range horizontal, Range vertical)
{
    if (isSingleValue(horizontal))
        setRange(chart.horizontalAxis, {horizontal.min, horizontal.min});
    if (isSingleValue(vertical))
        setRange(chart.verticalAxis, {vertical.min, vertical.min});
}

/// Lays a chart out in its new size where Qt does not: when the ends of an axis are equal.
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
    created.chart->addSeries(created.series);
    created.chart->addAxis(created.horizontalAxis, Qt::AlignBottom);
    created.chart->addAxis(created.verticalAxis, Qt::AlignLeft);
    created.series->attachAxis(created.horizontalAxis);
    created.series->attachAxis(created.verticalAxis);
    created.chart->setTitle(texts.title);
    created.chart->setTitleFont(fonts.title);
    created.chart->legend()->hide();
    created.chart->setMargins(QMargins());
    created.chart->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
    created.chart->setMinimumWidth(minimumWidth);

    followSize(created);

    created.view = new QChartView(created.chart);
    created.view->setRenderHint(QPainter::Antialiasing);
    return created;
}

void showLine(const LineChart &chart, const QList<QPointF> &points, Range horizontal,
              Range vertical)
{
    // A chart lays its line out anew at every change of a range: without points that takes no time.
    chart.series->clear();
    layOutAxes(chart, horizontal, vertical);
    chart.series->replace(points);
    setSingleValues(chart, horizontal, vertical);
}
