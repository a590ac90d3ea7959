// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QTextStream;

/// Writes a header line and a line for each journal in @p folder to @p out, separated by tabs: its
/// name, when the session began (UTC), the subject, the type and number of the session, the number
/// of answers and of presentations, how the session ended, and where it was last saved. A file that
/// is no journal is named in @p errors.
/// @return whether the folder could be read; one that does not exist has no journals
bool listSessions(const QString &folder, QTextStream &out, QTextStream &errors);

/// Writes the three result files of the journal named @p name in @p folder, the records file to
/// @p recordsPath and the others to the same folder. For a session that has finished they are those
/// that the program writes, otherwise those of the answers given. Failures are named in @p errors.
/// @return whether all three were written
bool restoreSession(const QString &folder, const QString &name, const QString &recordsPath,
                    QTextStream &errors);
