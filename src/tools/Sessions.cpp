// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Sessions.h"

#include "data/ResultFiles.h"
#include "tools/Command.h"
#include "tools/ContentHash.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QTextStream>

#include <algorithm>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto journalSuffix = ".jsonl"_L1;
constexpr qsizetype nResultFiles = 3;

std::optional<JournaledSession> readJournalFile(const QString &path)
{
    QFile file(path);
    // A pipe is not opened: that would wait for its writer.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return readJournal(file.readAll());
}

/// The path of the journal @p name in @p folder. A name with a folder in it, which could lead to
/// another one, gives the path of no file.
QString journalPath(const QString &folder, const QString &name)
{
    return name.contains(u'/') ? QString() : QDir(folder).filePath(name + journalSuffix);
}

QString notAJournal(const QString &folder, const QString &name)
{
    return u"There is no journal named %1 in %2, or it cannot be read."_s.arg(name, folder);
}

/// The files of the last save of @p session that wrote one, without those that failed.
QList<SavedFile> lastSaved(const JournaledSession &session)
{
    QList<SavedFile> saved;
    for (const QList<SavedFile> &files : session.saves) {
        QList<SavedFile> written;
        for (const SavedFile &file : files) {
            if (!file.sha256.isEmpty())
                written.append(file);
        }
        if (!written.isEmpty())
            saved = written;
    }
    return saved;
}

/// The name of the last of @p later that was saved to @p path; empty when none was.
QString lastSavedTo(const QString &path, std::span<const FoundSession> later)
{
    QString name;
    for (const FoundSession &found : later) {
        for (const QList<SavedFile> &files : found.session.saves) {
            for (const SavedFile &file : files) {
                if (file.path == path && !file.sha256.isEmpty())
                    name = found.name;
            }
        }
    }
    return name;
}

SavedFileNow savedFileNow(const SavedFile &saved, std::span<const FoundSession> later)
{
    using State = SavedFileNow::State;
    const QByteArray hash = contentHash(saved.path);
    if (hash == saved.sha256)
        return {saved.path, State::Unchanged, {}};
    const QString by = lastSavedTo(saved.path, later);
    if (!by.isEmpty())
        return {saved.path, State::Overwritten, by};
    return {saved.path, hash.isEmpty() ? State::Gone : State::Changed, {}};
}

bool isUnchanged(const SavedFileNow &file)
{
    return file.state == SavedFileNow::State::Unchanged;
}

QJsonObject toJson(const FoundSession &found)
{
    const JournaledSession &session = found.session;
    QJsonArray answers;
    for (const JournaledAnswer &answer : session.answers) {
        answers.append(QJsonObject{{"trial"_L1, answer.trial + 1},
                                   {"filename"_L1, answer.entry.filename},
                                   {"stim"_L1, answer.entry.stim},
                                   {"resp"_L1, answer.entry.resp},
                                   {"correctness"_L1, answer.entry.correctness},
                                   {"rt"_L1, answer.entry.rt},
                                   {"presentation"_L1, answer.presentation}});
    }
    QJsonArray files;
    for (const SavedFileNow &file : found.files) {
        files.append(QJsonObject{{"path"_L1, file.path}, {"state"_L1, stateText(file)}});
    }
    return {{"session"_L1, found.name},
            {"started"_L1, session.started.toString(Qt::ISODate)},
            {"subject"_L1, session.data.subCode},
            {"type"_L1, typeText(session)},
            {"number"_L1, session.data.sesNum},
            {"presentations"_L1, session.order.size()},
            {"answers"_L1, answers},
            {"end"_L1, endText(session)},
            {"files"_L1, files},
            {"needsAttention"_L1, needsAttention(found)}};
}

} // namespace

