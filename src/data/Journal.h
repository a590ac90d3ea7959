// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Data.h"
#include "data/ResultFiles.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <optional>

/// How a session ended.
enum class SessionEnd { Finished, BrokenOff, Quit };

/// "finished", "broken off" or "quit".
QString sessionEndWord(SessionEnd end);

/// An answer with what the journal keeps about it.
struct JournaledAnswer
{
    qint32 trial = 0;         ///< of the presentation, from 0 on
    qint32 token = 0;         ///< index into the records
    Entry entry;              ///< as it was scored
    QJsonObject presentation; ///< how accurately the presentation was timed
};

/// The folder that holds the journals of this user's sessions.
QString journalFolder();

/// Keeps a journal of each session in addition to the result files, so that no answer is lost
/// whatever happens to those or to the program. It is a file of JSON Lines: a head, written when
/// the session begins, and a line for each answer, for the end and for each save.
///
/// A call only passes its line on and never waits for the disk. One thread writes the lines, in
/// their order, so that they survive the end of the program. Another one synchronises the file,
/// which may take seconds on a slow disk, so that they survive a power cut. If a journal cannot be
/// written, that is logged once, and the missing lines are tried again with the next one.
class Journal
{
    class File;

public:
    /// A session's journal, to which a save can be added even after it has been closed.
    using Session = std::shared_ptr<File>;

    /// Makes the system write to the disk what it still holds in memory of the file with this
    /// descriptor; false when that fails.
    using Synchronise = std::function<bool(int descriptor)>;

    /// Journals are new files in @p folder, which is created when it does not exist.
    explicit Journal(const QString &folder);
    Journal(const QString &folder, const Synchronise &synchronise);

    /// Waits until everything has been written.
    ~Journal() = default;

    Q_DISABLE_COPY_MOVE(Journal)

    /// Begins the journal of a session with the parameters and records of @p data, whose tokens are
    /// presented in @p order on the audio output named @p output. Does nothing while a journal is
    /// open.
    void begin(const Data &data, const QList<qint32> &order, const QString &output);

    /// Each adds a line to the open journal, if there is one.
    void answer(const JournaledAnswer &answer);
    void finish(const Data &data); ///< with the parameters of @p data, as they were at the end

    /// The open journal; null if there is none.
    Session session() const { return m_session; }

    /// Adds a line to the journal @p session; does nothing if that is null.
    void save(const Session &session, const QList<SavedFile> &files);

    /// Closes the open journal, if there is one. Adds @p end to it if the session has not finished.
    void close(SessionEnd end);

private:
    void write(const Session &session, const std::function<QJsonObject()> &line);

    QString m_folder;
    Synchronise m_synchronise;
    Session m_session;       ///< the open journal; its file is used by the threads only
    bool m_finished = false; ///< the open journal says that its session has finished
    // Each has one thread. Destroying them waits for their work; the writer, which is destroyed
    // first, may still give work to the other one.
    QThreadPool m_synchroniser;
    QThreadPool m_writer;
};

/// A session as it stands in its journal.
struct JournaledSession
{
    QString version;     ///< of the program
    QString qtVersion;   ///< that it ran with
    QString output;      ///< name of the audio output
    QDateTime started;   ///< UTC
    QList<qint32> order; ///< token indexes in presentation order

    /// The parameters, records and entries as they were at the end. If the session did not finish,
    /// they are those of the answers given: the records contain means, and the last entry is the
    /// last one answered.
    Data data;

    QList<JournaledAnswer> answers;
    std::optional<SessionEnd> end; ///< no value when the program was stopped or the computer failed
    QList<QList<SavedFile>> saves; ///< the files of each save
};

/// The session in the text @p journal. A line that is incomplete or cannot be understood is left
/// out; if that is the head, there is no session.
std::optional<JournaledSession> readJournal(const QByteArray &journal);
