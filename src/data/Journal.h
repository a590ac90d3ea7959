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
    QJsonObject presentation; ///< how well the presentation kept its time
};

/// The folder that holds the journals of this user's sessions.
QString journalFolder();

/// Keeps a journal of each session beside the result files, so that no answer is lost whatever
/// becomes of those or of the program: a file of JSON Lines, with a head when the session begins
/// and a line for each answer, for the end and for each save.
///
/// A thread of its own writes and synchronises the lines, in their order. A call only hands them
/// over, and waits for no disk. A journal that cannot be written is told once in the log; what is
/// missing is tried again with the next line.
class Journal
{
public:
    /// Has the system write to the disk what it holds of the file with this descriptor.
    using Synchronise = std::function<bool(int descriptor)>;

    /// Journals are new files in @p folder, which is made when it does not exist.
    explicit Journal(const QString &folder);
    Journal(const QString &folder, const Synchronise &synchronise);

    /// Waits until everything has been written.
    ~Journal() = default;

    Q_DISABLE_COPY_MOVE(Journal)

    /// Begins the journal of a session with the parameters and records of @p data, whose tokens are
    /// presented in @p order on the audio output named @p output. Nothing while a journal is open.
    void begin(const Data &data, const QList<qint32> &order, const QString &output);

    /// Each adds a line to the open journal, if there is one.
    void answer(const JournaledAnswer &answer);
    void finish(const Data &data); ///< with the parameters of @p data, as they were at the end
    void save(const QList<SavedFile> &files);

    /// Closes the open journal, if there is one. @p end is told where the session has not finished.
    void close(SessionEnd end);

private:
    class File;

    void write(const std::function<QJsonObject()> &line);

    QString m_folder;
    Synchronise m_synchronise;
    std::shared_ptr<File> m_file; ///< the open journal, used by the thread only
    bool m_finished = false;      ///< the open journal tells that its session has finished
    QThreadPool m_thread;         ///< of one thread; destroyed first, which waits for it
};

/// A session as its journal tells it.
struct JournaledSession
{
    QString version;     ///< of the program
    QString qtVersion;   ///< that it ran with
    QString output;      ///< name of the audio output
    QDateTime started;   ///< UTC
    QList<qint32> order; ///< token indexes in presentation order

    /// The parameters, records and entries as they were at the end or, when the session did not
    /// finish, as they are when the answers given are all: the records with means, and no entries
    /// behind the last one answered.
    Data data;

    QList<JournaledAnswer> answers;
    std::optional<SessionEnd> end; ///< nothing when the program was stopped or the computer failed
    QList<QList<SavedFile>> saves; ///< the files of each save
};

/// The session that the text @p journal tells of. What is torn or cannot be understood is left out;
/// nothing when the head is.
std::optional<JournaledSession> readJournal(const QByteArray &journal);
