// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTextStream>

#include <functional>

/// How a long function tells that @p done of @p all steps are done. It stops when the answer is
/// false.
using ProgressFunction = std::function<bool(qsizetype done, qsizetype all)>;

/// A bar of @p width characters, followed by the share in per cent: "[####    ]  50 %".
QString progressBar(qsizetype done, qsizetype all, int width);

/// Shows the progress of a command in the terminal once it has taken a second, and lets the user
/// stop it by Ctrl-C. Only one may exist at a time, because the signal belongs to the process. It
/// writes to the standard error stream, and only when that is a terminal.
class TerminalProgress
{
public:
    TerminalProgress();
    /// Removes the bar, and gives Ctrl-C its former meaning.
    ~TerminalProgress();
    Q_DISABLE_COPY_MOVE(TerminalProgress)

    /// A ProgressFunction.
    bool operator()(qsizetype done, qsizetype all);

    /// Whether the user has pressed Ctrl-C, or the process has been asked to end.
    static bool isStopped();

private:
    QTextStream m_errors;
    bool m_isTerminal;
    qint64 m_shownAt = 0; ///< ms; 0 while no bar has been shown
    QElapsedTimer m_time;
};
