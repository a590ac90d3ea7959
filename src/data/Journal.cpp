// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Journal.h"

#include "data/Parameters.h"
#include "data/Scoring.h"
#include "data/TokenCategory.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>

#include <algorithm>
#include <atomic>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int formatVersion = 1;

bool synchroniseFile(int descriptor)
{
    return fsync(descriptor) == 0;
}

/// Without this a new file may be missing from its folder after a power cut.
void synchroniseFolder(const QString &folder, const Journal::Synchronise &synchronise)
{
    const int descriptor =
        open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    synchronise(descriptor);
    close(descriptor);
}

QJsonObject headLine(const Data &data, const QList<qint32> &order, const QString &output,
                     const QDateTime &started)
{
    QJsonArray tokens;
    for (const Record &record : data.records)
        tokens.append(record.filename);
    QJsonArray presentations;
    for (const qint32 token : order)
        presentations.append(token);
    return {{"type"_L1, "session"_L1},
            {"format"_L1, formatVersion},
            {"program"_L1, "Ostrine"_L1},
            {"version"_L1, QLatin1String(OSTRINE_VERSION)},
            {"qt"_L1, QLatin1String(qVersion())},
            {"output"_L1, output},
            {"started"_L1, started.toString(Qt::ISODateWithMs)},
            {"parameters"_L1, parametersToJson(data)},
            {"tokens"_L1, tokens},
            {"order"_L1, presentations}};
}

QJsonObject answerLine(const JournaledAnswer &answer)
{
    return {{"type"_L1, "answer"_L1},
            {"trial"_L1, answer.trial + 1},
            {"token"_L1, answer.token},
            {"filename"_L1, answer.entry.filename},
            {"stim"_L1, answer.entry.stim},
            {"resp"_L1, answer.entry.resp},
            {"correctness"_L1, answer.entry.correctness},
            {"rt"_L1, answer.entry.rt},
            {"presentation"_L1, answer.presentation}};
}

QJsonObject endLine(SessionEnd end)
{
    return {{"type"_L1, "end"_L1}, {"end"_L1, sessionEndWord(end)}};
}

QJsonObject saveLine(const QList<SavedFile> &files)
{
    QJsonArray list;
    for (const SavedFile &file : files)
        list.append(QJsonObject{{"path"_L1, file.path}, {"sha256"_L1, QLatin1String(file.sha256)}});
    return {{"type"_L1, "save"_L1}, {"files"_L1, list}};
}

std::optional<JournaledSession> readHead(const QJsonObject &line)
{
    JournaledSession session;
    session.version = line.value("version"_L1).toString();
    session.qtVersion = line.value("qt"_L1).toString();
    session.output = line.value("output"_L1).toString();
    session.started = QDateTime::fromString(line.value("started"_L1).toString(), Qt::ISODateWithMs);
    parametersFromJson(line.value("parameters"_L1).toObject(), session.data);
    const QJsonArray tokens = line.value("tokens"_L1).toArray();
    for (const auto &token : tokens) {
        Record record;
        record.filePath = session.data.wavFilePath;
        record.filename = token.toString();
        session.data.records.append(record);
    }
    const QJsonArray order = line.value("order"_L1).toArray();
    for (const auto &value : order) {
        const qint32 token = value.toInt(-1);
        if (token < 0 || token >= session.data.records.size())
            return std::nullopt;
        session.order.append(token);
        Entry entry;
        entry.filePath = session.data.wavFilePath;
        entry.filename = session.data.records.at(token).filename;
        session.data.entries.append(entry);
    }
    return session;
}

void takeAnswer(const QJsonObject &line, JournaledSession &session)
{
    JournaledAnswer answer;
    const qint32 number = line.value("trial"_L1).toInt(); // from 1 on
    answer.token = line.value("token"_L1).toInt(-1);
    const auto stimulus = categoryOfWord(line.value("stim"_L1).toString());
    const auto response = categoryOfWord(line.value("resp"_L1).toString());
    if (number < 1 || number > session.data.entries.size() || answer.token < 0 ||
        answer.token >= session.data.records.size() || !stimulus || !response)
        return;
    answer.trial = number - 1;
    answer.entry = session.data.entries.at(answer.trial);
    answer.entry.filename = line.value("filename"_L1).toString();
    scoreAnswer(answer.entry, session.data.records[answer.token], *stimulus, *response,
                line.value("rt"_L1).toDouble());
    session.data.entries[answer.trial] = answer.entry;
    answer.presentation = line.value("presentation"_L1).toObject();
    session.answers.append(answer);
}

void formAllMeans(Data &data)
{
    for (Record &record : data.records)
        formMeans(record, data.subCode);
}

void takeEnd(const QJsonObject &line, JournaledSession &session)
{
    const QString word = line.value("end"_L1).toString();
    for (const SessionEnd end : {SessionEnd::Finished, SessionEnd::BrokenOff, SessionEnd::Quit}) {
        if (sessionEndWord(end) == word)
            session.end = end;
    }
    if (word == sessionEndWord(SessionEnd::Finished)) {
        parametersFromJson(line.value("parameters"_L1).toObject(), session.data);
        formAllMeans(session.data);
    }
}

void takeSave(const QJsonObject &line, JournaledSession &session)
{
    QList<SavedFile> files;
    const QJsonArray list = line.value("files"_L1).toArray();
    for (const auto &file : list)
        files.append({file["path"_L1].toString(), file["sha256"_L1].toString().toLatin1()});
    session.saves.append(files);
}

