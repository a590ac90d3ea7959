// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/SubjectWindow.h"
#include "support/Contrast.h"
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/OperatorWindow.h"
#include "support/WavFile.h"

#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QGraphicsTextItem>
#include <QGridLayout>
#include <QLegend>
#include <QLineEdit>
#include <QLineSeries>
#include <QPushButton>
#include <QScopeGuard>
#include <QSet>
#include <QValueAxis>

#include <cmath>
#include <functional>
#include <memory>

namespace {

using ChartMember = LineChart OperatorWindow::*;
using Ends = QPair<double, double>;           ///< of an axis
using Token = std::function<int(int sample)>; ///< value of a sample from -32768 to 32767

constexpr int rate = 48000;

QByteArray tokenBytes(int nSamples, const Token &value)
{
    QByteArray data;
    data.reserve(nSamples * 2);
    for (int i = 0; i < nSamples; ++i)
        data += WavBytes::little(static_cast<std::uint32_t>(value(i)), 2);
    return WavBytes{.data = data}.bytes();
}

int ramp(int sample)
{
    return sample % 16384;
}

int silence(int)
{
    return 0;
}

Ends rangeOf(const QValueAxis *axis)
{
    return {axis->min(), axis->max()};
}

QRect cellOf(const QGridLayout *grid, QWidget *widget)
{
    int row = -1;
    int column = -1;
    int rowSpan = -1;
    int columnSpan = -1;
    grid->getItemPosition(grid->indexOf(widget), &row, &column, &rowSpan, &columnSpan);
    return {column, row, columnSpan, rowSpan};
}

/// The texts that are painted beside the plot area of @p chart, the titles aside: below it those of
/// the horizontal axis, left of it those of the vertical axis.
QStringList labels(const LineChart &chart, Qt::Orientation orientation)
{
    const QRectF plot = chart.chart->mapRectToScene(chart.chart->plotArea());
    const QStringList titles = {chart.horizontalAxis->titleText(), chart.verticalAxis->titleText()};
    QStringList found;
    for (QGraphicsItem *item : chart.view->scene()->items()) {
        const auto *text = dynamic_cast<QGraphicsTextItem *>(item);
        if (text == nullptr || !text->isVisible() || titles.contains(text->toPlainText()))
            continue;
        const QPointF centre = text->sceneBoundingRect().center();
        const bool below = centre.y() > plot.bottom() + text->font().pixelSize() / 2.0;
        if (orientation == Qt::Horizontal ? below : !below && centre.x() < plot.left())
            found.append(text->toPlainText());
    }
    found.removeAll(QString());
    return found;
}

/// The plot area of @p chart in the pixels of its view.
QRect plotArea(const LineChart &chart)
{
    return chart.view->mapFromScene(chart.chart->mapToScene(chart.chart->plotArea()))
        .boundingRect();
}

/// The smallest rectangle around the pixels in the plot area that have the colour of the line; null
/// when there are none.
QRect paintedLine(const LineChart &chart)
{
    const QImage image = chart.view->grab().toImage();
    const QRect area = plotArea(chart).intersected(image.rect());
    QRect line;
    for (int x = area.left(); x <= area.right(); ++x) {
        for (int y = area.top(); y <= area.bottom(); ++y) {
            if (image.pixelColor(x, y) == chart.series->color())
                line |= QRect(x, y, 1, 1);
        }
    }
    return line;
}

/// Lets the charts do what they leave to the event loop.
void settle()
{
    QTest::qWait(10);
}

} // namespace

Q_DECLARE_METATYPE(ChartMember)
Q_DECLARE_METATYPE(Token)

class TestCharts : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void eachChartHasItsTitlesFormatsAndPlace_data();
    void eachChartHasItsTitlesFormatsAndPlace();
    void everyChartHasItsAxesFontsAndAnEmptyLine_data();
    void everyChartHasItsAxesFontsAndAnEmptyLine();
    void theChartsStartWithTheirRanges();
    void onlyTheTrendMarksItsPoints();
    void settingTheChartsUpAgainChangesNothing();
    void theListsStartWithTheSizesOfTheDefaultDuration();

    void aTokenIsPlottedInMillisecondsAndHertz();
    void aTokenIsCutOrPlottedEntirelyAsTheFlagSays_data();
    void aTokenIsCutOrPlottedEntirelyAsTheFlagSays();
    void noBinIsPlottedBeyondTheLast();
    void shortAndSilentTokensArePlotted_data();
    void shortAndSilentTokensArePlotted();
    void theSpectrumsAxisStartsAtTheSmallestAmplitude();
    void aSineIsAPeakOfItsHeightAndFrequency();
    void theWindowWeightsTheSpectrumAndNotTheWaveform();
    void aTokenWithoutSamplesIsDrawnEmpty();
    void theNextTokenReplacesTheFirst();
    void theAxesUseTheSessionsSamplingRate();

    void equalValuesAreALineInTheMiddleAtEverySize_data();
    void equalValuesAreALineInTheMiddleAtEverySize();
    void valuesThatDifferByRoundingAreAFlatLine_data();
    void valuesThatDifferByRoundingAreAFlatLine();
    void theSpanIsWorkedOutAgainForEachDrawing();
    void theTransformWorksOutItsDurationAgain();
    void theSpectrumsRangeCoversBinsThatAreNotPlotted();
    void threeChannelsKeepTheSamplesOfThisSessionOnly_data();
    void threeChannelsKeepTheSamplesOfThisSessionOnly();

    void theTrendStartsWithEachTokenAtZero_data();
    void theTrendStartsWithEachTokenAtZero();
    void eachMotherAnswerRaisesTheTrend_data();
    void eachMotherAnswerRaisesTheTrend();
    void aStrangerAnswerDoesNotRaiseTheTrend();
    void theTrendStaysAsItIsWithoutTokens();
    void theTrendShowsItsPointsEvenWithoutCounts();
    void theNextSessionResetsTheTrend();
    void oneTokenIsShownInTheMiddleEvenAfterTen();

    void exampleTokensAreDrawnInEveryChart();

    void theChartsFollowThePalette_data();
    void theChartsFollowThePalette();
    void theTitlesAreWholeOnASmallScreen_data();
    void theTitlesAreWholeOnASmallScreen();

