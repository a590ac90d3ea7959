// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TokensPage.h"

#include "app/OneLineValidator.h"
#include "app/PresentationOrder.h"
#include "app/ToolTip.h"
#include "subject/SubjectWindow.h"
#include "tools/Columns.h"
#include "tools/TokenModel.h"

#include <QChartView>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSaveFile>
#include <QSortFilterProxyModel>
#include <QSpinBox>
#include <QSplitter>
#include <QTableView>
#include <QTextBrowser>
#include <QTextStream>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds drawingDelay{150};

/// An output that has just been opened needs this time before it plays as in a session.
constexpr std::chrono::milliseconds openingTime{500};

/// Sentences as paragraphs of a text browser.
QString paragraphs(const QStringList &sentences)
{
    QString html;
    for (const QString &sentence : sentences)
        html += u"<p>%1</p>"_s.arg(sentence.toHtmlEscaped());
    return html;
}

QString findingHtml(const Finding &finding)
{
    return u"<p><b>%1</b> %2 <i>%3</i></p>"_s.arg(
        finding.fact.toHtmlEscaped(), finding.effect.toHtmlEscaped(), finding.cure.toHtmlEscaped());
}

template<typename Widget>
Widget *named(Widget *widget, const char *objectName, const QString &accessibleName)
{
    widget->setObjectName(objectName);
    widget->setAccessibleName(accessibleName);
    return widget;
}

QTextBrowser *newTextBrowser(const char *objectName, const QString &accessibleName,
                             const QString &placeholder)
{
    auto *browser = named(new QTextBrowser, objectName, accessibleName);
    browser->setOpenLinks(false);
    browser->setPlaceholderText(placeholder);
    return browser;
}

} // namespace

TokensPage::TokensPage(QWidget *parent)
    : QWidget(parent)
    , m_folder(named(new QLineEdit, "lineEditFolder", u"Folder of the tokens"_s))
    , m_choose(named(new QPushButton(u"C&hoose…"_s), "pushButtonChoose", u"Choose the folder"_s))
    , m_subCode(named(new QLineEdit, "lineEditSubCode", u"Subject code"_s))
    , m_nTimes(named(new QSpinBox, "spinBoxNTimes", u"N times per token"_s))
    , m_check(named(new QPushButton(u"&Check"_s), "pushButtonCheck", u"Check the tokens"_s))
    , m_export(named(new QPushButton(u"&Export…"_s), "pushButtonExport", u"Export the table"_s))
    , m_progress(named(new QProgressBar, "progressBar", u"Progress of the check"_s))
    , m_stop(named(new QPushButton(u"&Stop"_s), "pushButtonStop", u"Stop the check"_s))
    , m_message(named(new QLabel, "labelMessage", u"Message"_s))
    , m_table(named(new QTableView, "tableView", u"Tokens"_s))
    , m_folderText(newTextBrowser("textFolder", u"Findings of the folder"_s,
                                  u"What is found of the folder is told here."_s))
    , m_tokenText(newTextBrowser("textToken", u"Findings of the chosen token"_s,
                                 u"What is found of the chosen token is told here."_s))
    , m_play(named(new QPushButton(u"&Play"_s), "pushButtonPlay", u"Play the chosen token"_s))
    , m_model(new TokenModel(this))
    , m_sorted(new QSortFilterProxyModel(this))
{
    const Data defaults;
    m_subCode->setText(defaults.subCode);
    m_subCode->setValidator(new OneLineValidator(m_subCode));
    m_nTimes->setRange(1, maxPresentations);
    m_nTimes->setValue(defaults.nTimes);

    m_sorted->setSourceModel(m_model);
    m_sorted->setSortRole(TokenModel::sortRole);
    m_sorted->setSortCaseSensitivity(Qt::CaseInsensitive);
    m_table->setModel(m_sorted);
    m_table->setSortingEnabled(true);
    m_table->sortByColumn(TokenModel::place(TokenColumn::Number), Qt::AscendingOrder);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false); // the key leads to the next control
    m_table->setWordWrap(false);
    elideMiddle(m_table, TokenModel::place(TokenColumn::Name));
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() * 3 / 2);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setHighlightSections(false);

    m_message->setWordWrap(true);
    m_drawing.setSingleShot(true);
    m_drawing.setInterval(drawingDelay);

    connect(m_choose, &QPushButton::clicked, this, &TokensPage::chooseFolder);
    connect(m_check, &QPushButton::clicked, this, &TokensPage::startCheck);
    connect(m_folder, &QLineEdit::returnPressed, this, &TokensPage::startCheck);
    connect(m_subCode, &QLineEdit::returnPressed, this, &TokensPage::startCheck);
    connect(m_stop, &QPushButton::clicked, &m_background, &Background::stop);
    connect(&m_background, &Background::progressed, m_progress, &QProgressBar::setValue);
    connect(&m_background, &Background::finished, this, &TokensPage::finishCheck);
    connect(m_export, &QPushButton::clicked, this, &TokensPage::exportTable);
    connect(m_play, &QPushButton::clicked, this, &TokensPage::playOrStop);
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        describeToken();
        m_drawing.start();
    });
    connect(&m_drawing, &QTimer::timeout, this, &TokensPage::drawToken);
    // Queued, because the output is released, and the follower is at work, until after the signal.
    connect(&m_experiment, &MainWindow::soundPlaying, this, &TokensPage::showPlaying,
            Qt::QueuedConnection);
    connect(&m_experiment, &ExperimentWindow::soundFailed, this, &TokensPage::giveUpPlaying,
            Qt::QueuedConnection);

    layOut();
    setChecking(false);
}

