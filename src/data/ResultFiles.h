// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

class Data;

/// One of the result files after a save.
struct SavedFile
{
    QString path;
    QByteArray sha256; ///< of what was written, in hexadecimal; empty when that failed
};

/// Writes the three result files of @p data: the records file to @p recordsPath, and the other two
/// to the same folder. An empty path fails like any other file that cannot be written. Sets the
/// paths and names in @p data to those of the files first. @p nPresentations is the number that the
/// session was planned to have.
///
/// A file is written under another name and renamed when it is complete, so that a failure leaves
/// an older file as it was. In a folder that allows no new files, the older file is overwritten in
/// place. Only regular files are written to. A failure is reported to @p warn, in a text for the
/// operator, and the other files are still written.
/// @return the records, the entries and the parameters file
QList<SavedFile> writeResultFiles(Data &data, qsizetype nPresentations, const QString &recordsPath,
                                  const std::function<void(const QString &)> &warn);