private:
    bool prepare(const QString &folder) const;
    bool showToken(int nSamples, const Token &value) const;
    bool prepareTokens(int nTokens) const;
    void present(int response) const;
    QList<QImage> paintedCharts() const;
    QList<QPointF> points(ChartMember chart) const
    {
        return (m_window.get()->*chart).series->points();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OperatorWindow> m_window;
};

void TestCharts::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_window = std::make_unique<OperatorWindow>();
    m_window->resize(1152, 810);
    m_window->show();
    m_window->lineEditSi->setText("60000.000"); // nothing is heard here
    m_window->checkBoxAutoPlay->setChecked(false);
    m_window->checkBoxSaveData->setChecked(false);
}

void TestCharts::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

/// Presses "Practice" and chooses @p folder.
bool TestCharts::prepare(const QString &folder) const
{
    ModalAnswer answers;
    answers.choose(folder);
    m_window->pushButtonPractice->click();
    return answers.problem().isEmpty() && m_window->pushButtonGo->isEnabled();
}

/// Prepares a session with one token.
bool TestCharts::showToken(int nSamples, const Token &value) const
{
    return writeFile(m_folder->filePath("MOV001.wav"), tokenBytes(nSamples, value)) &&
           prepare(m_folder->path());
}

/// Prepares a session with @p nTokens tokens, numbered in the order in which they are shown.
bool TestCharts::prepareTokens(int nTokens) const
{
    const QDir folder(m_folder->filePath(QString::number(nTokens)));
    if (!folder.mkpath("."))
        return false;
    for (int i = 0; i < nTokens; ++i) {
        const QString name = QString("MOV001_%1.wav").arg(i, 4, 10, QChar('0'));
        if (!writeFile(folder.filePath(name), tokenBytes(100, ramp)))
            return false;
    }
    if (!prepare(folder.path()))
        return false;
    m_window->reactionTimer->start();
    return true;
}

/// Presents the next token and answers it by @p response.
void TestCharts::present(int response) const
{
    m_window->updateMainwindow(m_window->trialIndex == 0 ? ReadyResponse : NextResponse);
    m_window->updateMainwindow(response);
}

/// The three charts as they are on the screen.
QList<QImage> TestCharts::paintedCharts() const
{
    settle();
    QList<QImage> images;
    for (const LineChart *chart :
         {&m_window->waveformChart, &m_window->spectrumChart, &m_window->trendChart})
        images.append(chart->view->grab().toImage());
    return images;
}

void TestCharts::eachChartHasItsTitlesFormatsAndPlace_data()
{
    QTest::addColumn<ChartMember>("chart");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("horizontalTitle");
    QTest::addColumn<QString>("verticalTitle");
    QTest::addColumn<QString>("seriesName");
    QTest::addColumn<QString>("horizontalFormat");
    QTest::addColumn<QString>("verticalFormat");
    QTest::addColumn<double>("minimumWidth");
    QTest::addColumn<QRect>("cell");

    QTest::newRow("waveform") << ChartMember(&OperatorWindow::waveformChart) << "Time Waveform"
                              << "Time (ms)"
                              << "Amplitude"
                              << ""
                              << ""
                              << "" << 200.0 << QRect(0, 0, 1, 1);
    QTest::newRow("spectrum") << ChartMember(&OperatorWindow::spectrumChart) << "Amplitude Spectrum"
                              << "Frequency (Hz)"
                              << "Amplitude"
                              << ""
                              << "%.0f"
                              << "" << 200.0 << QRect(0, 1, 1, 1);
    QTest::newRow("trend") << ChartMember(&OperatorWindow::trendChart) << "Response Trend"
                           << "Sound File"
                           << "Mother's voice, chosen (n times)"
                           << "trend"
                           << "%g"
                           << "%.0f" << 400.0 << QRect(0, 2, 2, 1);
}

// Catches a chart with another title, axis title, number format or place in the window.
void TestCharts::eachChartHasItsTitlesFormatsAndPlace()
{
    QFETCH(const ChartMember, chart);
    const LineChart &shown = m_window.get()->*chart;
    QTEST(shown.chart->title(), "title");
    QTEST(shown.horizontalAxis->titleText(), "horizontalTitle");
    QTEST(shown.verticalAxis->titleText(), "verticalTitle");
    QTEST(shown.series->name(), "seriesName");
    QTEST(shown.horizontalAxis->labelFormat(), "horizontalFormat");
    QTEST(shown.verticalAxis->labelFormat(), "verticalFormat");
    QTEST(shown.chart->minimumWidth(), "minimumWidth");
    QTEST(cellOf(m_window->gridLayoutPlots, shown.view), "cell");
}

void TestCharts::everyChartHasItsAxesFontsAndAnEmptyLine_data()
{
    eachChartHasItsTitlesFormatsAndPlace_data();
}

