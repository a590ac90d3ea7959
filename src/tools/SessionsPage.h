// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plots/LineChart.h"
#include "tools/Background.h"
#include "tools/Sessions.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;

/// Lists the sessions of this user and shows the answers of the chosen one. Writes its result files
/// again, and deletes its journal after a question.
class SessionsPage : public QWidget
{
    Q_OBJECT

public:
    explicit SessionsPage(QWidget *parent = nullptr);

    /// Reads the journals again, and chooses the latest session when that is done. Does nothing
    /// while they are being read.
    void refresh();

private:
    void build();
    void showSessions();
    void showChosen();
    void restoreChosen();
    void deleteChosen();
    const FoundSession *chosen() const; ///< null when there is none

    QString m_folder;
    FoundSessions m_found;
    QLabel *m_labelSummary = nullptr;
    QPushButton *m_pushButtonRefresh = nullptr;
    QPushButton *m_pushButtonRestore = nullptr;
    QPushButton *m_pushButtonDelete = nullptr;
    QPushButton *m_pushButtonStop = nullptr;
    QProgressBar *m_progressBar = nullptr;
    QTableWidget *m_tableSessions = nullptr;
    QLabel *m_labelQuality = nullptr;
    QTableWidget *m_tableAnswers = nullptr;
    LineChart m_chartTimes;
    Background m_search; ///< is destroyed first, because it writes m_found
};