void TokensPage::layOut()
{
    const auto label = [](const QString &text, QWidget *buddy) {
        auto *created = new QLabel(text);
        created->setBuddy(buddy);
        return created;
    };
    auto *folder = new QHBoxLayout;
    folder->addWidget(label(u"&Folder"_s, m_folder));
    folder->addWidget(m_folder, 1);
    folder->addWidget(m_choose);

    auto *controls = new QHBoxLayout;
    controls->addWidget(label(u"S&ubject code"_s, m_subCode));
    controls->addWidget(m_subCode);
    controls->addWidget(label(u"&N times per token"_s, m_nTimes));
    controls->addWidget(m_nTimes);
    controls->addWidget(m_check);
    controls->addStretch();
    controls->addWidget(m_export);
    controls->addWidget(m_play);

    auto *state = new QHBoxLayout;
    state->addWidget(m_message, 1);
    state->addWidget(m_progress);
    state->addWidget(m_stop);

    auto *texts = new QSplitter(Qt::Vertical);
    texts->addWidget(m_folderText);
    texts->addWidget(m_tokenText);
    auto *charts = new QSplitter;
    charts->addWidget(named(m_experiment.waveformView(), "waveform", u"Waveform"_s));
    charts->addWidget(named(m_experiment.spectrumView(), "spectrum", u"Spectrum"_s));
    auto *bottom = new QSplitter;
    bottom->addWidget(texts);
    bottom->addWidget(charts);
    bottom->setStretchFactor(0, 2);
    bottom->setStretchFactor(1, 3);
    auto *whole = new QSplitter(Qt::Vertical);
    whole->addWidget(m_table);
    whole->addWidget(bottom);
    whole->setStretchFactor(0, 4);
    whole->setStretchFactor(1, 3);
    for (QSplitter *splitter : {texts, charts, bottom, whole})
        splitter->setChildrenCollapsible(false);

    auto *page = new QVBoxLayout(this);
    page->addLayout(folder);
    page->addLayout(controls);
    page->addLayout(state);
    page->addWidget(whole, 1);
}

void TokensPage::hideEvent(QHideEvent *event)
{
    m_experiment.closeOutput();
    showPlaying();
    QWidget::hideEvent(event);
}

void TokensPage::tell(const QString &message)
{
    m_message->setText(message);
    m_message->setToolTip(plainToolTip(message)); // a long path does not fit
}

void TokensPage::chooseFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(
        this, u"Choose the folder of the tokens"_s, m_folder->text(), QFileDialog::ReadOnly);
    if (folder.isEmpty())
        return;
    m_folder->setText(folder);
    startCheck();
}

void TokensPage::startCheck()
{
    if (m_background.isRunning())
        return;
    const QString folder = m_folder->text();
    const QString problem = folder.isEmpty() ? u"Choose a folder first."_s : folderProblem(folder);
    tell(problem);
    if (!problem.isEmpty())
        return;
    setChecking(true);
    const QString subCode = m_subCode->text();
    const int nTimes = m_nTimes->value();
    m_background.start([=, this](const ProgressFunction &progress) {
        m_checked = checkFolder(folder, subCode, nTimes, progress);
    });
}