// Catches a chart whose line is attached to no axis, one with a legend, margins or other fonts, and
// one that starts with points or is drawn without antialiasing.
void TestCharts::everyChartHasItsAxesFontsAndAnEmptyLine()
{
    QFETCH(const ChartMember, chart);
    const LineChart &shown = m_window.get()->*chart;
    QVERIFY(shown.view->chart() == shown.chart);
    QCOMPARE(shown.chart->series(), QList<QAbstractSeries *>{shown.series});
    QCOMPARE(shown.series->count(), 0);
    QCOMPARE(shown.chart->axes(Qt::Horizontal), QList<QAbstractAxis *>{shown.horizontalAxis});
    QCOMPARE(shown.chart->axes(Qt::Vertical), QList<QAbstractAxis *>{shown.verticalAxis});
    QCOMPARE(shown.horizontalAxis->alignment(), Qt::AlignBottom);
    QCOMPARE(shown.verticalAxis->alignment(), Qt::AlignLeft);
    QCOMPARE(shown.series->attachedAxes(),
             (QList<QAbstractAxis *>{shown.horizontalAxis, shown.verticalAxis}));
    QVERIFY(shown.horizontalAxis->labelsVisible());
    QVERIFY(shown.verticalAxis->labelsVisible());
    for (const QFont &font : {shown.horizontalAxis->labelsFont(), shown.horizontalAxis->titleFont(),
                              shown.verticalAxis->labelsFont(), shown.verticalAxis->titleFont()}) {
        QCOMPARE(font.pixelSize(), 10);
        QCOMPARE(int{font.weight()}, 400);
    }
    QCOMPARE(shown.chart->titleFont().pixelSize(), 12);
    QCOMPARE(int{shown.chart->titleFont().weight()}, 400);
    QVERIFY(!shown.chart->legend()->isVisible());
    QCOMPARE(shown.chart->margins(), QMargins(0, 0, 0, 0));
    QCOMPARE(shown.chart->sizePolicy().horizontalPolicy(), QSizePolicy::Minimum);
    QCOMPARE(shown.chart->sizePolicy().verticalPolicy(), QSizePolicy::Preferred);
    QVERIFY(shown.view->renderHints().testFlag(QPainter::Antialiasing));
}

// Catches axes that start with another range, and a range set where a new axis keeps Qt's own.
void TestCharts::theChartsStartWithTheirRanges()
{
    QCOMPARE(rangeOf(m_window->spectrumChart.horizontalAxis), Ends(0, 2000));
    QCOMPARE(rangeOf(m_window->spectrumChart.verticalAxis), Ends(0, 1));
    QCOMPARE(rangeOf(m_window->trendChart.verticalAxis), Ends(0, 4));
    QCOMPARE(m_window->trendChart.horizontalAxis->tickCount(), 2);
    // No range has been set for these: they show what a new axis in a chart does.
    QChart bare;
    auto *series = new QLineSeries;
    auto *axis = new QValueAxis;
    bare.addSeries(series);
    bare.addAxis(axis, Qt::AlignBottom);
    series->attachAxis(axis);
    QCOMPARE(rangeOf(m_window->waveformChart.horizontalAxis), rangeOf(axis));
    QCOMPARE(rangeOf(m_window->waveformChart.verticalAxis), rangeOf(axis));
    QCOMPARE(rangeOf(m_window->trendChart.horizontalAxis), rangeOf(axis));
}

// Catches a trend whose points are not marked, and markers that cover the lines of the other
// charts.
void TestCharts::onlyTheTrendMarksItsPoints()
{
    QVERIFY(m_window->trendChart.series->pointsVisible());
    QVERIFY(!m_window->waveformChart.series->pointsVisible());
    QVERIFY(!m_window->spectrumChart.series->pointsVisible());
}

// Catches a chart that is made or emptied again when it is there already.
void TestCharts::settingTheChartsUpAgainChangesNothing()
{
    QVERIFY(showToken(12000, ramp));
    const auto state = [this] {
        QVariantList values;
        for (const LineChart *chart :
             {&m_window->waveformChart, &m_window->spectrumChart, &m_window->trendChart}) {
            values << QVariant::fromValue(chart->view) << QVariant::fromValue(chart->chart)
                   << chart->series->count() << chart->horizontalAxis->max()
                   << chart->verticalAxis->max();
        }
        return values << m_window->gridLayoutPlots->count();
    };
    const QVariantList before = state();
    m_window->displayEmptyWav();
    m_window->displayEmptyFFT();
    m_window->displayEmptyTrend();
    QCOMPARE(state(), before);
    QCOMPARE(m_window->gridLayoutPlots->count(), 3);
}

// Catches lists of another size than the default duration needs, and counts before there is a
// session.
void TestCharts::theListsStartWithTheSizesOfTheDefaultDuration()
{
    QCOMPARE(m_window->timeAxis.size(), 12000);
    QCOMPARE(m_window->wavePoints.size(), 12000);
    QCOMPARE(m_window->waveRange, (QList<double>{0, 0}));
    QCOMPARE(m_window->spectrumRange, (QList<double>{0, 0}));
    QCOMPARE(m_window->trendRange, (QList<double>{0, 0}));
    QCOMPARE(m_window->nFFT, 16384);
    QCOMPARE(m_window->data.nFreqPointsToPlot, 682);
    QCOMPARE(m_window->spectrumPoints.size(), 682);
    QCOMPARE(m_window->frequencies.size(), 8192);
    QVERIFY(m_window->trendX.isEmpty());
    QVERIFY(m_window->trendY.isEmpty());
    QVERIFY(m_window->trendPoints.isEmpty());
}

// Catches points in other units than milliseconds and hertz, a spectrum of another size or plotted
// further than to its upper frequency, and axes that do not follow the token.
void TestCharts::aTokenIsPlottedInMillisecondsAndHertz()
{
    QVERIFY(showToken(12000, ramp));
    const QList<QPointF> wave = points(&OperatorWindow::waveformChart);
    QCOMPARE(wave.size(), 12000);
    QCOMPARE(wave, m_window->wavePoints);
    QCOMPARE(wave.first(), QPointF(0, 0));
    QCOMPARE(wave.at(48), QPointF(1, 48 / 32768.0));
    QCOMPARE(wave.last(), QPointF(11999 / 48.0, 11999 / 32768.0));
    QCOMPARE(rangeOf(m_window->waveformChart.horizontalAxis), Ends(0, 250));
    QCOMPARE(rangeOf(m_window->waveformChart.verticalAxis), Ends(0, 11999 / 32768.0));

    QCOMPARE(m_window->nFFT, 16384);
    QCOMPARE(m_window->fftDuration, 16384 / 48000.0);
    QCOMPARE(m_window->freqResolution, 48000.0 / 16384);
    for (const QList<double> *list :
         {&m_window->frequencies, &m_window->amplitudes, &m_window->phases})
        QCOMPARE(list->size(), 8192);
    const QList<QPointF> spectrum = points(&OperatorWindow::spectrumChart);
    QCOMPARE(spectrum.size(), 682);
    QCOMPARE(spectrum, m_window->spectrumPoints);
    QCOMPARE(spectrum.at(100),
             QPointF(m_window->frequencies.at(100), m_window->amplitudes.at(100)));
    QCOMPARE(rangeOf(m_window->spectrumChart.horizontalAxis), Ends(0, 2000));
}

