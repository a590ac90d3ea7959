// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/ContentHash.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

QByteArray contentHash(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool isRead =
        QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) && hash.addData(&file);
    return isRead ? hash.result().toHex() : QByteArray();
}
