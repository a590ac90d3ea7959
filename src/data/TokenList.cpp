// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/TokenList.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

bool hasTokenSuffix(const QFileInfo &file)
{
    return file.suffix().toLower() == "wav"_L1;
}

LeftOut::Reason reasonOf(const QFileInfo &leftOut)
{
    if (leftOut.isDir())
        return LeftOut::Folder;
    if (!hasTokenSuffix(leftOut))
        return LeftOut::OtherSuffix;
    return leftOut.isFile() ? LeftOut::Hidden : LeftOut::Special;
}

} // namespace

QList<Record> tokensIn(const QString &folder)
{
    QList<Record> tokens;
    const QFileInfoList files = QDir(folder).entryInfoList();
    for (const QFileInfo &file : files) {
        if (!file.isFile() || !hasTokenSuffix(file))
            continue;
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
    const QStringList names = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden |
                                                     QDir::System | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        if (!tokenNames.contains(name))
            result.append({name, reasonOf(QFileInfo(folder, name))});
    }
    return result;
}