void TestCharts::aTokenIsCutOrPlottedEntirelyAsTheFlagSays_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::addColumn<int>("entire");
    QTest::addColumn<int>("nPoints");
    QTest::addColumn<double>("duration");

    QTest::newRow("longer, cut") << 24000 << 0 << 12000 << 0.25;
    QTest::newRow("longer, entire") << 24000 << 1 << 24000 << 0.5;
    QTest::newRow("shorter") << 6000 << 0 << 6000 << 0.125;
    QTest::newRow("shorter, entire") << 6000 << 1 << 6000 << 0.125;
    QTest::newRow("a minute") << 60 * rate << 1 << 60 * rate << 60.0;
}

// Catches a token that is cut although all of it is to be plotted or is not cut although it should
// be, and a vertical range that covers only the part plotted.
void TestCharts::aTokenIsCutOrPlottedEntirelyAsTheFlagSays()
{
    QFETCH(const int, nSamples);
    QFETCH(const int, entire);
    QFETCH(const int, nPoints);
    QFETCH(const double, duration);
    m_window->data.alwaysPlotEntireWaveformFlag = entire;
    // The largest value lies behind what is plotted of the token that is cut.
    QVERIFY(showToken(nSamples, [nSamples](int i) { return i == nSamples - 1 ? 16384 : 8192; }));
    QCOMPARE(points(&OperatorWindow::waveformChart).size(), nPoints);
    QCOMPARE(m_window->data.nPointsToPlot, nPoints);
    QCOMPARE(m_window->data.durationToPlot, duration);
    QCOMPARE(rangeOf(m_window->waveformChart.horizontalAxis), Ends(0, duration * 1000));
    QCOMPARE(m_window->waveRange, (QList<double>{0.25, 0.5}));
    QCOMPARE(rangeOf(m_window->waveformChart.verticalAxis), Ends(0.25, 0.5));
}

// Catches a read beyond the last bin when more is to be plotted than there is.
void TestCharts::noBinIsPlottedBeyondTheLast()
{
    m_window->data.upperFrequencyToPlot = 30000;
    QVERIFY(showToken(12000, ramp));
    QCOMPARE(m_window->data.nFreqPointsToPlot, 8192);
    QCOMPARE(points(&OperatorWindow::spectrumChart).size(), 8192);
    // The range of the horizontal axis is that of the window's creation.
    QCOMPARE(rangeOf(m_window->spectrumChart.horizontalAxis), Ends(0, 2000));
}

void TestCharts::shortAndSilentTokensArePlotted_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::addColumn<Token>("value");
    QTest::addColumn<qint64>("nFFT");
    QTest::addColumn<Ends>("waveRange");
    QTest::addColumn<Ends>("spectrumRange");

    const Token half = [](int) { return 16384; };
    QTest::newRow("one sample") << 1 << half << qint64{1} << Ends(0.5, 0.5) << Ends(0, 0);
    QTest::newRow("two samples") << 2 << half << qint64{2} << Ends(0.5, 0.5) << Ends(1, 1);
    // Sum 1.5, alternating sum 0.5, at a quarter of the rate |0.5 - 0.5i - 0.5|, all over 3 / 2
    // = 1.
    QTest::newRow("three samples")
        << 3 << half << qint64{4} << Ends(0.5, 0.5) << Ends(0.5, std::sqrt(2.5));
    QTest::newRow("silence") << 12000 << Token(silence) << qint64{16384} << Ends(0, 0)
                             << Ends(0, 0);
}

// Catches a transform, a list or a chart that cannot take them.
void TestCharts::shortAndSilentTokensArePlotted()
{
    QFETCH(const int, nSamples);
    QFETCH(const Token, value);
    QFETCH(const qint64, nFFT);
    QFETCH(const Ends, waveRange);
    QFETCH(const Ends, spectrumRange);
    QVERIFY(showToken(nSamples, value));
    QCOMPARE(points(&OperatorWindow::waveformChart).size(), nSamples);
    QCOMPARE(m_window->nFFT, nFFT);
    QCOMPARE(m_window->amplitudes.size(), nFFT / 2);
    QCOMPARE(points(&OperatorWindow::spectrumChart).size(), m_window->data.nFreqPointsToPlot);
    QCOMPARE(rangeOf(m_window->waveformChart.verticalAxis), waveRange);
    QCOMPARE(rangeOf(m_window->spectrumChart.verticalAxis), spectrumRange);
    QVERIFY(!m_window->grab().isNull());
}

// Catches an axis that starts at 0 and not at the smallest amplitude.
void TestCharts::theSpectrumsAxisStartsAtTheSmallestAmplitude()
{
    // An impulse has the same amplitude in all bins but the first.
    QVERIFY(showToken(4, [](int i) { return i == 0 ? 16384 : 0; }));
    QCOMPARE(rangeOf(m_window->spectrumChart.verticalAxis), Ends(0.25, std::sqrt(0.5) / 2));
    QCOMPARE(m_window->spectrumRange, (QList<double>{0.25, std::sqrt(0.5) / 2}));
}

