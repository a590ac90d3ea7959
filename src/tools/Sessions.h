// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QTextStream;

/// Writes a line for each journal in @p folder to @p out, tab-separated under a header line: its
/// name, when the session began (UTC), the subject, the type and number of the session, how many
/// answers were given of how many, how it ended and where it was saved last. A file that is no
/// journal is named in @p errors.
/// @return whether the folder could be read; one that does not exist has no journals
bool listSessions(const QString &folder, QTextStream &out, QTextStream &errors);

/// Writes the three result files of the journal named @p name in @p folder, the records file to
/// @p recordsPath and the others beside it: those of a session that has finished as the program
/// writes them, otherwise those of the answers given. What goes wrong is told in @p errors.
/// @return whether all three were written
bool restoreSession(const QString &folder, const QString &name, const QString &recordsPath,
                    QTextStream &errors);
