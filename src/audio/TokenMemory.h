// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

#include <optional>
#include <string>

/// The most memory in bytes that the program takes for a token while it reads, transforms, draws
/// and plays it, beside what it had before. The file has @p fileSize bytes and begins with
/// @p header, of which 44 bytes are looked at. 0 for a file that the reader takes no memory for.
qint64 tokenMemory(QByteArrayView header, qint64 fileSize);

/// The same for the file @p path (UTF-8), of which only the header is read. 0 when it cannot be.
qint64 tokenMemory(const std::string &path);

/// How much of tokenMemory() is certainly free for the next token: what is still in use of it when
/// the token has been shown is taken for that one, or given back.
qint64 reusableMemory(qint64 tokenMemory);

/// The memory in bytes that programs can take without swapping, as @p meminfo tells, the text of
/// /proc/meminfo; nothing when it does not tell.
std::optional<qint64> availableMemory(QByteArrayView meminfo);

/// Whether this process can take @p bytes of memory now: the machine has them, and the process may
/// have them. Nothing is taken. True where neither can be told.
bool canTakeMemory(qint64 bytes);
