// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Journal.h"
#include "tools/Progress.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QTextStream;

/// What has become of a result file since a session saved it.
struct SavedFileNow
{
    enum class State {
        Unchanged,   ///< it still has the content that was saved
        Changed,     ///< it has another content
        Overwritten, ///< a later session was saved under the same name
        Gone,        ///< it is not there, or cannot be read
    };

    QString path;
    State state = State::Gone;
    QString overwrittenBy; ///< name of the last session that was saved there; otherwise empty
};

/// A session as its journal tells of it, and its result files as they are now.
struct FoundSession
{
    QString name; ///< of the journal, without its folder and suffix
    JournaledSession session;
    QList<SavedFileNow> files; ///< those of the last save that wrote a file; empty when none did
};

/// The sessions in a folder of journals.
struct FoundSessions
{
    QList<FoundSession> sessions; ///< the earliest first
    QStringList problems;         ///< sentences that name what could not be read
    bool isComplete = true;       ///< false when the folder cannot be read, or it was stopped
};

/// The sessions whose journals are in @p folder. One that does not exist has no sessions.
FoundSessions findSessions(const QString &folder, const ProgressFunction &progress);

/// Whether answers of @p found are in no result file although they should be: the session was to be
/// saved, and its three files are not all there as it saved them.
bool needsAttention(const FoundSession &found);

/// "practice" or "experiment".
QString typeText(const JournaledSession &session);

/// How the session ended: "finished", "broken off", "quit", or "stopped" when the program was
/// stopped or the computer failed.
QString endText(const JournaledSession &session);

/// "unchanged", "changed", "overwritten by NAME" or "gone".
QString stateText(const SavedFileNow &file);

/// What has become of all @p files: "unchanged", or how many are missing and the names of the
/// others with their states; "not saved" when there are none.
QString filesText(const QList<SavedFileNow> &files);

/// Writes a header line and a line for each session to @p out, separated by tabs.
void writeSessionTable(QTextStream &out, const QList<FoundSession> &sessions);

/// The same as an object, with the answers of each session.
QJsonObject sessionsToJson(const FoundSessions &found);

/// Writes the three result files of the session @p name, whose journal is in @p folder: the records
/// file to @p recordsPath and the others to the same folder. For a session that has finished they
/// are those that the program writes, otherwise those of the answers given. A failure is reported
/// to @p warn in a sentence.
/// @return whether all three were written
bool restoreSession(const QString &folder, const QString &name, const QString &recordsPath,
                    const std::function<void(const QString &)> &warn);

/// Deletes the journal of the session @p name in @p folder. Its result files stay.
/// @return an empty text, or a sentence that says why that failed
QString deleteSession(const QString &folder, const QString &name);
