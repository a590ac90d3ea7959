// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/SessionsPage.h"

#include "app/ToolTip.h"
#include "data/DesktopFolder.h"
#include "tools/Columns.h"
#include "tools/Command.h"
#include "tools/SessionQuality.h"

#include <QChartView>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineSeries>
#include <QLocale>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTableWidget>
#include <QValueAxis>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int leastChartWidth = 200;
constexpr double leastTime = 100; // ms; below it the axis would repeat its labels
enum SessionColumn { Started, Subject, Type, Number, Answers, End, Files, nSessionColumns };
enum AnswerColumn { Trial, Token, Stimulus, Response, Time, Timing, nAnswerColumns };

/// A table that is read and sorted, but not edited.
QTableWidget *createTable(const QStringList &columns, const QString &name)
{
    auto *table = new QTableWidget(0, static_cast<int>(columns.size()));
    table->setHorizontalHeaderLabels(columns);
    table->setAccessibleName(name);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setTabKeyNavigation(false); // the key moves on to the next control
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setHighlightSections(false);
    table->setWordWrap(false);
    return table;
}

/// An item that is sorted by @p value, which may be a number.
QTableWidgetItem *createItem(const QVariant &value)
{
    auto *item = new QTableWidgetItem;
    if (value.typeId() == QMetaType::QString)
        item->setText(tableText(value.toString()));
    else
        item->setData(Qt::DisplayRole, value);
    item->setToolTip(plainToolTip(item->text()));
    return item;
}

void fillRow(QTableWidget *table, int row, const QVariantList &values)
{
    for (int column = 0; column < values.size(); ++column)
        table->setItem(row, column, createItem(values.at(column)));
}

QString countText(qsizetype count, const QString &one, const QString &many)
{
    return u"%1 %2"_s.arg(count).arg(count == 1 ? one : many);
}

} // namespace

SessionsPage::SessionsPage(QWidget *parent)
    : QWidget(parent)
    , m_folder(journalFolder())
{
    build();
    connect(m_pushButtonRefresh, &QPushButton::clicked, this, &SessionsPage::refresh);
    connect(m_pushButtonRestore, &QPushButton::clicked, this, &SessionsPage::restoreChosen);
    connect(m_pushButtonDelete, &QPushButton::clicked, this, &SessionsPage::deleteChosen);
    connect(m_pushButtonStop, &QPushButton::clicked, &m_search, &Background::stop);
    connect(m_tableSessions, &QTableWidget::itemSelectionChanged, this, &SessionsPage::showChosen);
    connect(&m_search, &Background::progressed, m_progressBar, &QProgressBar::setValue);
    connect(&m_search, &Background::finished, this, &SessionsPage::showSessions);
    refresh();
}

