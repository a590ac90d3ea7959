// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

#include <optional>
#include <string>

/// The most memory in bytes that the program needs to read, transform, draw and play a token, in
/// addition to what it had before. The file has @p fileSize bytes and begins with @p header, of
/// which 44 bytes are looked at. 0 for a file for which the reader takes no memory.
qint64 tokenMemory(QByteArrayView header, qint64 fileSize);

/// The same for the file @p path (UTF-8), of which only the header is read; 0 when that fails.
qint64 tokenMemory(const std::string &path);

/// What no token of a file of @p fileSize bytes exceeds, whatever its header says.
qint64 mostTokenMemory(qint64 fileSize);

/// The part of @p tokenMemory that the next token can certainly use again: what a token still holds
/// when it has been shown is used for the next one, or given back.
qint64 reusableMemory(qint64 tokenMemory);

/// The memory in bytes that programs can take without swapping, according to @p meminfo, the text
/// of /proc/meminfo; no value when that does not say.
std::optional<qint64> availableMemory(QByteArrayView meminfo);

/// Whether this process can take @p bytes of memory now: whether the machine has them, and whether
/// the process is allowed to take them. Takes nothing. True where neither can be found out.
bool canTakeMemory(qint64 bytes);
