// SPDX-License-Identifier: GPL-3.0-or-later
// The companion program: what decides whether a session is worth anything, outside of the session.

#include "timing/SoundRecorder.h"
#include "tools/SessionsCommand.h"
#include "tools/TimingCommand.h"
#include "tools/TokensCommand.h"
#include "tools/ToolsWindow.h"

#include <QApplication>
#include <QTextStream>

#include <cstdio>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

using Command = CommandResult (*)(const QStringList &arguments);

struct NamedCommand
{
    const char *name;
    const char *description;
    Command command;
    bool usesWindows; ///< without showing one
};

constexpr NamedCommand commands[] = {
    {"tokens", "check the tokens in a folder", tokensCommand, false},
    {"timing", "measure when tokens are heard and when the reaction clock starts", timingCommand,
     true},
    {"sessions", "find, restore and delete the sessions of this user", sessionsCommand, false},
};

void writeHelp(QTextStream &out)
{
    out << "Usage: ostrine-tools [COMMAND [options]]\n\nWithout a command the window opens. "
           "Commands (each has its own --help):\n";
    for (const NamedCommand &command : commands)
        out << "  " << command.name << "  " << command.description << '\n';
}

/// Whether Qt, which ends the program otherwise, has been told where to show a window.
bool hasDisplay()
{
    const auto isSet = [](const char *name) { return !qEnvironmentVariableIsEmpty(name); };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

/// Shows the window until it is closed.
int showWindow(int argc, char *argv[])
{
    if (!hasDisplay()) {
        QTextStream errors(stderr);
        errors << "There is no display to show the window on.\n\n";
        writeHelp(errors);
        return static_cast<int>(CommandResult::CouldNotRun);
    }
    const QApplication application(argc, argv);
    ToolsWindow window;
    window.show();
    return QApplication::exec();
}

/// What a command needs. A terminal need not have a screen.
std::unique_ptr<QCoreApplication> applicationFor(const NamedCommand *command, int &argc,
                                                 char *argv[])
{
    if (command == nullptr || !command->usesWindows)
        return std::make_unique<QCoreApplication>(argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QApplication>(argc, argv);
}

/// Runs the command that the arguments begin with.
int runCommand(int argc, char *argv[])
{
    const NamedCommand *command = nullptr;
    for (const NamedCommand &each : commands) {
        if (qstrcmp(argv[1], each.name) == 0)
            command = &each;
    }
    const std::unique_ptr<QCoreApplication> application = applicationFor(command, argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString word = arguments.value(1);
    if (command != nullptr) {
        QStringList own = arguments.mid(2);
        own.prepend(arguments.constFirst() + u' ' + word);
        return static_cast<int>(command->command(own));
    }
    if (word == "--version"_L1) {
        QTextStream(stdout) << "ostrine-tools " << QStringLiteral(OSTRINE_VERSION) << '\n';
        return EXIT_SUCCESS;
    }
    if (word == "--help"_L1 || word == "-h"_L1) {
        QTextStream out(stdout);
        writeHelp(out);
        return EXIT_SUCCESS;
    }
    QTextStream errors(stderr);
    writeHelp(errors);
    return static_cast<int>(CommandResult::CouldNotRun);
}

} // namespace

int main(int argc, char *argv[])
{
    if (const std::optional<int> status = recorderMain(argc, argv))
        return *status;
    QCoreApplication::setApplicationName(u"ostrine"_s); // names the folder of the journals
    return argc > 1 ? runCommand(argc, argv) : showWindow(argc, argv);
}
