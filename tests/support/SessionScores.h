// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Entry.h"
#include "data/Record.h"

#include <QList>
#include <QString>

/// The answers given in a session, and what they must add up to. Nothing is tallied meanwhile: a
/// result is counted from the answers when it is asked for.
class SessionScores
{
public:
    /// @p isMother tells of each token whether it is the mother's.
    explicit SessionScores(const QList<bool> &isMother);

    /// Adds the answer "mother", or "stranger", to @p token.
    void add(int token, bool mother, double rt);

    /// What the entry of the last trial must say, except for the token's file.
    Entry entry() const;

    /// What the record of @p token must say when the session has ended, except for the token's
    /// file.
    Record record(int token) const;

private:
    struct Answer
    {
        int token = 0;
        bool mother = false;
        double rt = 0;
    };

    bool isCorrect(const Answer &answer) const;

    QList<bool> m_isMother;
    QList<Answer> m_answers;
};

/// All that @p entry says except for the token's file, to compare it.
QString scoreText(const Entry &entry);

/// The same of @p record.
QString scoreText(const Record &record);
