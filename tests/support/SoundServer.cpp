// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SoundServer.h"

#include "timing/OtherPrograms.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <optional>
#include <unistd.h>

namespace {

constexpr int longestWait = 10000; // ms

/// In the order in which they start.
const QList<QByteArray> serverNames = {"pipewire", "wireplumber", "pipewire-pulse"};

/// What @p program answers, or nothing when it fails.
std::optional<QByteArray> answer(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(longestWait) || process.exitCode() != 0)
        return std::nullopt;
    return process.readAllStandardOutput().trimmed();
}

std::optional<QByteArray> pactl(const QStringList &arguments)
{
    return answer("pactl", arguments);
}

QByteArray statusField(const QByteArray &status, const QByteArray &name)
{
    for (const QByteArray &line : status.split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).trimmed();
    }
    return {};
}

/// The processes of the server among those that this process or its parent has started.
QList<pid_t> serverProcesses()
{
    QList<pid_t> found;
    for (const QString &pid : QDir("/proc").entryList(QDir::Dirs)) {
        QFile file("/proc/" + pid + "/status");
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray status = file.readAll();
        const pid_t parent = statusField(status, "PPid").toInt();
        if (serverNames.contains(statusField(status, "Name")) &&
            (parent == getpid() || parent == getppid()))
            found.append(pid.toInt());
    }
    return found;
}

/// Sends @p number to the whole server; false when it is not complete.
bool signal(int number)
{
    const QList<pid_t> processes = serverProcesses();
    for (const pid_t process : processes)
        ::kill(process, number);
    return processes.size() == serverNames.size();
}

} // namespace

SoundServer::~SoundServer()
{
    // The last started goes first: the others would complain to the log that it has gone.
    for (auto process = m_started.rbegin(); process != m_started.rend(); ++process) {
        (*process)->kill();
        (*process)->waitForFinished();
    }
}

bool SoundServer::kill()
{
    const bool complete = signal(SIGKILL);
    for (const auto &process : m_started)
        process->waitForFinished();
    m_started.clear();
    return complete;
}

bool SoundServer::pause(bool paused)
{
    return signal(paused ? SIGSTOP : SIGCONT);
}

bool SoundServer::start()
{
    const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + "/pipewire-0";
    QFile::remove(socket);
    for (const QByteArray &name : serverNames) {
        m_started.push_back(std::make_unique<QProcess>());
        m_started.back()->setProcessEnvironment(environmentOfOthers());
        m_started.back()->setStandardErrorFile(QProcess::nullDevice());
        m_started.back()->start(name, QStringList());
        if (!QTest::qWaitFor([&] { return QFileInfo::exists(socket); }, longestWait))
            return false;
    }
    return QTest::qWaitFor([] { return pactl({"info"}).has_value(); }, longestWait) &&
           addOutput("out") && setDefaultOutput("out");
}

bool SoundServer::addOutput(const QString &name)
{
    return pactl({"load-module", "module-null-sink", "sink_name=" + name, "rate=48000",
                  "channels=1", "channel_map=mono"})
        .has_value();
}

bool SoundServer::setDefaultOutput(const QString &name)
{
    // Which output is the default is decided by wireplumber, which may still be starting.
    return QTest::qWaitFor(
        [&] {
            pactl({"set-default-sink", name});
            return pactl({"get-default-sink"}) == name.toUtf8();
        },
        longestWait);
}

bool SoundServer::suspendOutput(const QString &name, bool suspended)
{
    return pactl({"suspend-sink", name, suspended ? "1" : "0"}).has_value();
}

bool SoundServer::isSuspended(const QString &name) const
{
    for (const QByteArray &sink :
         pactl({"list", "short", "sinks"}).value_or(QByteArray()).split('\n')) {
        if (sink.contains('\t' + name.toUtf8() + '\t'))
            return sink.endsWith("SUSPENDED");
    }
    return false;
}

bool SoundServer::setPeriod(int nSamples)
{
    const QStringList keys = {"clock.min-quantum", "clock.quantum", "clock.max-quantum"};
    return std::all_of(keys.begin(), keys.end(), [&](const QString &key) {
        return answer("pw-metadata", {"-n", "settings", "0", key, QString::number(nSamples)});
    });
}

int SoundServer::nStreamsWithPeriod() const
{
    const QString streams =
        QString::fromUtf8(pactl({"list", "sink-inputs"}).value_or(QByteArray()));
    const QStringList each = streams.split("Sink Input #");
    return static_cast<int>(std::count_if(each.begin(), each.end(), [](const QString &stream) {
        return stream.contains("node.force-quantum = \"2048\"") && stream.contains("Corked: no");
    }));
}

int SoundServer::nConnections() const
{
    const QByteArray process = "application.process.id = \"" +
                               QByteArray::number(QCoreApplication::applicationPid()) + '"';
    return static_cast<int>(pactl({"list", "clients"}).value_or(QByteArray()).count(process));
}