void TokensPage::setChecking(bool checking)
{
    for (QWidget *widget :
         std::initializer_list<QWidget *>{m_folder, m_choose, m_subCode, m_nTimes, m_check})
        widget->setEnabled(!checking);
    m_progress->setValue(0);
    m_progress->setVisible(checking);
    m_stop->setVisible(checking);
    m_export->setEnabled(!checking && m_model->check().isComplete);
    showPlaying();
}

void TokensPage::finishCheck()
{
    const FolderCheck check = std::exchange(m_checked, {});
    if (check.isComplete) {
        m_experiment.clearSound();
        m_model->setCheck(check);
        fitColumns(m_table);
        QString html = paragraphs(folderSummary(check));
        for (const Finding &finding : check.findings)
            html += findingHtml(finding);
        m_folderText->setHtml(html);
        const auto nFound = std::ranges::count_if(
            check.tokens, [](const CheckedToken &token) { return !token.findings.isEmpty(); });
        tell(check.hasFindings() ? u"Findings: %1 of %2 tokens, and %3 of the folder."_s.arg(nFound)
                                       .arg(check.tokens.size())
                                       .arg(check.findings.size())
                                 : u"Nothing was found."_s);
        m_table->setCurrentIndex(m_sorted->index(0, 0));
        describeToken();
    } else {
        tell(u"The check has been stopped."_s);
    }
    setChecking(false);
    if (check.isComplete)
        m_table->setFocus();
}

const CheckedToken *TokensPage::currentToken() const
{
    const QModelIndex index = m_sorted->mapToSource(m_table->currentIndex());
    return index.isValid() ? &m_model->check().tokens.at(index.row()) : nullptr;
}

void TokensPage::describeToken()
{
    QString html;
    if (const CheckedToken *token = currentToken()) {
        html = u"<p><b>%1</b></p>"_s.arg(tokenField(*token, TokenColumn::Name).toHtmlEscaped());
        for (const Finding &finding : token->findings)
            html += findingHtml(finding);
        if (token->findings.isEmpty())
            html += paragraphs({u"Nothing was found."_s});
    }
    m_tokenText->setHtml(html);
    showPlaying();
}

void TokensPage::drawToken()
{
    const CheckedToken *token = currentToken();
    if (token == nullptr || !token->isPresented()) {
        m_experiment.clearSound();
    } else {
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        if (!m_experiment.loadToken(m_model->check().folder, token->name))
            tell(u"%1 cannot be read any more."_s.arg(tokenField(*token, TokenColumn::Name)));
        QGuiApplication::restoreOverrideCursor();
    }
    showPlaying();
}

void TokensPage::playOrStop()
{
    if (m_experiment.isPresenting()) {
        m_experiment.stopSound();
    } else {
        if (m_drawing.isActive()) {
            m_drawing.stop();
            drawToken();
        }
        const bool isOpen = m_experiment.isOutputOpen();
        m_experiment.openOutput();
        m_experiment.present(isOpen ? 0ms : openingTime);
    }
    showPlaying();
}

void TokensPage::giveUpPlaying()
{
    tell(u"The sound output takes no sound. Check that the computer has one, and that its sound "
         "server runs."_s);
    m_experiment.closeOutput();
    showPlaying();
}

void TokensPage::showPlaying()
{
    const CheckedToken *token = currentToken();
    const bool isPlaying = m_experiment.isPresenting();
    m_play->setText(isPlaying ? u"Sto&p playing"_s : u"&Play"_s);
    m_play->setAccessibleName(isPlaying ? u"Stop playing"_s : u"Play the chosen token"_s);
    m_play->setEnabled(isPlaying || (token != nullptr && token->isPresented()));
}

void TokensPage::exportTable()
{
    const QString path = QFileDialog::getSaveFileName(this, u"Export the table"_s, u"tokens.txt"_s,
                                                      u"Text (*.txt)"_s);
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    bool isWritten = file.open(QIODevice::WriteOnly);
    if (isWritten) {
        QTextStream out(&file);
        writeTokenTable(out, m_model->check());
        out.flush();
        isWritten = out.status() == QTextStream::Ok && file.commit();
    }
    tell(isWritten ? u"The table has been written to %1."_s.arg(path)
                   : u"%1 cannot be written: %2."_s.arg(path, file.errorString()));
}
