// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/GuiTestMain.h"
#include "support/OperatorWindow.h"

#include <QChart>
#include <QChartView>
#include <QElapsedTimer>
#include <QGraphicsTextItem>
#include <QLineSeries>
#include <QValueAxis>

#include <algorithm>
#include <memory>

namespace {

/// The labels of the token axis, from left to right, with their places in the chart.
QList<QPair<QString, QRectF>> tokenLabels(const LineChart &chart)
{
    const QRectF plot = chart.chart->mapRectToScene(chart.chart->plotArea());
    QList<QPair<QString, QRectF>> found;
    for (QGraphicsItem *item : chart.view->scene()->items()) {
        const auto *text = dynamic_cast<QGraphicsTextItem *>(item);
        if (text == nullptr || !text->isVisible() || text->toPlainText().isEmpty() ||
            text->toPlainText() == chart.horizontalAxis->titleText())
            continue;
        const QRectF place = text->sceneBoundingRect();
        if (place.center().y() > plot.bottom() + text->font().pixelSize() / 2.0)
            found.append({text->toPlainText(), place});
    }
    std::sort(found.begin(), found.end(),
              [](const auto &a, const auto &b) { return a.second.left() < b.second.left(); });
    return found;
}

} // namespace

class TestManyTokens : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void labelsOfManyTokensCanBeRead_data();
    void labelsOfManyTokensCanBeRead();
    void fewTokensAfterManyHaveTheirTicks();

private:
    void showTokens(int nTokens) const;

    std::unique_ptr<OperatorWindow> m_window;
};

void TestManyTokens::init()
{
    m_window = std::make_unique<OperatorWindow>();
    m_window->resize(1152, 810);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

/// Lays the trend out as the preparation of a session with @p nTokens tokens does.
void TestManyTokens::showTokens(int nTokens) const
{
    m_window->trialIndex = 0;
    m_window->nTokens = nTokens;
    m_window->updateTrend();
    QCoreApplication::processEvents();
}

void TestManyTokens::labelsOfManyTokensCanBeRead_data()
{
    QTest::addColumn<int>("nTokens");
    QTest::newRow("1001") << 1001;
    QTest::newRow("5000") << 5000;
    QTest::newRow("50000") << 50000;
}

// Catches a chart of many tokens that takes longer than anybody waits, has labels that overlap, are
// shortened or no whole numbers, or misses a token.
void TestManyTokens::labelsOfManyTokensCanBeRead()
{
    QFETCH(const int, nTokens);
    QElapsedTimer clock;
    clock.start();
    showTokens(nTokens);
    const QPixmap picture = m_window->trendChart.view->grab();
    QVERIFY(!picture.isNull());
    // Seconds were spent on 2,000 ticks, and with each thousand more it got worse.
    QVERIFY2(clock.elapsed() < 10'000, qPrintable(QString::number(clock.elapsed())));
    const QString folder = qEnvironmentVariable("OSTRINE_PICTURES");
    if (!folder.isEmpty())
        QVERIFY(picture.save(QString("%1/trend-%2.png").arg(folder).arg(nTokens)));

    QCOMPARE(m_window->trendChart.series->count(), nTokens);
    QCOMPARE(m_window->trendChart.horizontalAxis->min(), 1.0);
    QCOMPARE(m_window->trendChart.horizontalAxis->max(), nTokens);
    const QList<QPair<QString, QRectF>> labels = tokenLabels(m_window->trendChart);
    QVERIFY2(labels.size() >= 5, qPrintable(QString::number(labels.size())));
    QCOMPARE(labels.first().first, "1");
    QCOMPARE(labels.last().first, QString::number(nTokens));
    int before = 0;
    for (qsizetype i = 0; i < labels.size(); ++i) {
        bool isWhole = false;
        const int token = labels.at(i).first.toInt(&isWhole);
        QVERIFY2(isWhole && token > before, qPrintable(labels.at(i).first));
        before = token;
        if (i > 0)
            QVERIFY(!labels.at(i).second.intersects(labels.at(i - 1).second));
    }
}

// Catches the ticks of many tokens that stay when few are shown.
void TestManyTokens::fewTokensAfterManyHaveTheirTicks()
{
    showTokens(1001);
    showTokens(10);
    QCOMPARE(m_window->trendChart.horizontalAxis->tickCount(), 10);
    QStringList texts;
    for (const auto &label : tokenLabels(m_window->trendChart))
        texts.append(label.first);
    QCOMPARE(texts, QStringList({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}));
}

GUI_TEST_MAIN(TestManyTokens)
#include "tst_manytokens.moc"