// Catches a peak of another height or at another frequency than the sine has.
void TestCharts::aSineIsAPeakOfItsHeightAndFrequency()
{
    constexpr double amplitude = 16384;
    constexpr double cycles = 100;
    QVERIFY(showToken(16384, [](int i) {
        return static_cast<int>(std::lround(amplitude * std::sin(2 * M_PI * cycles * i / 16384)));
    }));
    const QPointF peak = points(&OperatorWindow::spectrumChart).at(100);
    QCOMPARE(peak.x(), cycles * rate / 16384);
    QVERIFY(std::abs(peak.y() - 0.5) < 2 / 32768.0 / 2); // the samples are rounded to 16 bits
    QVERIFY(std::abs(m_window->spectrumChart.verticalAxis->max() - peak.y()) < 1e-12);
}

// Catches a window that is not applied, is drawn in the waveform, or is taken for another.
void TestCharts::theWindowWeightsTheSpectrumAndNotTheWaveform()
{
    m_window->fftWindowType = 1;
    QVERIFY(showToken(5, [](int) { return 16384; }));
    QCOMPARE(m_window->soundWave.first(), 0.0);
    QCOMPARE(m_window->soundWave.at(2), 0.5);
    // The waveform was drawn before.
    QCOMPARE(points(&OperatorWindow::waveformChart).first().y(), 0.5);

    m_window->fftWindowType = 2;
    QVERIFY(showToken(5, [](int) { return 16384; }));
    QCOMPARE(m_window->amplitudes, QList<double>(4, 0.0));
}

// Catches a token without samples that is drawn as something or cannot be drawn.
void TestCharts::aTokenWithoutSamplesIsDrawnEmpty()
{
    QVERIFY(showToken(0, silence));
    QCOMPARE(points(&OperatorWindow::waveformChart).size(), 0);
    QCOMPARE(points(&OperatorWindow::spectrumChart).size(), 0);
    QVERIFY(!m_window->grab().isNull());
}

// Catches points and ranges that a longer token leaves behind.
void TestCharts::theNextTokenReplacesTheFirst()
{
    QVERIFY(showToken(12000, ramp));
    QVERIFY(showToken(100, [](int) { return 8192; }));
    QCOMPARE(points(&OperatorWindow::waveformChart).size(), 100);
    QCOMPARE(points(&OperatorWindow::waveformChart).first(), QPointF(0, 0.25));
    QCOMPARE(rangeOf(m_window->waveformChart.verticalAxis), Ends(0.25, 0.25));
}

// Catches an axis that uses the file's sampling rate in place of the session's.
void TestCharts::theAxesUseTheSessionsSamplingRate()
{
    QVERIFY(writeFile(m_folder->filePath("MOV001.wav"),
                      WavBytes{.sampleRate = 24000, .data = QByteArray(2400, '\0')}.bytes()));
    QVERIFY(prepare(m_folder->path()));
    QCOMPARE(points(&OperatorWindow::waveformChart).last().x(), 1199 / 48.0);
    QCOMPARE(rangeOf(m_window->waveformChart.horizontalAxis), Ends(0, 25));
    QCOMPARE(m_window->frequencies.at(1), 48000.0 / 2048);
}

void TestCharts::equalValuesAreALineInTheMiddleAtEverySize_data()
{
    QTest::addColumn<int>("nSamples");
    QTest::addColumn<Token>("value");
    QTest::addColumn<ChartMember>("chart");
    QTest::addColumn<double>("end");
    QTest::addColumn<QString>("label");

    const ChartMember waveform = &OperatorWindow::waveformChart;
    const ChartMember spectrum = &OperatorWindow::spectrumChart;
    QTest::newRow("waveform of silence") << 12000 << Token(silence) << waveform << 0.0 << "0";
    QTest::newRow("spectrum of silence") << 12000 << Token(silence) << spectrum << 0.0 << "0";
    QTest::newRow("constant") << 12000 << Token([](int) { return 8192; }) << waveform << 0.25
                              << "0.25";
    QTest::newRow("negative") << 12000 << Token([](int) { return -16384; }) << waveform << -0.5
                              << "-0.5";
    QTest::newRow("least value") << 12000 << Token([](int) { return 1; }) << waveform << 1 / 32768.0
                                 << "3.05176e-05";
    // The sum is 6/8, the alternating sum -2/8, at a quarter of the rate 2/8 - 6i/8: all of the
    // length sqrt(40)/8, over 4 / 2.
    const QList<int> samples = {8192, 20480, 0, -4096};
    QTest::newRow("equal amplitudes") << 4 << Token([samples](int i) { return samples.at(i); })
                                      << spectrum << std::sqrt(40.0) / 16 << "0.395285";
}

// Catches a chart that goes on showing the token before, or nothing, or the wrong place after a
// change of size, when all its values are equal: Qt lays no axis out whose ends are.
void TestCharts::equalValuesAreALineInTheMiddleAtEverySize()
{
    QFETCH(const int, nSamples);
    QFETCH(const Token, value);
    QFETCH(const ChartMember, chart);
    QFETCH(const double, end);
    QFETCH(const QString, label);
    const auto check = [&] {
        settle();
        const LineChart &shown = m_window.get()->*chart;
        QCOMPARE(rangeOf(shown.verticalAxis), Ends(end, end));
        QCOMPARE(labels(shown, Qt::Vertical), QStringList(label));
        const QRect line = paintedLine(shown);
        const QRect plot = plotArea(shown);
        QVERIFY(line.height() > 0);
        QVERIFY(line.height() <= 3);
        QVERIFY(std::abs(line.center().y() - plot.center().y()) <= 1);
        QVERIFY(line.left() <= plot.left() + 2);
        QVERIFY(line.right() >= plot.right() - 4);
    };

    constexpr double upperFrequency = 30000; // so that four samples give a line
    m_window->data.upperFrequencyToPlot = upperFrequency;
    QVERIFY(prepareTokens(10));
    const QList<QImage> before = paintedCharts();
    QVERIFY(showToken(nSamples, value));
    check();
    const QList<QImage> painted = paintedCharts();
    m_window->resize(1500, 1000);
    check();
    QVERIFY(paintedCharts() != painted);
    m_window->resize(1152, 810);
    check();
    QCOMPARE(paintedCharts(), painted);
    QVERIFY(prepareTokens(10));
    QCOMPARE(paintedCharts(), before);

    init();
    m_window->data.upperFrequencyToPlot = upperFrequency;
    QVERIFY(showToken(nSamples, value));
    check();
    QCOMPARE(paintedCharts(), painted);
}