void SessionsPage::build()
{
    m_labelSummary = new QLabel;
    m_labelSummary->setWordWrap(true);
    m_pushButtonRefresh = new QPushButton(u"Re&fresh"_s);
    m_pushButtonRestore = new QPushButton(u"&Restore…"_s);
    m_pushButtonRestore->setToolTip(u"Write the three result files of this session again"_s);
    m_pushButtonDelete = new QPushButton(u"&Delete…"_s);
    m_pushButtonDelete->setToolTip(u"Delete the journal of this session"_s);
    m_pushButtonStop = new QPushButton(u"&Stop"_s);
    m_progressBar = new QProgressBar;
    m_progressBar->setAccessibleName(u"Progress of reading the journals"_s);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {m_pushButtonRefresh, m_pushButtonRestore, m_pushButtonDelete})
        buttons->addWidget(button);
    buttons->addWidget(m_progressBar, 1);
    buttons->addWidget(m_pushButtonStop);
    buttons->addStretch();

    m_tableSessions = createTable({u"Started"_s, u"Subject"_s, u"Type"_s, u"Session"_s,
                                   u"Answers"_s, u"End"_s, u"Result files"_s},
                                  u"Sessions"_s);
    elideMiddle(m_tableSessions, Subject);
    m_labelQuality = new QLabel;
    m_labelQuality->setWordWrap(true);
    m_tableAnswers = createTable(
        {u"Trial"_s, u"Token"_s, u"Category"_s, u"Answer"_s, u"Reaction time (ms)"_s, u"Timing"_s},
        u"Answers of the chosen session"_s);
    elideMiddle(m_tableAnswers, Token);
    m_chartTimes = createLineChart({u"Reaction Time (ms)"_s, u"Trial"_s, {}}, {}, leastChartWidth);
    m_chartTimes.series->setPointsVisible(true);
    for (QValueAxis *axis : {m_chartTimes.horizontalAxis, m_chartTimes.verticalAxis})
        axis->setLabelFormat(u"%.0f"_s);
    m_chartTimes.view->setAccessibleName(u"Reaction times by trial"_s);

    auto *details = new QSplitter;
    details->addWidget(m_tableAnswers);
    details->addWidget(m_chartTimes.view);
    details->setChildrenCollapsible(false);
    auto *lower = new QWidget;
    auto *lowerLayout = new QVBoxLayout(lower);
    lowerLayout->setContentsMargins(0, 0, 0, 0);
    lowerLayout->addWidget(m_labelQuality);
    lowerLayout->addWidget(details, 1);
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(m_tableSessions);
    splitter->addWidget(lower);
    splitter->setChildrenCollapsible(false);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addWidget(m_labelSummary);
    layout->addWidget(splitter, 1);
}

void SessionsPage::refresh()
{
    if (m_search.isRunning())
        return;
    m_found = {};
    m_tableSessions->setRowCount(0);
    showChosen();
    m_labelSummary->setText(u"The journals are being read."_s);
    m_pushButtonRefresh->setEnabled(false);
    m_progressBar->setValue(0);
    m_progressBar->show();
    m_pushButtonStop->show();
    m_search.start(
        [this](const ProgressFunction &progress) { m_found = findSessions(m_folder, progress); });
}

void SessionsPage::showSessions()
{
    m_pushButtonRefresh->setEnabled(true);
    m_progressBar->hide();
    m_pushButtonStop->hide();

    QStringList summary;
    if (m_found.sessions.isEmpty()) {
        summary.append(u"There are no sessions in %1."_s.arg(m_folder));
    } else {
        summary.append(countText(m_found.sessions.size(), u"session"_s, u"sessions"_s) +
                       u" in %1."_s.arg(m_folder));
        const auto nAttention = std::ranges::count_if(m_found.sessions, needsAttention);
        summary.append(nAttention == 0
                           ? u"All answers that were to be saved are in their files."_s
                           : countText(nAttention, u"session has"_s, u"sessions have"_s) +
                                 u" answers that are not, or no longer, in their files."_s);
    }
    if (!m_found.isComplete)
        summary.append(u"Not all journals have been read."_s);
    summary.append(m_found.problems);
    m_labelSummary->setText(summary.join(u' '));
    m_labelSummary->setToolTip(plainToolTip(m_labelSummary->text())); // a long path does not fit

    const QIcon warning = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    m_tableSessions->setSortingEnabled(false);
    m_tableSessions->setRowCount(static_cast<int>(m_found.sessions.size()));
    for (int row = 0; row < m_found.sessions.size(); ++row) {
        const FoundSession &found = m_found.sessions.at(row);
        const JournaledSession &session = found.session;
        fillRow(m_tableSessions, row,
                {session.started.toLocalTime(), session.data.subCode, typeText(session),
                 session.data.sesNum,
                 u"%1 of %2"_s.arg(session.answers.size()).arg(session.order.size()),
                 endText(session), filesText(found.files)});
        m_tableSessions->item(row, Started)->setData(Qt::UserRole, row);
        if (needsAttention(found))
            m_tableSessions->item(row, Files)->setIcon(warning);
    }
    m_tableSessions->setSortingEnabled(true);
    m_tableSessions->sortByColumn(Started, Qt::DescendingOrder);
    fitColumns(m_tableSessions);
    m_tableSessions->selectRow(0);
    showChosen();
}

