// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/ModalAnswer.h"
#include "support/OperatorWindow.h"

#include <QTemporaryDir>

#include <memory>

class QPushButton;

/// A test that carries out sessions by the buttons of both windows. Each of its functions gets a
/// new operator's window and an empty folder, and finds no journals.
class SessionTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    static constexpr int longestWait = 8000; ///< ms that the sound server may take

    QString path(const QString &name) const { return m_folder->filePath(name); }

    QPushButton *subject(const char *name) const;
    void click(QPushButton *button) const;

    /// Presses "Practice" or "Experiment" and chooses @p folder; false when nothing can be started.
    bool prepare(QPushButton *button, const QString &folder) const;

    /// Waits until the token has ended and an answer can be given.
    bool awaitAnswering() const;

    /// Asks the subject window to close and answers its question by @p button; false when anything
    /// else happened.
    bool closeSubjectWindow(QMessageBox::StandardButton button) const;

    std::unique_ptr<QTemporaryDir> m_folder; ///< holds the folder "tokens"
    std::unique_ptr<OperatorWindow> m_window;
};
