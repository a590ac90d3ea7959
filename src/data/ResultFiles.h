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
    QByteArray
        sha256; ///< of all that was written, in hexadecimal; empty when the file could not be
};

/// Writes the three result files of @p data: the records file to @p recordsPath, which may be empty
/// and then fails like any other that cannot be written, and the other two beside it. @p data gets
/// the paths and names of the files first. @p nPresentations is that of the session as it was
/// planned.
///
/// A file is written beside its place and then takes it, so that a failure leaves a complete older
/// file of that name as it was; in a folder that allows no new files, the older file is overwritten
/// in place. Only a regular file is written to. What goes wrong is told to @p warn, in a text for
/// the operator; the other files are written all the same.
/// @return the records, the entries and the parameters file
QList<SavedFile> writeResultFiles(Data &data, qsizetype nPresentations, const QString &recordsPath,
                                  const std::function<void(const QString &)> &warn);