void TestCharts::valuesThatDifferByRoundingAreAFlatLine_data()
{
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<QString>("label");

    QTest::newRow("by rounding") << 0.25 << std::nextafter(0.25, 1) << "0.25";
    QTest::newRow("large") << 1e6 << 1e6 + 1e-7 << "1e+06";
}

// Catches a line over the whole height of an axis that Qt does not lay out, since its ends differ
// by rounding alone.
void TestCharts::valuesThatDifferByRoundingAreAFlatLine()
{
    QFETCH(const double, min);
    QFETCH(const double, max);
    QFETCH(const QString, label);
    const LineChart &chart = m_window->waveformChart;
    showLine(chart, {{0, min}, {1, max}}, {0, 1}, {min, max});
    settle();
    QCOMPARE(rangeOf(chart.verticalAxis), Ends(min, min));
    QCOMPARE(labels(chart, Qt::Vertical), QStringList(label));
    const QRect line = paintedLine(chart);
    QVERIFY(line.width() > plotArea(chart).width() / 2);
    QVERIFY(line.height() <= 3);
}

// Catches a chart that shows the span of an earlier call.
void TestCharts::theSpanIsWorkedOutAgainForEachDrawing()
{
    QVERIFY(showToken(12000, ramp));
    m_window->data.alwaysPlotEntireWaveformFlag = 0;
    m_window->data.durationToPlot = 0.125;
    m_window->displayWav();
    QCOMPARE(m_window->data.nPointsToPlot, 6000);
    QCOMPARE(points(&OperatorWindow::waveformChart).size(), 6000);
    QCOMPARE(rangeOf(m_window->waveformChart.horizontalAxis), Ends(0, 125));
}

// Catches a transform that takes the duration as it finds it.
void TestCharts::theTransformWorksOutItsDurationAgain()
{
    QVERIFY(showToken(12000, ramp));
    m_window->fftDuration = 7;
    m_window->freqResolution = 7;
    m_window->genFFT();
    QCOMPARE(m_window->fftDuration, 16384 / 48000.0);
    QCOMPARE(m_window->freqResolution, 48000.0 / 16384);
}

// Catches a range of the plotted bins alone: the sine lies above the upper frequency, at a fifth of
// the sampling rate at most.
void TestCharts::theSpectrumsRangeCoversBinsThatAreNotPlotted()
{
    QVERIFY(showToken(16384, [](int i) {
        return static_cast<int>(std::lround(16384 * std::sin(2 * M_PI * 3000 * i / 16384)));
    }));
    QVERIFY(m_window->data.nFreqPointsToPlot < 3000);
    QVERIFY(std::abs(m_window->spectrumRange.at(1) - 0.5) < 1e-4);
    QCOMPARE(rangeOf(m_window->spectrumChart.verticalAxis),
             Ends(m_window->spectrumRange.at(0), m_window->spectrumRange.at(1)));
}

void TestCharts::threeChannelsKeepTheSamplesOfThisSessionOnly_data()
{
    QTest::addColumn<int>("trialIndex");
    QTest::addColumn<int>("playCount");
    QTest::addColumn<QList<double>>("expected");

    QTest::newRow("first trial") << 0 << 0 << QList<double>(4, 0.0);
    QTest::newRow("first trial, played") << 0 << 1 << QList<double>{0.25, 0.25, 0.25, 0};
    QTest::newRow("second trial") << 1 << 0 << QList<double>{0.25, 0.25, 0.25, 0};
}

// Catches samples of an earlier session in the first trial, whose token has more channels than are
// taken, and such samples lost in a later one.
void TestCharts::threeChannelsKeepTheSamplesOfThisSessionOnly()
{
    QFETCH(const int, trialIndex);
    QFETCH(const int, playCount);
    QVERIFY(showToken(3, [](int) { return 8192; }));
    m_window->lineEditNTimes->setText("2");
    QVERIFY(prepare(m_folder->path()));
    QVERIFY(writeFile(m_folder->filePath("MOV001.wav"),
                      WavBytes{.numChannels = 3, .data = QByteArray(24, '\x20')}.bytes()));
    m_window->trialIndex = trialIndex;
    m_window->playCount = playCount;
    m_window->genWav();
    QTEST(m_window->soundWave, "expected");
}

void TestCharts::theTrendStartsWithEachTokenAtZero_data()
{
    QTest::addColumn<int>("nTokens");
    QTest::addColumn<int>("tickCount");

    QTest::newRow("ten tokens") << 10 << 10;
    QTest::newRow("two tokens") << 2 << 2;
    // An axis does not go below two ticks.
    QTest::newRow("one token") << 1 << 2;
    QTest::newRow("a thousand tokens") << 1000 << 1000;
}

// Catches a trend without its tokens, with those of another count or with counts before there are
// answers, and ticks between them.
void TestCharts::theTrendStartsWithEachTokenAtZero()
{
    QFETCH(const int, nTokens);
    QFETCH(const int, tickCount);
    QVERIFY(prepareTokens(nTokens));
    QList<QPointF> flat;
    for (int i = 0; i < nTokens; ++i)
        flat.append(QPointF(i + 1, 0));
    QCOMPARE(points(&OperatorWindow::trendChart), flat);
    QCOMPARE(m_window->trendX.size(), nTokens);
    QCOMPARE(m_window->trendX.last(), nTokens);
    QCOMPARE(m_window->trendY, QList<double>(nTokens, 0.0));
    QCOMPARE(rangeOf(m_window->trendChart.horizontalAxis), Ends(1, nTokens));
    QCOMPARE(m_window->trendChart.horizontalAxis->tickCount(), tickCount);
    QCOMPARE(m_window->trendChart.horizontalAxis->labelFormat(), "%g");
    QCOMPARE(rangeOf(m_window->trendChart.verticalAxis), Ends(0, 4));
    QVERIFY(!m_window->grab().isNull());
}

