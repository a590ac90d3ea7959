// SPDX-License-Identifier: GPL-3.0-or-later
// A plug-in of Qt that any Qt program loads as it is, when QT_QPA_GENERIC_PLUGINS names it: notes
// when the program has painted its first window and what memory it occupies then, and ends it.
//
// Prints a line to the standard output: the time of the monotonic clock in nanoseconds, the
// resident memory in bytes, and the part of it that belongs to no file.

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QGenericPlugin>
#include <QMainWindow>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

/// The value of @p name in /proc/self/status, in bytes.
long long statusValue(const QByteArray &name)
{
    QFile file("/proc/self/status");
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).simplified().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}

[[noreturn]] void report()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    std::printf("%lld %lld %lld\n", static_cast<long long>(std::chrono::nanoseconds(now).count()),
                statusValue("VmRSS"), statusValue("RssAnon"));
    std::fflush(stdout);
    std::_Exit(EXIT_SUCCESS);
}

class StartProbe : public QObject
{
public:
    StartProbe() { QCoreApplication::instance()->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        // The window is painted, and its picture handed to the display, within one event; what is
        // posted now comes after that.
        if (event->type() == QEvent::Paint && qobject_cast<QMainWindow *>(watched) != nullptr)
            QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
        return false;
    }

protected:
    void customEvent(QEvent * /*event*/) override { report(); }
};

} // namespace

class StartProbePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "start_probe.json")

public:
    QObject *create(const QString & /*key*/, const QString & /*parameters*/) override
    {
        return new StartProbe;
    }
};

#include "StartProbe.moc"