FoundSessions findSessions(const QString &folder, const ProgressFunction &progress)
{
    FoundSessions found;
    const QDir journals(folder);
    if (journals.exists() && !journals.isReadable()) {
        found.problems.append(u"The folder %1 cannot be read."_s.arg(folder));
        found.isComplete = false;
    }
    const QFileInfoList files =
        journals.entryInfoList({u'*' + journalSuffix}, QDir::Files, QDir::Name);
    for (qsizetype i = 0; i < files.size() && found.isComplete; ++i) {
        found.isComplete = progress(i, files.size());
        std::optional<JournaledSession> session = readJournalFile(files.at(i).filePath());
        if (session)
            found.sessions.append({files.at(i).completeBaseName(), *std::move(session), {}});
        else
            found.problems.append(
                u"%1 is not a journal, or cannot be read."_s.arg(files.at(i).filePath()));
    }
    std::ranges::stable_sort(found.sessions, {},
                             [](const FoundSession &one) { return one.session.started; });
    std::span<FoundSession> later(found.sessions);
    while (!later.empty()) {
        FoundSession &first = later.front();
        later = later.subspan(1);
        for (const SavedFile &saved : lastSaved(first.session))
            first.files.append(savedFileNow(saved, later));
    }
    return found;
}

bool needsAttention(const FoundSession &found)
{
    const bool areAllThere =
        found.files.size() == nResultFiles && std::ranges::all_of(found.files, isUnchanged);
    return found.session.data.saveData && !found.session.answers.isEmpty() && !areAllThere;
}

QString typeText(const JournaledSession &session)
{
    return session.data.sesTypeNames.value(session.data.sesTypeIndex);
}

QString endText(const JournaledSession &session)
{
    return session.end ? sessionEndWord(*session.end) : u"stopped"_s;
}

QString stateText(const SavedFileNow &file)
{
    switch (file.state) {
    case SavedFileNow::State::Unchanged:
        return u"unchanged"_s;
    case SavedFileNow::State::Changed:
        return u"changed"_s;
    case SavedFileNow::State::Overwritten:
        return u"overwritten by %1"_s.arg(file.overwrittenBy);
    case SavedFileNow::State::Gone:
        break;
    }
    return u"gone"_s;
}

QString filesText(const QList<SavedFileNow> &files)
{
    if (files.isEmpty())
        return u"not saved"_s;
    QStringList changes;
    if (files.size() < nResultFiles)
        changes.append(u"only %1 of %2 saved"_s.arg(files.size()).arg(nResultFiles));
    for (const SavedFileNow &file : files) {
        if (!isUnchanged(file))
            changes.append(QFileInfo(file.path).fileName() + u' ' + stateText(file));
    }
    return changes.isEmpty() ? u"unchanged"_s : changes.join(u", "_s);
}

void writeSessionTable(QTextStream &out, const QList<FoundSession> &sessions)
{
    out << "session\tstarted\tsubject\ttype\tnumber\tanswers\tend\tsaved\tfiles\n";
    for (const FoundSession &found : sessions) {
        const JournaledSession &session = found.session;
        const QString saved = found.files.isEmpty() ? QString() : found.files.first().path;
        out << tableText(found.name) << '\t' << session.started.toString(Qt::ISODate) << '\t'
            << tableText(session.data.subCode) << '\t' << tableText(typeText(session)) << '\t'
            << session.data.sesNum << '\t' << session.answers.size() << " of "
            << session.order.size() << '\t' << endText(session) << '\t' << tableText(saved) << '\t'
            << tableText(filesText(found.files)) << '\n';
    }
}

QJsonObject sessionsToJson(const FoundSessions &found)
{
    QJsonArray sessions;
    for (const FoundSession &session : found.sessions)
        sessions.append(toJson(session));
    return {{"sessions"_L1, sessions},
            {"problems"_L1, QJsonArray::fromStringList(found.problems)},
            {"isComplete"_L1, found.isComplete}};
}

bool restoreSession(const QString &folder, const QString &name, const QString &recordsPath,
                    const std::function<void(const QString &)> &warn)
{
    std::optional<JournaledSession> session = readJournalFile(journalPath(folder, name));
    if (!session) {
        warn(notAJournal(folder, name));
        return false;
    }
    bool allWritten = true;
    writeResultFiles(session->data, session->order.size(), recordsPath,
                     [&](const QString &warning) {
                         warn(warning);
                         allWritten = false;
                     });
    return allWritten;
}

QString deleteSession(const QString &folder, const QString &name)
{
    QFile journal(journalPath(folder, name));
    if (!QFileInfo(journal.fileName()).isFile())
        return notAJournal(folder, name);
    if (!journal.remove())
        return u"%1 cannot be deleted: %2."_s.arg(journal.fileName(), journal.errorString());
    return {};
}
