// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Command.h"

#include <QCommandLineParser>
#include <QTextStream>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr auto jsonOption = "json"_L1;

} // namespace

std::optional<CommandResult> parseArguments(QCommandLineParser &parser,
                                            const QStringList &arguments, qsizetype nPositional)
{
    // addHelpOption() would also add "--help-all", which nothing here answers.
    const QCommandLineOption help({u"h"_s, u"help"_s}, u"Displays this help."_s);
    parser.addOption(help);
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOption({jsonOption, u"Print JSON, for scripts."_s});
    // process() would end the program with the status that here stands for findings.
    const bool understood = parser.parse(arguments);
    QTextStream out(stdout);
    QTextStream errors(stderr);
    if (understood && parser.isSet(help)) {
        out << parser.helpText();
        return CommandResult::NothingFound;
    }
    if (understood && parser.isSet(version)) {
        out << "ostrine-tools " << QStringLiteral(OSTRINE_VERSION) << '\n';
        return CommandResult::NothingFound;
    }
    if (!understood) {
        errors << parser.errorText() << '\n';
        return CommandResult::CouldNotRun;
    }
    if (parser.positionalArguments().size() != nPositional) {
        errors << parser.helpText();
        return CommandResult::CouldNotRun;
    }
    return std::nullopt;
}

bool isJsonWanted(const QCommandLineParser &parser)
{
    return parser.isSet(jsonOption);
}

QString tableText(const QString &text)
{
    QString shown;
    for (const QChar character : text) {
        if (character == u'\t')
            shown += "\\t"_L1;
        else if (character == u'\n')
            shown += "\\n"_L1;
        else if (character == u'\r')
            shown += "\\r"_L1;
        else if (character.category() == QChar::Other_Control)
            shown += u"\\x%1"_s.arg(int{character.unicode()}, 2, 16, QChar(u'0'));
        else
            shown += character;
    }
    return shown;
}
