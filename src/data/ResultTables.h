// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Entry.h"
#include "data/Record.h"

#include <QList>
#include <QString>

class Data;
class QFileInfo;
class QTextStream;

/// The layouts and names of the three result files: tab-separated text, lines ended by LF, numbers
/// as a QTextStream writes them by default.

/// One line per token under a header line; nothing when there are no records. A line ends in LF
/// only where its index is below @p nEntries - 1: with one presentation per token the last line has
/// no LF, with more every line has one.
void writeRecordsTable(QTextStream &stream, const QList<Record> &records, qsizetype nEntries);

/// One line per trial under a header line, LF after every line but the last; nothing when there are
/// no entries.
void writeEntriesTable(QTextStream &stream, const QList<Entry> &entries);

/// One line per parameter: its name, a colon and its value. LF after every line but the last.
void writeParameters(QTextStream &stream, const Data &data);

/// The name proposed for the records file: subject code, session type and session number padded
/// with zeros to three digits, as in "CHD001_practice001.txt".
QString proposedFileName(const Data &data);

/// The name of a file that belongs to @p recordsFile: "a.b.txt" and "entries" give
/// "a.b_entries.txt". A name without a suffix still gets the dot.
QString companionFileName(const QFileInfo &recordsFile, const QString &topic);
