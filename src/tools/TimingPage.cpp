// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TimingPage.h"

#include "data/DesktopFolder.h"
#include "plots/PaletteChartView.h"
#include "timing/SoundServerInfo.h"
#include "tools/TimingDocument.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLegend>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSaveFile>
#include <QSpinBox>
#include <QStyle>
#include <QTableWidget>
#include <QValueAxis>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize leastChart(300, 160);
constexpr int sentenceLines = 4;

const auto introduction =
    u"Plays noise on the default output as a session does, finds it in a recording, and tells when "
    "the reaction clock starts. Record the output itself, or put a microphone at the loudspeaker "
    "and "
    "record that: sound card and loudspeaker are in the figures then. Run nothing else meanwhile."_s;

} // namespace

TimingPage::TimingPage(QWidget *parent)
    : QWidget(parent)
{
    build();
    connect(m_pushButtonStart, &QPushButton::clicked, this, &TimingPage::start);
    connect(m_pushButtonStop, &QPushButton::clicked, this, &TimingPage::stop);
    connect(m_pushButtonCopy, &QPushButton::clicked, this, &TimingPage::copySentence);
    connect(m_pushButtonSave, &QPushButton::clicked, this, &TimingPage::saveReport);
    connect(&m_measurement, &TimingMeasurement::played, this, &TimingPage::showReport);
    connect(&m_measurement, &TimingMeasurement::finished, this, &TimingPage::showResult);
    connect(&m_measurement, &TimingMeasurement::failed, this, [this](const QString &reason) {
        showResult();
        m_labelVerdict->setText(reason);
    });
    showReport();
    showRunning();
}

void TimingPage::build()
{
    m_comboBoxSource = new QComboBox;
    m_comboBoxSource->setAccessibleName(u"What is recorded"_s);
    m_comboBoxSource->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_spinBoxPlays = new QSpinBox;
    m_spinBoxPlays->setAccessibleName(u"Plays of each token"_s);
    m_spinBoxPlays->setRange(1, TimingMeasurement::mostPlays);
    m_spinBoxPlays->setValue(TimingMeasurement::defaultPlays);
    m_pushButtonStart = new QPushButton(u"St&art"_s);
    m_pushButtonStop = new QPushButton(u"St&op"_s);
    m_progressBar = new QProgressBar;
    m_progressBar->setAccessibleName(u"Progress of the measurement"_s);
    m_progressBar->setFormat(u"%v of %m plays"_s);
    m_progressBar->setMinimumWidth(
        m_progressBar->fontMetrics().horizontalAdvance(u" 0000 of 0000 plays "_s));
    auto *labelSource = new QLabel(u"&Record:"_s);
    labelSource->setBuddy(m_comboBoxSource);
    auto *labelPlays = new QLabel(u"&Plays of each token:"_s);
    labelPlays->setBuddy(m_spinBoxPlays);
    auto *controls = new QHBoxLayout;
    for (QWidget *widget :
         std::initializer_list<QWidget *>{labelSource, m_comboBoxSource, labelPlays, m_spinBoxPlays,
                                          m_pushButtonStart, m_pushButtonStop})
        controls->addWidget(widget);
    controls->addStretch();

    auto *labelIntroduction = new QLabel(introduction);
    labelIntroduction->setWordWrap(true);
    m_labelIcon = new QLabel;
    m_labelVerdict = new QLabel;
    m_labelVerdict->setAccessibleName(u"Verdict"_s);
    m_labelVerdict->setWordWrap(true);
    m_labelVerdict->setTextInteractionFlags(Qt::TextBrowserInteraction);
    auto *verdictRow = new QHBoxLayout;
    verdictRow->addWidget(m_labelIcon);
    verdictRow->addWidget(m_labelVerdict, 1);
    verdictRow->addWidget(m_progressBar);

    m_table = new QTableWidget;
    m_table->setAccessibleName(u"Results by length of the token"_s);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setTabKeyNavigation(false); // the key moves on to the next control
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setHighlightSections(false);

    m_textSentence = new QPlainTextEdit;
    m_textSentence->setAccessibleName(u"Sentence for a paper"_s);
    m_textSentence->setReadOnly(true);
    m_textSentence->setTabChangesFocus(true);
    m_textSentence->setFixedHeight(sentenceLines * m_textSentence->fontMetrics().lineSpacing());
    m_pushButtonCopy = new QPushButton(u"&Copy sentence"_s);
    m_pushButtonSave = new QPushButton(u"&Save report…"_s);
    auto *buttons = new QVBoxLayout;
    buttons->addWidget(m_pushButtonCopy);
    buttons->addWidget(m_pushButtonSave);
    buttons->addStretch();
    auto *sentenceRow = new QHBoxLayout;
    sentenceRow->addWidget(m_textSentence, 1);
    sentenceRow->addLayout(buttons);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(labelIntroduction);
    layout->addLayout(controls);
    layout->addLayout(verdictRow);
    layout->addWidget(m_table, 2);
    layout->addWidget(createHistogram(), 3);
    layout->addLayout(sentenceRow);
}