const FoundSession *SessionsPage::chosen() const
{
    const QList<QTableWidgetItem *> items = m_tableSessions->selectedItems();
    if (items.isEmpty())
        return nullptr;
    const int index =
        m_tableSessions->item(items.first()->row(), Started)->data(Qt::UserRole).toInt();
    return &m_found.sessions.at(index);
}

void SessionsPage::showChosen()
{
    const FoundSession *found = chosen();
    m_pushButtonRestore->setEnabled(found != nullptr);
    m_pushButtonDelete->setEnabled(found != nullptr);
    const QList<JournaledAnswer> answers =
        found != nullptr ? found->session.answers : QList<JournaledAnswer>();
    m_labelQuality->setText(found != nullptr ? qualityText(sessionQuality(found->session))
                                             : QString());

    const QIcon warning = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    m_tableAnswers->setSortingEnabled(false);
    m_tableAnswers->setRowCount(static_cast<int>(answers.size()));
    QList<QPointF> times;
    double longest = 0;
    for (int row = 0; row < answers.size(); ++row) {
        const JournaledAnswer &answer = answers.at(row);
        const QString problem = timingProblem(answer);
        fillRow(m_tableAnswers, row,
                {answer.trial + 1, answer.entry.filename, answer.entry.stim, answer.entry.resp,
                 answer.entry.rt, problem.isEmpty() ? u"as planned"_s : problem});
        if (!problem.isEmpty())
            m_tableAnswers->item(row, Timing)->setIcon(warning);
        times.append({answer.trial + 1.0, answer.entry.rt});
        longest = std::max(longest, answer.entry.rt);
    }
    m_tableAnswers->setSortingEnabled(true);
    m_tableAnswers->sortByColumn(Trial, Qt::AscendingOrder);
    fitColumns(m_tableAnswers);
    const int nTrials = found != nullptr ? static_cast<int>(found->session.order.size()) : 0;
    // Ticks at whole trials, and as many as can be read.
    constexpr int mostTicks = 10;
    const int distance = nTrials / mostTicks + 1;
    const int nDistances = nTrials / distance + 1;
    m_chartTimes.horizontalAxis->setTickCount(nDistances + 1);
    showLine(m_chartTimes, times, {0, static_cast<double>(nDistances * distance)},
             {0, std::max(longest, leastTime)});
    m_chartTimes.verticalAxis->applyNiceNumbers();
}

void SessionsPage::restoreChosen()
{
    const FoundSession *found = chosen();
    if (found == nullptr)
        return;
    const QString name = found->name;
    const QString path = QFileDialog::getSaveFileName(
        this, u"Restore the records file"_s,
        QDir(desktopFolder()).filePath(found->session.data.outputFileName),
        u"Text files (*.txt)"_s);
    if (path.isEmpty())
        return;
    QStringList warnings;
    if (restoreSession(m_folder, name, path,
                       [&](const QString &warning) { warnings.append(warning); }))
        QMessageBox::information(
            this, u"Restored"_s,
            u"The three result files are now in %1."_s.arg(QFileInfo(path).absolutePath()));
    else
        QMessageBox::warning(this, u"Warning"_s, warnings.join(u'\n'));
    refresh();
}

void SessionsPage::deleteChosen()
{
    const FoundSession *found = chosen();
    if (found == nullptr)
        return;
    const QString name = found->name;
    const QString question =
        u"Delete the journal of the session of %1 with %2? Its answers cannot be restored then."_s
            .arg(QLocale().toString(found->session.started.toLocalTime(), QLocale::ShortFormat),
                 tableText(found->session.data.subCode)) +
        (needsAttention(*found)
             ? u"\nIts answers are not all in the result files as they were saved!"_s
             : QString());
    if (QMessageBox::question(this, u"Question"_s, question, QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No) != QMessageBox::Yes)
        return;
    const QString problem = deleteSession(m_folder, name);
    if (!problem.isEmpty())
        QMessageBox::warning(this, u"Warning"_s, problem);
    refresh();
}
