// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/ResultFiles.h"

#include "data/Data.h"
#include "data/ResultTables.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// In bytes. QSaveFile adds seven of them to a file's name until the file is complete.
constexpr qsizetype longestName = 255 - 7;

/// Opens a file that replaces @p path when it is complete or, if the folder allows no such file,
/// @p path itself; null when neither can be opened.
std::unique_ptr<QFileDevice> openResultFile(const QString &path)
{
    // A QSaveFile can be opened without a name. Opening a pipe would wait for its reader, and a
    // device would be replaced by a file.
    const QFileInfo info(path);
    if (path.isEmpty() || (info.exists() && !info.isFile()))
        return nullptr;
    constexpr auto mode = QIODevice::WriteOnly | QIODevice::Text;
    auto beside = std::make_unique<QSaveFile>(path);
    if (QFile::encodeName(info.fileName()).size() <= longestName && beside->open(mode))
        return beside;
    auto inPlace = std::make_unique<QFile>(path);
    return inPlace->open(mode) ? std::move(inPlace) : nullptr;
}

/// Completes @p file; returns whether all that was written to it is now in its place.
bool complete(QFileDevice &file)
{
    const bool written = file.flush() && file.error() == QFileDevice::NoError;
    auto *beside = qobject_cast<QSaveFile *>(&file);
    if (beside == nullptr)
        return written;
    if (!written)
        beside->cancelWriting(); // commit() does not notice that the last flush has failed
    return beside->commit();
}

/// Writes the file @p path by @p write. Reports failure to @p warn, where a file that cannot be
/// opened is called @p shownName.
SavedFile writeResultFile(const QString &path, const QString &shownName,
                          const std::function<void(const QString &)> &warn,
                          const std::function<void(QTextStream &)> &write)
{
    const std::unique_ptr<QFileDevice> file = openResultFile(path);
    if (file == nullptr) {
        warn(u"could not open file for writing \r\n"_s + shownName);
        return {path, {}};
    }
    QByteArray text;
    QTextStream stream(&text);
    write(stream);
    stream.flush();
    file->write(text);
    if (!complete(*file)) {
        warn(u"could not write to file \r\n"_s + path);
        return {path, {}};
    }
    return {path, QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex()};
}

} // namespace

QList<SavedFile> writeResultFiles(Data &data, qsizetype nPresentations, const QString &recordsPath,
                                  const std::function<void(const QString &)> &warn)
{
    const QFileInfo recordsFile(recordsPath);
    data.outputFilePath = recordsFile.filePath();
    data.outputFileName = recordsFile.fileName();
    const QDir folder = recordsFile.dir();
    if (!folder.exists()) {
        QDir().mkpath(data.outputFilePath);
        // This has created the folder, and in it another one with the name of the file itself.
        QDir().rmdir(data.outputFilePath);
    }

    QList<SavedFile> files;
    files.append(writeResultFile(
        recordsPath, data.outputFilePath + data.outputFileName, warn,
        [&](QTextStream &stream) { writeRecordsTable(stream, data.records, nPresentations); }));

    data.outputFileName_entries = companionFileName(recordsFile, u"entries"_s);
    files.append(
        writeResultFile(folder.filePath(data.outputFileName_entries),
                        data.outputFilePath + data.outputFileName_entries, warn,
                        [&](QTextStream &stream) { writeEntriesTable(stream, data.entries); }));

    data.outputFileName_parameters = companionFileName(recordsFile, u"parameters"_s);
    files.append(writeResultFile(folder.filePath(data.outputFileName_parameters),
                                 data.outputFilePath + data.outputFileName_parameters, warn,
                                 [&](QTextStream &stream) { writeParameters(stream, data); }));
    return files;
}
