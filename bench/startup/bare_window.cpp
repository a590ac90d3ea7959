// SPDX-License-Identifier: GPL-3.0-or-later
// A bare Qt program whose start-up that of the experiment's program is compared with: a window of
// the same size with three empty charts.
//
//   bare_window          charts as Qt makes them
//   bare_window axes     charts with a line without points, two axes with titles, and a title each

#include <QApplication>
#include <QChart>
#include <QChartView>
#include <QGridLayout>
#include <QLineSeries>
#include <QMainWindow>
#include <QScreen>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const bool hasAxes = QCoreApplication::arguments().contains("axes");
    QMainWindow window;
    auto *const centre = new QWidget;
    auto *const layout = new QGridLayout(centre);
    for (int row = 0; row < 3; ++row) {
        auto *const chart = new QChart;
        if (hasAxes) {
            chart->addSeries(new QLineSeries);
            chart->createDefaultAxes();
            for (QAbstractAxis *const axis : chart->axes())
                axis->setTitleText("Title");
            chart->setTitle("Title");
        }
        layout->addWidget(new QChartView(chart), row, 0);
    }
    window.setCentralWidget(centre);
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    window.setGeometry(screen.width() / 10, screen.height() / 20, screen.width() * 8 / 10,
                       screen.height() * 9 / 10);
    window.show();
    return QApplication::exec();
}
