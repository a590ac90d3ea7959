// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Sessions.h"

#include "data/Journal.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace {

std::optional<JournaledSession> readJournalFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return readJournal(file.readAll());
}

QString lastRecordsFile(const JournaledSession &session)
{
    QString path;
    for (const QList<SavedFile> &files : session.saves) {
        if (!files.isEmpty() && !files.first().sha256.isEmpty())
            path = files.first().path;
    }
    return path;
}

} // namespace

bool listSessions(const QString &folder, QTextStream &out, QTextStream &errors)
{
    const QDir journals(folder);
    if (journals.exists() && !journals.isReadable()) {
        errors << "The folder " << folder << " cannot be read.\n";
        return false;
    }
    out << "session\tstarted\tsubject\ttype\tnumber\tanswers\tend\tsaved\n";
    const QFileInfoList files = journals.entryInfoList({u"*.jsonl"_s}, QDir::Files, QDir::Name);
    for (const QFileInfo &file : files) {
        const std::optional<JournaledSession> session = readJournalFile(file.filePath());
        if (!session) {
            errors << file.filePath() << " is not a journal, or cannot be read.\n";
            continue;
        }
        const Data &data = session->data;
        out << file.completeBaseName() << '\t' << session->started.toString(Qt::ISODate) << '\t'
            << data.subCode << '\t' << data.sesTypeNames.value(data.sesTypeIndex) << '\t'
            << data.sesNum << '\t' << session->answers.size() << " of " << session->order.size()
            << '\t' << (session->end ? sessionEndWord(*session->end) : u"stopped"_s) << '\t'
            << lastRecordsFile(*session) << '\n';
    }
    return true;
}

bool restoreSession(const QString &folder, const QString &name, const QString &recordsPath,
                    QTextStream &errors)
{
    const QString path = QDir(folder).filePath(name + u".jsonl"_s);
    std::optional<JournaledSession> session = readJournalFile(path);
    if (!session) {
        errors << path << " is not a journal, or cannot be read.\n";
        return false;
    }
    bool allWritten = true;
    writeResultFiles(session->data, session->order.size(), recordsPath,
                     [&](const QString &warning) {
                         errors << warning << '\n';
                         allWritten = false;
                     });
    return allWritten;
}
