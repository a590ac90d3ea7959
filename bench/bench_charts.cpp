// SPDX-License-Identifier: GPL-3.0-or-later
// Compares the window's charts with the least that Qt Charts takes: the same charts with the same
// points, filled and painted without the window.
//
//   bench_charts [options of Google Benchmark]    the times
//   bench_charts --memory                         the memory, as a Markdown table

#include "plots/Spectrum.h"
#include "support/OperatorWindow.h"
#include "support/WavFile.h"

#include <QApplication>
#include <QChartView>
#include <QLineSeries>
#include <QProcess>
#include <QTemporaryDir>
#include <QValueAxis>
#include <QWidget>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>

namespace {

const QSize windowSize(1152, 810);

/// Paints a chart as a repaint does, at once and only once.
void paint(const LineChart &chart)
{
    if (chart.view->grab().isNull())
        qFatal("nothing was painted");
}

/// Two tokens of different loudness: each preparation changes points and ranges.
struct TokenFolder
{
    explicit TokenFolder(int nSamples)
    {
        for (const double amplitude : {16000.0, 20000.0}) {
            QByteArray data;
            for (int i = 0; i < nSamples; ++i) {
                const double noise = ((i * 2654435761U) % 1000) / 500.0 - 1;
                const auto sample =
                    std::lround(amplitude * (0.7 * std::sin(i * 0.05) + 0.3 * noise));
                data += WavBytes::little(static_cast<std::uint32_t>(sample), 2);
            }
            Record record;
            record.filePath = folder.path();
            record.filename = QString("%1.wav").arg(amplitude);
            if (!writeFile(folder.filePath(record.filename), WavBytes{.data = data}.bytes()))
                qFatal("cannot write a token");
            records.append(record);
        }
    }

    QTemporaryDir folder;
    QList<Record> records;
};

/// The operator's window, preparing one token after the other.
class Window
{
public:
    explicit Window(int nSamples)
        : m_tokens(nSamples)
    {
        m_window.data.records = m_tokens.records;
        m_window.randomSequence = {0, 1};
        m_window.resize(windowSize);
        m_window.show();
        QCoreApplication::processEvents();
        prepare();
    }

    void prepare()
    {
        m_window.trialIndex = 1 - m_window.trialIndex;
        m_window.genWav();
        m_window.displayWav();
        m_window.genFFT();
        m_window.displayFFT();
        paint(m_window.waveformChart);
        paint(m_window.spectrumChart);
    }

    OperatorWindow &window() { return m_window; }

private:
    TokenFolder m_tokens;
    OperatorWindow m_window;
};

/// What a chart shows of a token.
struct Plotted
{
    QList<QPointF> points;
    qreal left, right, bottom, top;
};

/// The two charts of the current token alone in a window of the same size.
class BareCharts
{
public:
    BareCharts()
    {
        Window model(1);
        for (const LineChart *chart :
             {&model.window().waveformChart, &model.window().spectrumChart}) {
            LineChart own = createLineChart({"title", "horizontal", "vertical"},
                                            model.window().chartFonts, 200);
            own.horizontalAxis->setLabelFormat(chart->horizontalAxis->labelFormat());
            own.view->setParent(&m_window);
            own.view->setGeometry(chart->view->geometry());
            m_charts.append(own);
        }
        m_window.resize(windowSize);
        m_window.show();
        QCoreApplication::processEvents();
    }

    void prepare(const QList<Plotted> &token)
    {
        for (qsizetype i = 0; i < m_charts.size(); ++i) {
            const Plotted &plotted = token.at(i);
            m_charts.at(i).series->replace(plotted.points);
            m_charts.at(i).horizontalAxis->setRange(plotted.left, plotted.right);
            m_charts.at(i).verticalAxis->setRange(plotted.bottom, plotted.top);
        }
        for (const LineChart &chart : m_charts)
            paint(chart);
    }

private:
    QWidget m_window; ///< owns the charts
    QList<LineChart> m_charts;
};

/// What the operator's window shows of its two tokens.
QList<QList<Plotted>> plottedTokens(int nSamples)
{
    Window model(nSamples);
    QList<QList<Plotted>> tokens;
    for (int token = 0; token < 2; ++token) {
        model.prepare();
        tokens.emplaceBack();
        for (const LineChart *chart :
             {&model.window().waveformChart, &model.window().spectrumChart}) {
            tokens.last().append({chart->series->points(), chart->horizontalAxis->min(),
                                  chart->horizontalAxis->max(), chart->verticalAxis->min(),
                                  chart->verticalAxis->max()});
        }
    }
    return tokens;
}

void prepareToken(benchmark::State &state)
{
    Window window(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state)
        window.prepare();
}

void prepareBareCharts(benchmark::State &state)
{
    const QList<QList<Plotted>> tokens = plottedTokens(static_cast<int>(state.range(0)));
    BareCharts charts;
    qsizetype current = 0;
    for ([[maybe_unused]] auto _ : state) {
        current = 1 - current;
        charts.prepare(tokens.at(current));
    }
}

/// The window after the answer to one of @p nTokens tokens.
class Answered
{
public:
    explicit Answered(int nTokens)
    {
        window.resize(windowSize);
        window.show();
        window.nTokens = nTokens;
        window.updateTrend();
        QCoreApplication::processEvents();
        window.trialIndex = 1;
    }

    void answer()
    {
        m_count = 5 - m_count;
        window.trendY[0] = m_count;
        window.trendPoints[0].setY(m_count);
    }

