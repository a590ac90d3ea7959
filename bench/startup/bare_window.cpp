// SPDX-License-Identifier: GPL-3.0-or-later
// A bare Qt program whose start-up that of the experiment's program is compared with: a window of
// the same size with three empty charts.
//
//   bare_window          charts as Qt makes them
//   bare_window axes     charts with a line without points, two axes with titles, and a title each
//   bare_window controls the same charts, and beside them as many controls as the program has

#include <QApplication>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLineEdit>
#include <QLineSeries>
#include <QMainWindow>
#include <QPushButton>
#include <QScreen>

namespace {

QLayout *controls()
{
    auto *const layout = new QFormLayout;
    for (int field = 0; field < 11; ++field)
        layout->addRow("Label", new QLineEdit("Text"));
    for (int option = 0; option < 3; ++option)
        layout->addRow(new QCheckBox("Option"));
    for (int button = 0; button < 4; ++button)
        layout->addRow(new QPushButton("Button"));
    return layout;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const bool hasControls = QCoreApplication::arguments().contains("controls");
    const bool hasAxes = hasControls || QCoreApplication::arguments().contains("axes");
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
        layout->addWidget(new QChartView(chart), row, 1);
    }
    if (hasControls)
        layout->addLayout(controls(), 0, 0, 3, 1);
    layout->setColumnStretch(1, 2);
    window.setCentralWidget(centre);
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    window.setGeometry(screen.width() / 10, screen.height() / 20, screen.width() * 8 / 10,
                       screen.height() * 9 / 10);
    window.show();
    return QApplication::exec();
}
