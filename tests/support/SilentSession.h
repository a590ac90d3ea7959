// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/OperatorWindow.h"

#include <QTemporaryDir>

/// A session of many tokens, carried out by the responses alone: nothing is heard, and no trial
/// takes longer than the program does. A window is prepared and then answered for.
class SilentSession
{
public:
    SilentSession(int nTokens, int nTimes);

    int nTrials() const { return m_nTokens * m_nTimes; }

    /// The name of the file of @p token, as they are sorted, and whether it is of the mother of
    /// the subject CHD001.
    static QString tokenName(int token);
    static bool isMother(int token) { return token % 2 == 0; }

    /// Writes the tokens, short ones, and prepares a session with them in @p window; false when
    /// that fails. The reaction clock is started once and for all.
    bool prepare(OperatorWindow &window) const;

    /// Takes the answer to the token that is presented, and presents the next one.
    static void answer(OperatorWindow &window, bool mother);

    QString path(const QString &name) const { return m_folder.filePath(name); }

private:
    int m_nTokens;
    int m_nTimes;
    QTemporaryDir m_folder;
};
