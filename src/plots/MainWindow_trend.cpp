// SPDX-License-Identifier: GPL-3.0-or-later
// The response trend chart: how often "Mother" was chosen for each token. Declared in
// app/MainWindow.h.

#include "app/MainWindow.h"
#include "plots/PlotPoints.h"
#include "plots/TrendTicks.h"

#include <QChartView>
#include <QGridLayout>
#include <QLineSeries>
#include <QValueAxis>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr double leastCountsShown = 4;

} // namespace

void MainWindow::displayEmptyTrend()
{
    if (trendChart.view != nullptr)
        return;
    trendChart = createLineChart(
        {u"Response Trend"_s, u"Sound File"_s, u"Mother's voice, chosen (n times)"_s}, chartFonts,
        400);
    trendChart.series->setName(u"trend"_s);
    trendChart.series->setPointsVisible(true);
    trendChart.horizontalAxis->setLabelsVisible(true);
    trendChart.horizontalAxis->setLabelFormat(u"%g"_s);
    trendChart.horizontalAxis->setTickCount(2);
    trendChart.verticalAxis->setLabelsVisible(true);
    trendChart.verticalAxis->setRange(0, leastCountsShown);
    trendChart.verticalAxis->setLabelFormat(u"%.0f"_s);
    gridLayoutPlots->addWidget(trendChart.view, 2, 0, 1, 2);
}

void MainWindow::updateTrend()
{
    Range tokens = {trendChart.horizontalAxis->min(), trendChart.horizontalAxis->max()};
    if (trialIndex == 0 && nTokens > 0) {
        trendX.resize(nTokens);
        trendY.resize(nTokens);
        trendPoints.resize(nTokens);
        for (qint32 i = 0; i < nTokens; ++i) {
            trendX[i] = i + 1;
            trendY[i] = 0;
            trendPoints[i] = QPointF(i + 1, 0);
        }
        tokens = {1, static_cast<double>(nTokens)};
        // For a single token none of the ticks is drawn (see showLine).
        const TrendTicks ticks = trendTicks(nTokens);
        trendChart.horizontalAxis->setLabelFormat(ticks.labelFormat);
        trendChart.horizontalAxis->setTickCount(ticks.count);
    }
    Range counts = {0, leastCountsShown};
    if (!trendY.isEmpty()) {
        const Range values = valueRange(trendY);
        trendRange = {values.min, values.max};
        counts.max = std::max(values.max, leastCountsShown);
    }
    showLine(trendChart, trendPoints, tokens, counts);
}