QChartView *TimingPage::createHistogram()
{
    m_bars = new QBarSeries;
    m_bars->setBarWidth(1);
    m_binAxis = new QBarCategoryAxis;
    m_binAxis->setTitleText(u"Clock zero error (ms), from"_s);
    m_countAxis = new QValueAxis;
    m_countAxis->setTitleText(u"Plays"_s);
    m_countAxis->setLabelFormat(u"%d"_s);
    for (QAbstractAxis *axis : std::initializer_list<QAbstractAxis *>{m_binAxis, m_countAxis})
        axis->setTitleFont(font()); // by default it is bold
    auto *chart = new QChart;
    chart->addSeries(m_bars);
    chart->addAxis(m_binAxis, Qt::AlignBottom);
    chart->addAxis(m_countAxis, Qt::AlignLeft);
    m_bars->attachAxis(m_binAxis);
    m_bars->attachAxis(m_countAxis);
    chart->setTitle(u"Start of the Reaction Clock after the End of the Token"_s);
    chart->legend()->hide();
    chart->setMargins(QMargins());
    auto *view = new PaletteChartView(chart);
    view->setMinimumSize(leastChart);
    view->setAccessibleName(u"Histogram of the clock zero error"_s);
    return view;
}

void TimingPage::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_measurement.isRunning())
        listInputs();
}

void TimingPage::listInputs()
{
    const QString chosen = m_comboBoxSource->currentData().toString();
    m_comboBoxSource->clear();
    m_comboBoxSource->addItem(u"the default output itself"_s, QString());
    const QList<SoundSource> sources = askSoundServer().value_or(SoundServerInfo{}).sources;
    for (const SoundSource &source : sources) {
        if (!source.isMonitor)
            m_comboBoxSource->addItem(source.description, source.name);
    }
    m_comboBoxSource->setCurrentIndex(std::max(m_comboBoxSource->findData(chosen), 0));
}

void TimingPage::start()
{
    m_labelIcon->clear();
    m_labelVerdict->setText(u"Measuring."_s);
    m_progressBar->setValue(0);
    m_measurement.start({m_spinBoxPlays->value(), m_comboBoxSource->currentData().toString()});
    if (!m_measurement.isRunning())
        return; // it has failed, which is said already
    showReport();
    showRunning();
}

void TimingPage::stop()
{
    m_measurement.stop();
    showResult();
    m_labelVerdict->setText(u"Stopped. "_s + m_labelVerdict->text());
}

/// Shows the plays until now.
void TimingPage::showReport()
{
    const TimingReport &report = m_measurement.report();
    m_progressBar->setMaximum(m_measurement.nPlays());
    m_progressBar->setValue(report.all.nPlays);

    QList<QStringList> rows = table(report);
    const QStringList headings = rows.takeFirst();
    m_table->setColumnCount(static_cast<int>(headings.size()));
    m_table->setHorizontalHeaderLabels(headings);
    m_table->setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < headings.size(); ++column)
            m_table->setItem(row, column, new QTableWidgetItem(rows.at(row).at(column)));
    }
    m_table->resizeColumnsToContents();

    QStringList labels;
    auto *counts = new QBarSet(u"Plays"_s);
    int most = 1;
    for (const HistogramBin &bin : histogram(report.all.zeroError.values())) {
        labels.append(QString::asprintf("%+.1f", bin.from));
        counts->append(bin.count);
        most = std::max(most, bin.count);
    }
    m_bars->clear();
    m_bars->append(counts);
    m_binAxis->setCategories(labels);
    // Ticks at whole plays, and as many as can be read.
    constexpr int mostTicks = 5;
    const int distance = (most + mostTicks - 1) / mostTicks;
    const int nDistances = (most + distance - 1) / distance;
    m_countAxis->setRange(0, nDistances * distance);
    m_countAxis->setTickCount(nDistances + 1);

    m_textSentence->setPlainText(paperText(report));
}

/// Shows the result of what was measured until now.
void TimingPage::showResult()
{
    showReport();
    showRunning();
    const TimingReport &report = m_measurement.report();
    if (report.all.nPlays == 0) {
        m_labelIcon->clear();
        m_labelVerdict->setText(u"Nothing was measured."_s);
        return;
    }
    const Verdict result = verdict(report);
    const QStyle::StandardPixmap icon =
        result.isGood ? QStyle::SP_DialogApplyButton : QStyle::SP_MessageBoxWarning;
    const int size = style()->pixelMetric(QStyle::PM_LargeIconSize);
    m_labelIcon->setPixmap(style()->standardIcon(icon).pixmap(size));
    m_labelVerdict->setText(result.text + u' ' + limitsText(report));
}

void TimingPage::showRunning()
{
    const bool isRunning = m_measurement.isRunning();
    const bool isResult = !isRunning && m_measurement.report().all.nPlays > 0;
    m_comboBoxSource->setEnabled(!isRunning);
    m_spinBoxPlays->setEnabled(!isRunning);
    m_pushButtonStart->setEnabled(!isRunning);
    m_pushButtonStop->setEnabled(isRunning);
    m_pushButtonCopy->setEnabled(isResult && !m_textSentence->toPlainText().isEmpty());
    m_pushButtonSave->setEnabled(isResult);
}

void TimingPage::copySentence()
{
    QGuiApplication::clipboard()->setText(m_textSentence->toPlainText());
}

void TimingPage::saveReport()
{
    const QString html = u"HTML (*.html)"_s;
    const QString pdf = u"PDF (*.pdf)"_s;
    QString filter = html;
    QString path = QFileDialog::getSaveFileName(this, u"Save the report"_s,
                                                QDir(desktopFolder()).filePath(u"timing.html"_s),
                                                html + u";;"_s + pdf, &filter);
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += filter == pdf ? u".pdf"_s : u".html"_s;
    QSaveFile file(path);
    const QByteArray bytes = timingDocument(m_measurement.report(), path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        QMessageBox::warning(this, u"Warning"_s,
                             u"%1 cannot be written: %2"_s.arg(path, file.errorString()));
}
