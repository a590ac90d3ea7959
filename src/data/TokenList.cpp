// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/TokenList.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

QList<Record> tokensIn(const QString &folder)
{
    QList<Record> tokens;
    const QFileInfoList files = QDir(folder).entryInfoList();
    for (const QFileInfo &file : files) {
        if (!file.isFile() || file.suffix().toLower() != "wav"_L1)
            continue;
        Record token;
        token.filePath = folder;
        token.filename = file.fileName();
        tokens.append(token);
    }
    return tokens;
}
