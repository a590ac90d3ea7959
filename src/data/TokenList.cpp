// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/TokenList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

bool hasTokenSuffix(const QFileInfo &file)
{
    return file.suffix().toLower() == "wav"_L1;
}

bool isNoToken(const QFileInfo &file)
{
    return !file.isFile() || !hasTokenSuffix(file);
}

/// The name of an entry of a folder.
struct EntryName
{
    QString text;     ///< with U+FFFD for what is not UTF-8
    bool isDecodable; ///< otherwise Qt cannot find the file by the text
};

/// The names of all entries of @p folder as the system lists them, without "." and "..".
QList<EntryName> entryNames(const QString &folder)
{
    QList<EntryName> names;
    std::error_code error;
    const std::filesystem::path path = QFile::encodeName(QDir(folder).path()).toStdString();
    std::filesystem::directory_iterator entry(path, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const QByteArray name = QByteArray::fromStdString(entry->path().filename().string());
        const QString text = QFile::decodeName(name);
        names.append({text, QFile::encodeName(text) == name});
    }
    return names;
}

bool comesFirst(const QString &one, const QString &other)
{
    return one.compare(other, Qt::CaseInsensitive) < 0;
}

LeftOut::Reason reasonOf(const QString &folder, const EntryName &name)
{
    const QFileInfo file(folder, name.text);
    if (file.isDir())
        return LeftOut::Folder;
    if (!hasTokenSuffix(file))
        return LeftOut::OtherSuffix;
    if (!name.isDecodable)
        return LeftOut::Undecodable;
    return file.isFile() ? LeftOut::Hidden : LeftOut::Special;
}

} // namespace

QList<Record> tokensIn(const QString &folder)
{
    QFileInfoList files = QDir(folder).entryInfoList();
    files.removeIf(isNoToken);

    // Newer versions of Qt stop at the first name that is not UTF-8, and leave out what the system
    // lists after it.
    QSet<QString> listed;
    for (const QFileInfo &file : std::as_const(files))
        listed.insert(file.fileName());
    const auto nListed = files.size();
    const QList<EntryName> names = entryNames(folder);
    for (const EntryName &name : names) {
        const QFileInfo file(QDir(folder), name.text);
        if (name.isDecodable && !name.text.startsWith(u'.') && !listed.contains(name.text) &&
            !isNoToken(file))
            files.append(file);
    }
    if (files.size() > nListed)
        std::ranges::sort(files, comesFirst, &QFileInfo::fileName);

    QList<Record> tokens;
    for (const QFileInfo &file : std::as_const(files)) {
        Record token;
        token.filePath = folder;
        token.filename = file.fileName();
        tokens.append(token);
    }
    return tokens;
}

QList<LeftOut> leftOutOf(const QString &folder, const QList<Record> &tokens)
{
    QSet<QString> tokenNames;
    for (const Record &token : tokens)
        tokenNames.insert(token.filename);
    QList<LeftOut> result;
    QList<EntryName> names = entryNames(folder);
    std::ranges::sort(names, comesFirst, &EntryName::text);
    for (const EntryName &name : std::as_const(names)) {
        if (!tokenNames.contains(name.text))
            result.append({name.text, reasonOf(folder, name)});
    }
    return result;
}
