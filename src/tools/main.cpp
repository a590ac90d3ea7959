// SPDX-License-Identifier: GPL-3.0-or-later
// The companion program for the terminal: lists the sessions and restores their result files.

#include "data/Journal.h"
#include "tools/Sessions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    constexpr int couldNotRun = 2;
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"ostrine"_s); // names the folder of the journals
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTRINE_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Lists the journals of Ostrine's sessions, and writes the result "
        "files of a session from its journal."_s);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(u"sessions"_s, u"List the sessions."_s, u"sessions"_s);
    const QCommandLineOption restore(u"restore"_s, u"Restore the session of this name."_s, u"ID"_s);
    const QCommandLineOption to(u"to"_s, u"The records file to write."_s, u"FILE"_s);
    parser.addOptions({restore, to});
    parser.process(application);
    if (parser.positionalArguments() != QStringList{u"sessions"_s} ||
        parser.isSet(restore) != parser.isSet(to))
        parser.showHelp(couldNotRun);

    QTextStream out(stdout);
    QTextStream errors(stderr);
    const QString folder = journalFolder();
    const bool done = parser.isSet(restore)
                          ? restoreSession(folder, parser.value(restore), parser.value(to), errors)
                          : listSessions(folder, out, errors);
    return done ? EXIT_SUCCESS : couldNotRun;
}