    OperatorWindow window;

private:
    int m_count = 2;
};

void updateTrend(benchmark::State &state)
{
    Answered answered(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        answered.answer();
        answered.window.updateTrend();
    }
}

void replaceTrendSeries(benchmark::State &state)
{
    Answered answered(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        answered.answer();
        answered.window.trendChart.series->replace(answered.window.trendPoints);
    }
}

/// The trend chart of a window, which shows other tokens each time.
class Trend
{
public:
    Trend()
    {
        m_window.resize(windowSize);
        m_window.show();
        QCoreApplication::processEvents();
    }

    /// As a preparation does.
    void showTokens(int nTokens)
    {
        m_window.nTokens = nTokens;
        m_window.updateTrend();
        paint(m_window.trendChart);
    }

    /// The same with a tick for each token, however many there are.
    void showTokensWithSingleTicks(int nTokens)
    {
        m_window.trendChart.horizontalAxis->setTickCount(nTokens);
        QList<QPointF> points;
        for (int i = 0; i < nTokens; ++i)
            points.append(QPointF(i + 1, 0));
        showLine(m_window.trendChart, points, {1, static_cast<double>(nTokens)}, {0, 4});
        paint(m_window.trendChart);
    }

private:
    OperatorWindow m_window;
};

template<void (Trend::*show)(int)>
void prepareTrend(benchmark::State &state)
{
    Trend trend;
    for ([[maybe_unused]] auto _ : state) {
        trend.showTokens(10);
        (trend.*show)(static_cast<int>(state.range(0)));
    }
}

// The names tell compare.py what is compared with what.
BENCHMARK(prepareToken)->Name("prepare token/ostrine")->Arg(12000)->Arg(48000)->Arg(480000);
BENCHMARK(prepareBareCharts)
    ->Name("prepare token/bare charts")
    ->Arg(12000)
    ->Arg(48000)
    ->Arg(480000);
BENCHMARK(updateTrend)->Name("update trend/ostrine")->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(prepareTrend<&Trend::showTokens>)
    ->Name("prepare trend/ostrine")
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(5000)
    ->Arg(50000);
// The largest does not end.
BENCHMARK(prepareTrend<&Trend::showTokensWithSingleTicks>)
    ->Name("prepare trend/a tick per token")
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(5000);
BENCHMARK(replaceTrendSeries)->Name("update trend/bare series")->Arg(10)->Arg(100)->Arg(1000);

/// The value in bytes of a field of the process's status, such as "VmHWM:".
double memory(const QByteArray &field)
{
    QFile status("/proc/self/status");
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith(field))
                return line.mid(field.size()).simplified().split(' ').first().toDouble() * 1024;
        }
    }
    qFatal("no memory figures");
}

constexpr int preparations = 5;

void tellMemory()
{
    std::printf("%.0f %.0f\n", memory("VmRSS:"), memory("VmHWM:"));
}

/// Prepares tokens, and prints how much memory the process takes at the end and took at the peak.
void tellMemoryOfWindow(int nSamples)
{
    Window window(nSamples);
    for (int i = 0; i < preparations; ++i)
        window.prepare();
    tellMemory();
}

/// The same for the bare charts, with as many points.
void tellMemoryOfBareCharts(int nSamples)
{
    const SpectrumSize spectrum = spectrumSize(nSamples, 48000, 2000);
    BareCharts charts;
    for (int i = 0; i < preparations; ++i) {
        QList<Plotted> token;
        for (const int nPoints : {nSamples, spectrum.nFreqPointsToPlot}) {
            QList<QPointF> points(nPoints);
            for (int point = 0; point < nPoints; ++point)
                points[point] = QPointF(point, std::sin(point * 0.05));
            token.append({points, 0, double(nPoints), -1, 1.0 + i});
        }
        charts.prepare(token);
    }
    tellMemory();
}

QList<double> memoryOf(const QString &who, int nSamples)
{
    QProcess process;
    // The allocator must give back freed memory at once: how much it keeps otherwise varies.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("MALLOC_MMAP_THRESHOLD_", "131072");
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(),
                  {"--memory", who, QString::number(nSamples)});
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        qFatal("a measuring process failed");
    const QList<QByteArray> values = process.readAllStandardOutput().simplified().split(' ');
    return {values.at(0).toDouble(), values.at(1).toDouble()};
}

/// Each figure is that of one process, minus that of a process with a token of a single sample.
void printMemoryTable()
{
    std::printf("| samples | who | bytes per sample | at the peak |\n|---|---|---|---|\n");
    for (const int nSamples : {48000, 480000}) {
        for (const char *who : {"ostrine", "bare"}) {
            const QList<double> base = memoryOf(who, 1);
            const QList<double> used = memoryOf(who, nSamples);
            std::printf("| %d | %s | %.0f | %.0f |\n", nSamples, who,
                        (used.at(0) - base.at(0)) / nSamples, (used.at(1) - base.at(1)) / nSamples);
        }
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments.at(1) == "--memory") {
        const int nSamples = arguments.at(3).toInt();
        arguments.at(2) == "ostrine" ? tellMemoryOfWindow(nSamples)
                                     : tellMemoryOfBareCharts(nSamples);
        return EXIT_SUCCESS;
    }
    if (arguments.size() == 2 && arguments.at(1) == "--memory") {
        printMemoryTable();
        return EXIT_SUCCESS;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
