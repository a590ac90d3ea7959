// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>

#include <unistd.h>

/// The memory in bytes that this process occupies.
inline qint64 residentMemory()
{
    QFile file("/proc/self/statm");
    return file.open(QIODevice::ReadOnly)
               ? file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE)
               : 0;
}