void TestCharts::eachMotherAnswerRaisesTheTrend_data()
{
    QTest::addColumn<int>("nAnswers");
    QTest::addColumn<double>("top");

    for (int n = 1; n <= 4; ++n)
        QTest::addRow("%d", n) << n << 4.0;
    QTest::newRow("5") << 5 << 5.0;
    QTest::newRow("7") << 7 << 7.0;
}

// Catches an answer that is not counted at once, and an axis that does not grow with the counts or
// shrinks below four.
void TestCharts::eachMotherAnswerRaisesTheTrend()
{
    QFETCH(const int, nAnswers);
    QFETCH(const double, top);
    m_window->lineEditNTimes->setText("8");
    QVERIFY(prepareTokens(1));
    for (int n = 1; n <= nAnswers; ++n) {
        present(MotherResponse);
        QCOMPARE(points(&OperatorWindow::trendChart), QList<QPointF>{QPointF(1, n)});
    }
    QCOMPARE(rangeOf(m_window->trendChart.verticalAxis), Ends(0, top));
    QCOMPARE(m_window->trendRange, QList<double>(2, nAnswers));
    QCOMPARE(m_window->trendChart.horizontalAxis->tickCount(), 2);
}

// Catches an answer "stranger" that is counted, and one "mother" that is counted for another token.
void TestCharts::aStrangerAnswerDoesNotRaiseTheTrend()
{
    m_window->lineEditNTimes->setText("2");
    QVERIFY(prepareTokens(2));
    for (const int response : {StrangerResponse, MotherResponse, StrangerResponse}) {
        const QList<QPointF> before = points(&OperatorWindow::trendChart);
        present(response);
        QCOMPARE(points(&OperatorWindow::trendChart) != before, response == MotherResponse);
    }
    const QPointF expected(m_window->randomSequence.at(1) + 1, 1);
    QCOMPARE(points(&OperatorWindow::trendChart).count(expected), 1);
    QCOMPARE(m_window->trendRange, (QList<double>{0, 1}));
}

// Catches a trend that is emptied, or laid out anew, when there is no token.
void TestCharts::theTrendStaysAsItIsWithoutTokens()
{
    m_window->updateTrend();
    QCOMPARE(points(&OperatorWindow::trendChart).size(), 0);
    QCOMPARE(rangeOf(m_window->trendChart.verticalAxis), Ends(0, 4));

    QVERIFY(prepareTokens(3));
    present(MotherResponse);
    const QList<QPointF> before = points(&OperatorWindow::trendChart);
    m_window->nTokens = 0;
    m_window->trialIndex = 0;
    m_window->updateTrend();
    QCOMPARE(points(&OperatorWindow::trendChart), before);
    QCOMPARE(rangeOf(m_window->trendChart.horizontalAxis), Ends(1, 3));
    QCOMPARE(m_window->trendChart.horizontalAxis->tickCount(), 3);
}

// Catches points that are shown only where there are counts.
void TestCharts::theTrendShowsItsPointsEvenWithoutCounts()
{
    const QList<QPointF> held = {{1, 2}, {2, 3}};
    m_window->trendPoints = held;
    QVERIFY(m_window->trendY.isEmpty());
    m_window->updateTrend();
    QCOMPARE(points(&OperatorWindow::trendChart), held);
    QCOMPARE(rangeOf(m_window->trendChart.verticalAxis), Ends(0, 4));
}

// Catches what a session leaves behind in the next, among it the ticks of ten tokens for one.
void TestCharts::theNextSessionResetsTheTrend()
{
    QVERIFY(prepareTokens(10));
    present(MotherResponse);
    QVERIFY(prepareTokens(1));
    QCOMPARE(points(&OperatorWindow::trendChart), QList<QPointF>{QPointF(1, 0)});
    QCOMPARE(rangeOf(m_window->trendChart.horizontalAxis), Ends(1, 1));
    QCOMPARE(m_window->trendChart.horizontalAxis->tickCount(), 2);
}

// Catches a chart of one token that shows the tokens of the session before, or no point, or a point
// that does not rise with the answers or loses its place when the window changes its size.
void TestCharts::oneTokenIsShownInTheMiddleEvenAfterTen()
{
    m_window->lineEditNTimes->setText("4");
    QVERIFY(prepareTokens(10));
    const QList<QImage> ofTen = paintedCharts();
    const auto check = [this](int height) {
        settle();
        const LineChart &trend = m_window->trendChart;
        QCOMPARE(rangeOf(trend.horizontalAxis), Ends(1, 1));
        QCOMPARE(labels(trend, Qt::Horizontal), QStringList("1"));
        QCOMPARE(labels(trend, Qt::Vertical).size(), 5);
        const QRect marker = paintedLine(trend);
        const QRect plot = plotArea(trend);
        QVERIFY(!marker.isNull());
        QVERIFY(marker.width() < 10);
        QVERIFY(std::abs(marker.center().x() - plot.center().x()) <= 1);
        const double expected = plot.bottom() - plot.height() * height / 4.0;
        QVERIFY(std::abs(marker.center().y() - expected) <= 3);
    };

    QVERIFY(prepareTokens(1));
    check(0);
    const QList<QImage> unanswered = paintedCharts();
    for (int height = 1; height <= 3; ++height) {
        present(MotherResponse);
        check(height);
    }
    const QList<QImage> answered = paintedCharts();
    m_window->resize(1500, 1000);
    check(3);
    m_window->resize(1152, 810);
    check(3);
    QCOMPARE(paintedCharts(), answered);
    QVERIFY(prepareTokens(10));
    QCOMPARE(paintedCharts(), ofTen);

    init();
    m_window->lineEditNTimes->setText("4");
    QVERIFY(prepareTokens(1));
    QCOMPARE(paintedCharts(), unanswered);
}

