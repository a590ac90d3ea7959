#include "plots/LineChart.h"

#include <QChart>
#include <QChartView>
#include <QLegend>
#include <QLineSeries>
#include <QValueAxis>

namespace {

QValueAxis *createAxis(const QString &title, const ChartFonts &fonts)
{
    auto *axis = new QValueAxis;
    axis->setTitleText(title);
    axis->setTitleFont(fonts.axisTitles);
    axis->setLabelsFont(fonts.axisLabels);
    return axis;
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

    created.view = new QChartView(created.chart);
    created.view->setRenderHint(QPainter::Antialiasing);
    return created;
}
