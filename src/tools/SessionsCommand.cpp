// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/SessionsCommand.h"

#include "tools/Progress.h"
#include "tools/Sessions.h"

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QTextStream>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

CommandResult list(const QString &folder, bool asJson)
{
    FoundSessions found;
    {
        TerminalProgress progress;
        found = findSessions(folder, std::ref(progress));
    }
    QTextStream out(stdout);
    if (asJson)
        out << QJsonDocument(sessionsToJson(found)).toJson();
    else
        writeSessionTable(out, found.sessions);
    QTextStream errors(stderr);
    for (const QString &problem : std::as_const(found.problems))
        errors << problem << '\n';
    if (!found.isComplete)
        return CommandResult::CouldNotRun;
    const bool isAllWell =
        found.problems.isEmpty() && std::ranges::none_of(found.sessions, needsAttention);
    return isAllWell ? CommandResult::NothingFound : CommandResult::Findings;
}

CommandResult restore(const QString &folder, const QString &name, const QString &recordsPath)
{
    QTextStream errors(stderr);
    const bool done = restoreSession(folder, name, recordsPath,
                                     [&](const QString &warning) { errors << warning << '\n'; });
    return done ? CommandResult::NothingFound : CommandResult::CouldNotRun;
}

/// Asks first: the journal may hold the only copy of the answers. A script can answer by a pipe.
CommandResult remove(const QString &folder, const QString &name)
{
    QTextStream errors(stderr);
    errors << "Delete the journal of the session " << tableText(name)
           << "? Its answers cannot be restored then. Type \"yes\": " << Qt::flush;
    if (QTextStream(stdin).readLine() != "yes"_L1) {
        errors << "Nothing has been deleted.\n";
        return CommandResult::CouldNotRun;
    }
    const QString problem = deleteSession(folder, name);
    if (!problem.isEmpty())
        errors << problem << '\n';
    return problem.isEmpty() ? CommandResult::NothingFound : CommandResult::CouldNotRun;
}

} // namespace

CommandResult sessionsCommand(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Lists this user's sessions: when they began, with whom, how many answers were given, and "
        "whether the result files are still as they were saved. Ends with 1 when answers are in no "
        "such file."_s);
    const QCommandLineOption restoreOption(
        u"restore"_s, u"Write the three result files of this session again."_s, u"ID"_s);
    const QCommandLineOption toOption(
        u"to"_s, u"The records file to write; a file of this name is overwritten."_s, u"FILE"_s);
    const QCommandLineOption deleteOption(
        u"delete"_s, u"Delete the journal of this session, after a question."_s, u"ID"_s);
    parser.addOptions({restoreOption, toOption, deleteOption});
    if (const std::optional<CommandResult> result = parseArguments(parser, arguments, 0))
        return *result;

    const QString folder = journalFolder();
    const bool restores = parser.isSet(restoreOption);
    if (restores != parser.isSet(toOption) || (restores && parser.isSet(deleteOption))) {
        QTextStream(stderr) << parser.helpText();
        return CommandResult::CouldNotRun;
    }
    if (restores)
        return restore(folder, parser.value(restoreOption), parser.value(toOption));
    if (parser.isSet(deleteOption))
        return remove(folder, parser.value(deleteOption));
    return list(folder, isJsonWanted(parser));
}
