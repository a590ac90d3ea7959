// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// The SHA-256 of the content of the file @p path in hexadecimal; empty when it cannot be read.
/// What is neither a regular file nor a link to one cannot: a pipe could wait for ever.
QByteArray contentHash(const QString &path);
