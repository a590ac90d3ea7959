// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Controls.h"
#include "support/GuiTestMain.h"
#include "support/ModalAnswer.h"
#include "support/WaitFor.h"
#include "support/WavFile.h"
#include "timing/SoundRecorder.h"
#include "tools/TimingPage.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>

#include <memory>

/// The page of the companion that measures the timing, on a sound server of its own.
class TestTimingPage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_page.reset(); }

    void eachPlayIsShownAndTheResultAtTheEnd();
    void theReportIsSavedAsHtmlAndPdf();
    void aReportThatCannotBeSavedIsSaid();
    void aStoppedMeasurementKeepsItsPlays();
    void anInputCanBeChosen();
    void aMissingSoundServerIsSaid();
    void everyControlHasANameAndIsReachedByTheTabKey();
    void thePageFitsIntoASmallScreen();

private:
    template<typename Widget>
    Widget *named(const QString &name) const
    {
        return namedControl<Widget>(*m_page, name);
    }
    QPushButton *button(const QString &text) const { return shownButton(*m_page, text); }
    void click(const QString &text) const { QTest::mouseClick(button(text), Qt::LeftButton); }
    QString verdict() const { return named<QLabel>("Verdict")->text(); }
    QString sentence() const
    {
        return named<QPlainTextEdit>("Sentence for a paper")->toPlainText();
    }
    QComboBox *sources() const { return named<QComboBox>("What is recorded"); }
    int barSum() const;
    QString cell(int row, int column) const
    {
        return named<QTableWidget>("Results by length of the token")->item(row, column)->text();
    }
    bool isDone() const { return button("Start")->isEnabled(); }
    /// Plays each token once.
    bool measure();

    std::unique_ptr<TimingPage> m_page;
};

void TestTimingPage::init()
{
    m_page = std::make_unique<TimingPage>();
    m_page->resize(1100, 640);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    named<QSpinBox>("Plays of each token")->setValue(1);
}

int TestTimingPage::barSum() const
{
    const auto *view = named<QChartView>("Histogram of the clock zero error");
    const auto *bars = qobject_cast<QBarSeries *>(view->chart()->series().constFirst());
    int sum = 0;
    for (int i = 0; i < bars->barSets().constFirst()->count(); ++i)
        sum += static_cast<int>(bars->barSets().constFirst()->at(i));
    return sum;
}

bool TestTimingPage::measure()
{
    click("Start");
    return !isDone() && waitFor([this] { return isDone(); }, 30000);
}

// Catches a page that shows nothing until the end, controls that can be used at the wrong time, a
// result that is not that of the plays, a page that disturbs the measurement, and a second
// measurement that adds to the first.
void TestTimingPage::eachPlayIsShownAndTheResultAtTheEnd()
{
    auto *progress = named<QProgressBar>("Progress of the measurement");
    QVERIFY(!button("Stop")->isEnabled());
    QVERIFY(!button("Copy sentence")->isEnabled());
    QVERIFY(!button("Save report…")->isEnabled());
    for (int round = 0; round < 2; ++round) {
        click("Start");
        QCOMPARE(verdict(), QString("Measuring."));
        QVERIFY(button("Stop")->isEnabled());
        QVERIFY(!button("Start")->isEnabled());
        QVERIFY(!sources()->isEnabled());
        QVERIFY(!named<QSpinBox>("Plays of each token")->isEnabled());
        QVERIFY(!button("Save report…")->isEnabled());
        QCOMPARE(progress->maximum(), 3);
        QCOMPARE(progress->value(), 0);
        QCOMPARE(barSum(), 0);
        QVERIFY(waitFor([&] { return progress->value() == 1; }, 20000));
        QCOMPARE(barSum(), 1);
        QCOMPARE(cell(0, 1), QString("1"));
        QVERIFY(!isDone());
        QVERIFY(waitFor([this] { return isDone(); }, 20000));
        QCOMPARE(progress->value(), 3);
        QCOMPARE(barSum(), 3);
    }
    QCOMPARE(cell(0, 0), QString("50 ms"));
    QCOMPARE(cell(1, 0), QString("251.3 ms"));
    QCOMPARE(cell(2, 0), QString("1000 ms"));
    QCOMPARE(cell(3, 0), QString("all"));
    QCOMPARE(cell(3, 1), QString("3"));
    QCOMPARE(cell(3, 3), QString("100.00 %"));
    QVERIFY2(verdict().startsWith("Reaction times are") && verdict().contains("The limits are"),
             qPrintable(verdict()));
    QVERIFY2(sentence().contains("over 3 presentations"), qPrintable(sentence()));
    QVERIFY(!button("Stop")->isEnabled());
    // Its own drawing must not delay the clock: the smallest error is that of an undisturbed play.
    const double least = cell(3, 4).split(", ").last().section(' ', 0, 0).toDouble();
    QVERIFY2(qAbs(least - 1.5) < 3, qPrintable(cell(3, 4)));
    // The first bar begins at or before it.
    const QList<QAbstractAxis *> axes =
        named<QChartView>("Histogram of the clock zero error")->chart()->axes(Qt::Horizontal);
    auto *bins = qobject_cast<QBarCategoryAxis *>(axes.constFirst());
    QVERIFY2(bins->categories().constFirst().toDouble() <= least,
             qPrintable(bins->categories().join(' ')));

    click("Copy sentence");
    QCOMPARE(QGuiApplication::clipboard()->text(), sentence());
}

