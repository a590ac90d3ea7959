// SPDX-License-Identifier: GPL-3.0-or-later
#include "subject/SubjectWindow.h"
#include "support/GuiTestMain.h"
#include "support/Noise.h"
#include "support/OperatorWindow.h"
#include "support/Recording.h"
#include "support/WavFile.h"
#include "tools/ExperimentWindow.h"

#include <QChartView>
#include <QLineSeries>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QValueAxis>

#include <chrono>
#include <memory>

using namespace std::chrono_literals;

namespace {

constexpr int endTimeout = 10000; // ms

/// What a chart shows: its points, and the ends of its axes.
struct Drawing
{
    explicit Drawing(const QChartView *view)
    {
        const QChart *chart = view->chart();
        points = qobject_cast<QLineSeries *>(chart->series().first())->points();
        for (const QAbstractAxis *axis : chart->axes()) {
            ends.append(qobject_cast<const QValueAxis *>(axis)->min());
            ends.append(qobject_cast<const QValueAxis *>(axis)->max());
        }
    }
    bool operator==(const Drawing &) const = default;

    QList<QPointF> points;
    QList<double> ends;
};

/// A window whose sound server stops as soon as it is asked.
class StoppedWindow : public ExperimentWindow
{
protected:
    StreamFollower::Reading readStream() const override { return {.stopped = true}; }
};

} // namespace

/// What the tools borrow from the experiment.
class TestExperimentWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aTokenIsDrawnAsInASession_data();
    void aTokenIsDrawnAsInASession();
    void whatASessionCannotPresentIsNoSound_data();
    void whatASessionCannotPresentIsNoSound();
    void itsChartsAreRemovedFromTheirPlaceWithIt();
    void aTokenIsHeardWholeAfterThePause();
    void aSoundThatIsStoppedHasNoEnd_data();
    void aSoundThatIsStoppedHasNoEnd();
    void loadingATokenStopsTheSound();
    void aServerThatStopsIsTold();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestExperimentWindow::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(writeFile(m_folder->filePath("good.wav"), wavBytes(noise(1000, 1))));
}

void TestExperimentWindow::aTokenIsDrawnAsInASession_data()
{
    QTest::addColumn<QByteArray>("file");
    const QByteArray samples =
        WavBytes::samples16({16384, -16384, 8192, 100, -7, 4096, 0, 3}).repeated(300);
    QTest::newRow("mono") << WavBytes{.data = samples}.bytes();
    QTest::newRow("stereo") << WavBytes{.numChannels = 2, .data = samples}.bytes();
    QTest::newRow("another rate") << WavBytes{.sampleRate = 22050, .data = samples}.bytes();
}

// Catches charts that are drawn by another rule, and a token that still shows the one before.
void TestExperimentWindow::aTokenIsDrawnAsInASession()
{
    QFETCH(const QByteArray, file);
    QVERIFY(writeFile(m_folder->filePath("token.wav"), file));
    OperatorWindow session;
    Record record;
    record.filePath = m_folder->path();
    record.filename = "token.wav";
    session.data.records = {record};
    session.genWav();
    session.displayWav();
    session.genFFT();
    session.displayFFT();

    ExperimentWindow window;
    QVERIFY(window.loadToken(m_folder->path(), "good.wav"));
    QVERIFY(!(Drawing(window.waveformView()) == Drawing(session.waveformChart.view)));
    QVERIFY(window.loadToken(m_folder->path(), "token.wav"));
    QVERIFY(Drawing(window.waveformView()) == Drawing(session.waveformChart.view));
    QVERIFY(Drawing(window.spectrumView()) == Drawing(session.spectrumChart.view));
    QVERIFY(!Drawing(window.spectrumView()).points.isEmpty());
}

void TestExperimentWindow::whatASessionCannotPresentIsNoSound_data()
{
    QTest::addColumn<QByteArray>("file");
    const QByteArray samples = WavBytes::samples16({1, 2, 3, 4, 5, 6});
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no samples") << WavBytes().bytes();
    QTest::newRow("truncated") << WavBytes{.data = samples, .declaredSize = 100}.bytes();
    QTest::newRow("three channels") << WavBytes{.numChannels = 3, .data = samples}.bytes();
}

// Catches the previous token being drawn and played under the name of one that cannot be.
void TestExperimentWindow::whatASessionCannotPresentIsNoSound()
{
    QFETCH(const QByteArray, file);
    QVERIFY(writeFile(m_folder->filePath("bad.wav"), file));
    ExperimentWindow window;
    QVERIFY(window.loadToken(m_folder->path(), "good.wav"));
    QVERIFY(!window.loadToken(m_folder->path(), "bad.wav"));
    QVERIFY(Drawing(window.waveformView()).points.isEmpty());
    QVERIFY(Drawing(window.spectrumView()).points.isEmpty());
    window.present(0ms);
    QVERIFY(!window.isPresenting());
    QVERIFY(window.loadToken(m_folder->path(), "good.wav"));
    QCOMPARE(Drawing(window.waveformView()).points.size(), 1000);
}

