// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QCommandLineParser;

/// What a command of the companion tells its caller, as its exit status.
enum class CommandResult {
    NothingFound = 0, ///< done, and all is well
    Findings = 1,     ///< done, and something needs attention
    CouldNotRun = 2,  ///< not done
};

/// Lets @p parser read @p arguments, the name of the command first, and adds "--help", "--version"
/// and "--json" to its options. When the user asks for help or the version, or has made a mistake,
/// tells that and returns the result with which the command ends; otherwise returns nothing.
/// @p nPositional is the number of arguments that the command needs besides its options.
std::optional<CommandResult> parseArguments(QCommandLineParser &parser,
                                            const QStringList &arguments, qsizetype nPositional);

/// Whether @p parser, which has been used by parseArguments(), has found "--json".
bool isJsonWanted(const QCommandLineParser &parser);

/// @p text as a field of a table: a tab, a line break or another control character, which would
/// break the table, is shown as "\t", "\n" or "\x1b".
QString tableText(const QString &text);
