// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/Background.h"
#include "tools/ExperimentWindow.h"
#include "tools/TokenCheck.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QSortFilterProxyModel;
class QSpinBox;
class QTableView;
class QTextBrowser;
class TokenModel;

/// Checks the tokens in a folder, shows what has been found, and draws and plays each of them.
class TokensPage : public QWidget
{
    Q_OBJECT

public:
    explicit TokensPage(QWidget *parent = nullptr);

protected:
    /// Gives the sound output back, which other pages may need.
    void hideEvent(QHideEvent *event) override;

private:
    void layOut();
    void chooseFolder();
    void startCheck();
    void finishCheck();
    void setChecking(bool checking);
    const CheckedToken *currentToken() const;
    void describeToken();
    void drawToken();
    void playOrStop();
    void showPlaying();
    void giveUpPlaying();
    void exportTable();
    void tell(const QString &message);

    QLineEdit *m_folder;
    QPushButton *m_choose;
    QLineEdit *m_subCode;
    QSpinBox *m_nTimes;
    QPushButton *m_check;
    QPushButton *m_export;
    QProgressBar *m_progress;
    QPushButton *m_stop;
    QLabel *m_message;
    QTableView *m_table;
    QTextBrowser *m_folderText;
    QTextBrowser *m_tokenText;
    QPushButton *m_play;
    TokenModel *m_model;
    QSortFilterProxyModel *m_sorted;

    QTimer m_drawing;              ///< runs after a choice, so that quick choices are not all drawn
    FolderCheck m_checked;         ///< what the background writes while it runs
    ExperimentWindow m_experiment; ///< destroyed before the children, in which its charts are
    Background m_background;       ///< destroyed first, since it uses all others
};
