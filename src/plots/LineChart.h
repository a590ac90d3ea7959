// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plots/Range.h"

#include <QFont>
#include <QList>
#include <QPointF>
#include <QString>

class QChart;
class QChartView;
class QLineSeries;
class QValueAxis;

/// The fonts of a chart's texts.
struct ChartFonts
{
    QFont axisLabels;
    QFont axisTitles;
    QFont title;
};

/// The texts around a chart.
struct ChartTexts
{
    QString title;
    QString horizontalAxis;
    QString verticalAxis;
};

/// A chart of one line over two value axes. All pointers are null until it is created; from then on
/// the view owns everything and is owned by whoever places it.
struct LineChart
{
    QLineSeries *series = nullptr;
    QValueAxis *horizontalAxis = nullptr;
    QValueAxis *verticalAxis = nullptr;
    QChart *chart = nullptr;
    QChartView *view = nullptr;
};

/// An empty chart at least @p minimumWidth pixels wide: without a legend, without margins, in the
/// colours of the palette, drawn with antialiasing. Ranges and label formats are left as Qt sets
/// them.
LineChart createLineChart(const ChartTexts &texts, const ChartFonts &fonts, int minimumWidth);

/// Replaces the chart's line by one through @p points, and the ranges of its axes by these. An axis
/// whose ends are equal is drawn with their value in its middle, as its only label.
void showLine(const LineChart &chart, const QList<QPointF> &points, Range horizontal,
              Range vertical);
