// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/TokensCommand.h"

#include "data/Data.h"
#include "tools/Progress.h"
#include "tools/TokenReport.h"

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QTextStream>

#include <cstdio>

using namespace Qt::StringLiterals;

CommandResult tokensCommand(const QStringList &arguments)
{
    const Data defaults;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Checks the tokens in a folder: what a session would make of each file, what is wrong "
        u"with "
        "it, and how to cure that. Ends with 1 when there is something to cure."_s);
    parser.addPositionalArgument(u"folder"_s, u"The folder of the tokens."_s, u"FOLDER"_s);
    const QCommandLineOption subjectOption(
        u"subject"_s, u"The subject code, which decides the categories of the tokens."_s, u"CODE"_s,
        defaults.subCode);
    const QCommandLineOption nTimesOption(u"n-times"_s,
                                          u"How many times each token is to be presented."_s,
                                          u"N"_s, QString::number(defaults.nTimes));
    parser.addOptions({subjectOption, nTimesOption});
    if (const std::optional<CommandResult> result = parseArguments(parser, arguments, 1))
        return *result;

    QTextStream errors(stderr);
    bool isNumber = false;
    const int nTimes = parser.value(nTimesOption).toInt(&isNumber);
    if (!isNumber) {
        errors << "\"" << parser.value(nTimesOption) << "\" is not a number of times.\n";
        return CommandResult::CouldNotRun;
    }
    const QString folder = parser.positionalArguments().constFirst();
    if (const QString problem = folderProblem(folder); !problem.isEmpty()) {
        errors << problem << '\n';
        return CommandResult::CouldNotRun;
    }
    FolderCheck check;
    {
        TerminalProgress progress;
        check = checkFolder(folder, parser.value(subjectOption), nTimes, std::ref(progress));
    }
    if (!check.isComplete) {
        errors << "The check has been stopped.\n";
        return CommandResult::CouldNotRun;
    }
    QTextStream out(stdout);
    if (isJsonWanted(parser)) {
        out << QJsonDocument(toJson(check)).toJson();
    } else {
        writeTokenTable(out, check);
        out << '\n';
        for (const QString &sentence : folderSummary(check))
            out << sentence << '\n';
        for (const Finding &finding : std::as_const(check.findings))
            out << tableText(finding.text()) << '\n';
    }
    return check.hasFindings() ? CommandResult::Findings : CommandResult::NothingFound;
}