// Catches a chart that is deleted twice, or left where it was placed.
void TestExperimentWindow::itsChartsAreRemovedFromTheirPlaceWithIt()
{
    QWidget page;
    auto *layout = new QVBoxLayout(&page);
    {
        const ExperimentWindow window;
        layout->addWidget(window.waveformView());
        layout->addWidget(window.spectrumView());
        QCOMPARE(page.findChildren<QChartView *>().size(), 2);
    }
    QCOMPARE(page.findChildren<QChartView *>().size(), 0);
}

// Catches a token that is cut, another one, a pause that is left out or doubled, and an output that
// is not held open.
void TestExperimentWindow::aTokenIsHeardWholeAfterThePause()
{
    const QList<double> token = noise(12000, 7);
    QVERIFY(writeFile(m_folder->filePath("token.wav"), wavBytes(token)));
    const Recording recording;
    QVERIFY2(recording.isRunning(), "run this by scripts/private-session.sh --audio");
    ExperimentWindow window;
    const QSignalSpy playing(&window, &MainWindow::soundPlaying);
    window.openOutput();
    QVERIFY(window.isOutputOpen());
    QVERIFY(window.loadToken(m_folder->path(), "token.wav"));

    constexpr int mostGaps = 3; // of a machine that stops for a moment
    HeardToken heard;
    for (int play = 1; play <= 1 + mostGaps && !heard.whole; ++play) {
        const auto begun = std::chrono::steady_clock::now();
        window.present(300ms);
        QVERIFY(window.isPresenting());
        QCOMPARE(playing.size(), 2 * play - 2);
        QTRY_COMPARE_WITH_TIMEOUT(playing.size(), 2 * play - 1, endTimeout);
        QVERIFY(std::chrono::steady_clock::now() - begun >= 290ms);
        QTRY_COMPARE_WITH_TIMEOUT(playing.size(), 2 * play, endTimeout);
        QCOMPARE(playing.last().first().toInt(), tokenHasEnded);
        QVERIFY(window.lastTiming().tokenEnd >= 250);
        QVERIFY(window.lastTiming().tokenEnd < 250 + 300);
        QTRY_VERIFY(!window.isPresenting());
        heard = findToken(recording.samples(), token);
        QVERIFY2(heard.whole || heard.hasGap(), qPrintable(heard.text()));
    }
    QVERIFY2(heard.whole, qPrintable(heard.text()));
    window.closeOutput();
    QVERIFY(!window.isOutputOpen());
}

void TestExperimentWindow::aSoundThatIsStoppedHasNoEnd_data()
{
    QTest::addColumn<bool>("whilePlaying");
    QTest::newRow("in the pause before it") << false;
    QTest::newRow("while it plays") << true;
}

// Catches a sound that plays on, or is told to have been heard, after it has been stopped.
void TestExperimentWindow::aSoundThatIsStoppedHasNoEnd()
{
    QFETCH(const bool, whilePlaying);
    ExperimentWindow window;
    const QSignalSpy playing(&window, &MainWindow::soundPlaying);
    window.setSound(noise(24000, 3));
    window.present(100ms);
    if (whilePlaying)
        QTRY_COMPARE(playing.size(), 1);
    window.stopSound();
    QVERIFY(!window.isPresenting());
    QTest::qWait(1000);
    QCOMPARE(playing.size(), whilePlaying ? 1 : 0);
}

// Catches a token that is still heard when the next one has been drawn.
void TestExperimentWindow::loadingATokenStopsTheSound()
{
    const WavBytes file{.bitsPerSample = 16, .data = QByteArray(9600, '\x10')};
    QVERIFY(writeFile(m_folder->filePath("a.wav"), file.bytes()));
    ExperimentWindow window;
    const QSignalSpy playing(&window, &MainWindow::soundPlaying);
    window.setSound(noise(24000, 3));
    window.present(100ms);
    QTRY_COMPARE(playing.size(), 1);
    QVERIFY(window.loadToken(m_folder->path(), "a.wav"));
    QVERIFY(!window.isPresenting());
}

// Catches a page that waits for the end of a sound that the server no longer plays.
void TestExperimentWindow::aServerThatStopsIsTold()
{
    StoppedWindow window;
    const QSignalSpy failed(&window, &ExperimentWindow::soundFailed);
    window.setSound(noise(24000, 3));
    window.present(0ms);
    QTRY_COMPARE(failed.size(), 1);
}

GUI_TEST_MAIN(TestExperimentWindow)
#include "tst_experimentwindow.moc"
