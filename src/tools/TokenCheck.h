// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/TokenCategory.h"
#include "data/TokenList.h"
#include "tools/Progress.h"
#include "tools/SoundMeasures.h"
#include "tools/TokenFindings.h"

#include <QList>
#include <QString>

#include <optional>

/// What has been found of one token.
struct CheckedToken
{
    int number = 0; ///< in the session's list, from 1 on
    QString name;   ///< of the file
    Category category = Category::Stranger;
    quint32 rate = 0; ///< Hz; this and the next two are 0 when the header was not accepted
    int bits = 0;     ///< per sample
    int channels = 0;
    double duration = 0;    ///< seconds at the file's own rate; 0 when it is not presented
    qint64 fileSize = 0;    ///< bytes
    SoundMeasures measures; ///< of the channel that is presented; without samples otherwise
    QList<Finding> findings;

    /// Whether a session presents this token, and not the one before it.
    bool isPresented() const { return measures.nSamples > 0; }
};

/// What has been found of a folder for one subject.
struct FolderCheck
{
    QString folder;
    QString subCode;
    int nTimes = 0;
    QList<CheckedToken> tokens;
    QList<LeftOut> leftOut;
    int nMother = 0;                   ///< tokens of the mother
    int nStranger = 0;                 ///< tokens of strangers
    std::optional<int> nPresentations; ///< no value when a session refuses so many
    double sessionLength = 0;          ///< seconds, without the time for the answers
    QList<Finding> findings;           ///< those of the folder as a whole
    bool isComplete = false;           ///< false when the check was stopped: nothing else is set

    /// Whether anything was found, of the folder or of a token.
    bool hasFindings() const;
};

/// Why @p folder cannot be checked, in a sentence; empty when it can be.
QString folderProblem(const QString &folder);

/// Checks the tokens in @p folder for the subject @p subCode, each to be presented @p nTimes times.
/// Takes no more memory than the largest token does, and two readers need for smaller ones.
/// @p progress is called by the thread that calls this function: at the beginning, after tokens,
/// and when all have been read.
FolderCheck checkFolder(const QString &folder, const QString &subCode, int nTimes,
                        const ProgressFunction &progress);

/// Adds to @p tokens what their levels tell, and returns what those tell of the folder.
QList<Finding> checkLevels(QList<CheckedToken> &tokens);