void takeLine(const QJsonObject &line, JournaledSession &session)
{
    const QString type = line.value("type"_L1).toString();
    if (type == "answer"_L1)
        takeAnswer(line, session);
    else if (type == "end"_L1)
        takeEnd(line, session);
    else if (type == "save"_L1)
        takeSave(line, session);
}

/// Removes the entries behind the last one that was answered.
void removeUnanswered(JournaledSession &session)
{
    qsizetype nEntries = 0;
    for (const JournaledAnswer &answer : std::as_const(session.answers))
        nEntries = std::max<qsizetype>(nEntries, answer.trial + 1);
    session.data.entries.resize(nEntries);
}

} // namespace

QString sessionEndWord(SessionEnd end)
{
    switch (end) {
    case SessionEnd::Finished:
        return u"finished"_s;
    case SessionEnd::BrokenOff:
        return u"broken off"_s;
    case SessionEnd::Quit:
        break;
    }
    return u"quit"_s;
}

QString journalFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + u"/sessions"_s;
}

/// The file of one journal. One thread calls add(), and another synchronise().
class Journal::File
{
public:
    File(QString folder, const QDateTime &started, Synchronise synchronise)
        : m_folder(std::move(folder))
        , m_name(started.toString(u"yyyyMMdd-HHmmss-zzz"_s))
        , m_synchronise(std::move(synchronise))
    {
    }

    /// Writes @p line, after those before it that are still missing.
    void add(const QJsonObject &line)
    {
        m_unwritten += QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
        if (!m_file.isOpen() && !create()) {
            warn(m_file.errorString());
            return;
        }
        const qint64 written = m_file.write(m_unwritten);
        if (written > 0)
            m_unwritten.remove(0, written);
        if (!m_unwritten.isEmpty())
            warn(m_file.errorString());
        m_isSynchronised = false;
    }

    /// Waits until everything that has been written is on the disk. Lines that waited for a slow
    /// disk share one synchronisation: with one for each they would fall further behind with every
    /// answer.
    void synchronise()
    {
        if (m_isSynchronised.exchange(true))
            return;
        if (m_isNew.exchange(false))
            synchroniseFolder(m_folder, m_synchronise);
        if (!m_synchronise(m_descriptor))
            warn(u"it cannot be synchronised"_s);
    }

private:
    bool create()
    {
        QDir().mkpath(m_folder);
        for (int copy = 1; copy < 100; ++copy) {
            const QString number = copy == 1 ? QString() : u"_%1"_s.arg(copy);
            m_file.setFileName(QDir(m_folder).filePath(m_name + number + u".jsonl"_s));
            // Only the user may read the participants' answers.
            if (m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                            QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
                m_descriptor = m_file.handle();
                return true;
            }
            if (!m_file.exists())
                break;
        }
        return false;
    }

    void warn(const QString &why)
    {
        if (!m_warned.exchange(true))
            qWarning().noquote() << "The journal of this session cannot be written to"
                                 << QDir(m_folder).filePath(m_name) << "-" << why;
    }

    QString m_folder;
    QString m_name;
    Synchronise m_synchronise;
    QFile m_file;
    QByteArray m_unwritten;
    std::atomic<int> m_descriptor = -1;
    std::atomic<bool> m_isNew = true;
    std::atomic<bool> m_isSynchronised = true;
    std::atomic<bool> m_warned = false;
};

Journal::Journal(const QString &folder)
    : Journal(folder, synchroniseFile)
{
}

Journal::Journal(const QString &folder, const Synchronise &synchronise)
    : m_folder(folder)
    , m_synchronise(synchronise)
{
    for (QThreadPool *pool : {&m_writer, &m_synchroniser}) {
        pool->setMaxThreadCount(1);
        pool->setExpiryTimeout(-1);
    }
}

void Journal::begin(const Data &data, const QList<qint32> &order, const QString &output)
{
    if (m_session != nullptr)
        return;
    m_finished = false;
    const QDateTime started = QDateTime::currentDateTimeUtc();
    m_session = std::make_shared<File>(m_folder, started, m_synchronise);
    write(m_session, [=] { return headLine(data, order, output, started); });
}

void Journal::answer(const JournaledAnswer &answer)
{
    write(m_session, [=] { return answerLine(answer); });
}

void Journal::finish(const Data &data)
{
    m_finished = true;
    write(m_session, [=] {
        QJsonObject line = endLine(SessionEnd::Finished);
        line.insert("parameters"_L1, parametersToJson(data));
        return line;
    });
}

void Journal::save(const Session &session, const QList<SavedFile> &files)
{
    write(session, [=] { return saveLine(files); });
}

void Journal::close(SessionEnd end)
{
    if (!m_finished)
        write(m_session, [=] { return endLine(end); });
    m_session.reset();
}

/// Makes the threads form @p line, add it to @p session, unless that is null, and synchronise that.
void Journal::write(const Session &session, const std::function<QJsonObject()> &line)
{
    if (session == nullptr)
        return;
    m_writer.start([this, file = session, line] {
        file->add(line());
        m_synchroniser.start([file] { file->synchronise(); });
    });
}

std::optional<JournaledSession> readJournal(const QByteArray &journal)
{
    std::optional<JournaledSession> session;
    const QList<QByteArray> lines = journal.split('\n');
    for (const QByteArray &text : lines) {
        const QJsonObject line = QJsonDocument::fromJson(text).object();
        if (session)
            takeLine(line, *session);
        else if (line.value("type"_L1) == "session"_L1)
            session = readHead(line);
    }
    if (session && session->end != SessionEnd::Finished) {
        removeUnanswered(*session);
        formAllMeans(session->data);
    }
    return session;
}