// Catches a chart that shows nothing of the example tokens: where its line would be there must be
// more than one colour. With OSTRINE_PICTURES the pictures are kept there.
void TestCharts::exampleTokensAreDrawnInEveryChart()
{
    m_window->lineEditNTimes->setText("2");
    QVERIFY(prepare(QFINDTESTDATA("../../examples/tokens")));
    m_window->reactionTimer->start();
    for (const int response : {MotherResponse, StrangerResponse, MotherResponse, MotherResponse})
        present(response);
    QTest::qWait(50); // charts lay their axes out from the event loop

    const QMap<QString, QWidget *> views = {{"waveform", m_window->waveformChart.view},
                                            {"spectrum", m_window->spectrumChart.view},
                                            {"trend", m_window->trendChart.view},
                                            {"operator-window", m_window.get()}};
    const QString folder = qEnvironmentVariable("OSTRINE_PICTURES");
    for (auto view = views.cbegin(); view != views.cend(); ++view) {
        const QPixmap picture = view.value()->grab();
        if (!folder.isEmpty())
            QVERIFY(picture.save(folder + "/" + view.key() + ".png"));
        const QImage image = picture.toImage();
        QSet<QRgb> colours;
        for (int x = image.width() / 4; x < image.width() * 3 / 4; ++x) {
            for (int y = image.height() / 4; y < image.height() * 3 / 4; ++y)
                colours.insert(image.pixel(x, y));
        }
        QVERIFY2(colours.size() > 10, qPrintable(view.key()));
    }
}

void TestCharts::theChartsFollowThePalette_data()
{
    QTest::addColumn<bool>("startsDark");
    QTest::addColumn<bool>("isDark");
    QTest::newRow("light") << false << false;
    QTest::newRow("dark") << true << true;
    QTest::newRow("turns dark") << false << true;
    QTest::newRow("turns light") << true << false;
}

// Catches a chart that stays white on a dark desktop, keeps its colours when the palette changes,
// or has texts, lines or axes that cannot be told from their background, also during a session.
void TestCharts::theChartsFollowThePalette()
{
    QFETCH(const bool, startsDark);
    QFETCH(const bool, isDark);
    const QPalette before = QApplication::palette();
    const auto restore = qScopeGuard([&] { QApplication::setPalette(before); });
    const QPalette dark(QColor(60, 60, 60), QColor(40, 40, 40));
    QApplication::setPalette(startsDark ? dark : before);
    init();
    QVERIFY(prepare(QFINDTESTDATA("../../examples/tokens")));
    m_window->setEnabled(false);
    QApplication::setPalette(isDark ? dark : before);
    settle();

    const QColor base = QApplication::palette().color(QPalette::Base);
    QCOMPARE(base.lightness() < 128, isDark);
    for (const LineChart *chart :
         {&m_window->waveformChart, &m_window->spectrumChart, &m_window->trendChart}) {
        const QImage image = chart->view->grab().toImage();
        const QRect plot = plotArea(*chart);
        QCOMPARE(image.pixelColor(plot.right() - 20, plot.top() - 5), base);
        QVERIFY(highestContrast(image, QRect(0, 2, image.width(), plot.top() - 10), base) >= 4.5);
        QVERIFY(highestContrast(image, QRect(2, plot.top(), 15, plot.height()), base) >= 4.5);
        const int below = plot.bottom() + 6;
        QVERIFY(highestContrast(image, QRect(2, below, image.width() - 4, 12), base) >= 4.5);
        QVERIFY(contrast(chart->series->color(), base) >= 2.5);
        QVERIFY(!paintedLine(*chart).isNull());
        // A grid line, which the line does not cover, and the vertical axis.
        const QRect gridLine(plot.right() - 10, plot.top() - 1, 1, 3);
        const double grid = highestContrast(image, gridLine, base);
        QVERIFY2(grid > 1.1 && grid < 3, qPrintable(QString::number(grid)));
        const QRect axis(plot.left() - 1, plot.top() + plot.height() / 8, 3, 1);
        QVERIFY(highestContrast(image, axis, base) >= 2);
    }
}

void TestCharts::theTitlesAreWholeOnASmallScreen_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("1024 x 768") << QSize(819, 691);
    QTest::newRow("1366 x 768") << QSize(1092, 691);
    QTest::newRow("1920 x 1080") << QSize(1536, 972);
}

// Catches an axis or a chart whose title has no room, and a line that has too little because of it.
void TestCharts::theTitlesAreWholeOnASmallScreen()
{
    QFETCH(const QSize, size);
    m_window->resize(size);
    QVERIFY(prepare(QFINDTESTDATA("../../examples/tokens")));
    settle();
    for (const LineChart *chart :
         {&m_window->waveformChart, &m_window->spectrumChart, &m_window->trendChart}) {
        QVERIFY(plotArea(*chart).height() >= 0.2 * size.height());
        QStringList shown;
        const QRectF whole = chart->view->sceneRect();
        for (const QGraphicsItem *item : chart->view->scene()->items()) {
            const auto *text = dynamic_cast<const QGraphicsTextItem *>(item);
            if (text != nullptr && text->isVisible() &&
                whole.adjusted(-4, -4, 4, 4).contains(text->sceneBoundingRect()))
                shown.append(text->toPlainText());
        }
        for (const QString &title : {chart->chart->title(), chart->horizontalAxis->titleText(),
                                     chart->verticalAxis->titleText()})
            QVERIFY2(shown.contains(title), qPrintable(title + " of " + shown.join(", ")));
    }
}

GUI_TEST_MAIN(TestCharts)
#include "tst_charts.moc"