// Catches a document without its content, and one of the wrong kind.
void TestTimingPage::theReportIsSavedAsHtmlAndPdf()
{
    QVERIFY(measure());
    const QTemporaryDir folder;
    const QStringList names = {"report.html", "report.pdf", "other"};
    for (const QString &name : names) {
        ModalAnswer answer;
        answer.choose(folder.filePath(name));
        click("Save report…");
        QVERIFY2(answer.problem().isEmpty(), answer.problem().constData());
        QCOMPARE(answer.dialogs().first().typed, QString("timing.html"));
    }
    const QString html = QString::fromUtf8(contents(folder.filePath("report.html")));
    QVERIFY(html.startsWith("<!DOCTYPE HTML"));
    QVERIFY(html.contains("over 3 presentations"));
    QVERIFY(html.contains("251.3 ms"));
    // A name without a suffix gets that of the kind that is chosen.
    QVERIFY(contents(folder.filePath("other.html")).startsWith("<!DOCTYPE HTML"));
    const QByteArray pdf = contents(folder.filePath("report.pdf"));
    QVERIFY(pdf.startsWith("%PDF-"));
    QVERIFY(pdf.trimmed().endsWith("%%EOF"));
    QVERIFY(pdf.size() > 5000);
}

// Catches a report that is lost without a word.
void TestTimingPage::aReportThatCannotBeSavedIsSaid()
{
    QVERIFY(measure());
    ModalAnswer answer;
    answer.choose("/dev/null/report.html").press(QMessageBox::Ok);
    click("Save report…");
    QVERIFY2(answer.problem().isEmpty(), answer.problem().constData());
    QVERIFY(answer.boxes().first().text.contains("cannot be written"));
    QVERIFY(button("Save report…")->isEnabled());
}

// Catches a measurement that goes on, and plays that are lost when it is stopped.
void TestTimingPage::aStoppedMeasurementKeepsItsPlays()
{
    named<QSpinBox>("Plays of each token")->setValue(50);
    click("Start");
    auto *progress = named<QProgressBar>("Progress of the measurement");
    QVERIFY(waitFor([&] { return progress->value() == 2; }, 20000));
    click("Stop");
    QVERIFY(isDone());
    waitFor([] { return false; }, 2500);
    QCOMPARE(progress->value(), 2);
    QCOMPARE(barSum(), 2);
    QVERIFY2(verdict().startsWith("Stopped."), qPrintable(verdict()));
    QVERIFY(button("Save report…")->isEnabled());

    click("Start");
    click("Stop");
    QVERIFY2(verdict().contains("Nothing was measured"), qPrintable(verdict()));
    QVERIFY(!button("Save report…")->isEnabled());
}

// Catches an input that is not offered, and an output that is recorded in its place.
void TestTimingPage::anInputCanBeChosen()
{
    QCOMPARE(sources()->count(), 1);
    QCOMPARE(QProcess::execute("pactl", {"load-module", "module-null-sink", "sink_name=deaf",
                                         "media.class=Audio/Source/Virtual", "channel_map=mono"}),
             0);
    QVERIFY(waitFor(
        [this] {
            m_page->hide();
            m_page->show();
            return sources()->count() == 2;
        },
        10000));
    sources()->setCurrentIndex(1);
    m_page->hide();
    m_page->show();
    QCOMPARE(sources()->currentIndex(), 1); // is kept
    QVERIFY(measure());
    QVERIFY2(verdict().contains("Is the microphone at the loudspeaker"), qPrintable(verdict()));
    QCOMPARE(sentence(), QString());
    QVERIFY(!button("Copy sentence")->isEnabled());
    QVERIFY(button("Save report…")->isEnabled());
}

// Catches a hang or silence without a sound server.
void TestTimingPage::aMissingSoundServerIsSaid()
{
    const QByteArray server = qgetenv("PULSE_SERVER");
    qputenv("PULSE_SERVER", "unix:/nonexistent");
    click("Start");
    qputenv("PULSE_SERVER", server);
    QVERIFY2(verdict().contains("There is no sound server"), qPrintable(verdict()));
    QVERIFY(isDone());
    QVERIFY(!button("Stop")->isEnabled());
    QVERIFY(measure());
}

// Catches a control that a screen reader cannot name, or that needs the mouse.
void TestTimingPage::everyControlHasANameAndIsReachedByTheTabKey()
{
    QVERIFY(measure());
    QStringList reached;
    m_page->activateWindow();
    sources()->setFocus();
    for (int i = 0; i < 20; ++i) {
        QWidget *focus = QApplication::focusWidget();
        QVERIFY(focus != nullptr);
        const auto *focusButton = qobject_cast<QPushButton *>(focus);
        const QString name =
            focusButton != nullptr ? focusButton->text().remove('&') : focus->accessibleName();
        QVERIFY2(!name.isEmpty(), focus->metaObject()->className());
        if (reached.contains(name))
            break;
        reached.append(name);
        QTest::keyClick(focus, Qt::Key_Tab);
    }
    const QStringList all = {"What is recorded",
                             "Plays of each token",
                             "Start",
                             "Results by length of the token",
                             "Sentence for a paper",
                             "Copy sentence",
                             "Save report…"};
    for (const QString &name : all)
        QVERIFY2(reached.contains(name), qPrintable(name + " of " + reached.join(", ")));
}

// Catches a page that a laptop's screen cuts off.
void TestTimingPage::thePageFitsIntoASmallScreen()
{
    const QSize least = m_page->minimumSizeHint();
    QVERIFY2(least.width() <= 1100 && least.height() <= 620,
             qPrintable(QString("%1 x %2").arg(least.width()).arg(least.height())));
}

int main(int argc, char *argv[])
{
    if (const std::optional<int> status = recorderMain(argc, argv))
        return *status;
    return runGuiTest<TestTimingPage>(argc, argv);
}
#include "tst_timingpage.moc"
