// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>

#include <memory>
#include <vector>

/// The sound server of the private session in which a test runs. Only processes that this test, or
/// the script which started it, has started are touched.
class SoundServer
{
public:
    ~SoundServer();

    /// Kills the server's processes, without letting them end properly; false when one was missing.
    bool kill();

    /// Pauses the server, or lets it continue.
    bool pause(bool paused);

    /// Starts the server again, with the virtual output "out" as the default.
    bool start();

    bool addOutput(const QString &name);
    bool setDefaultOutput(const QString &name);
    bool suspendOutput(const QString &name, bool suspended);
    bool isSuspended(const QString &name) const;

    /// Sets the period, in samples, of other programs' streams and of those of this program that
    /// ask for none.
    bool setPeriod(int nSamples);

    /// How many of the streams that play ask for a period of 2048 samples.
    int nStreamsWithPeriod() const;

    /// How many connections to the server this process has.
    int nConnections() const;

private:
    std::vector<std::unique_ptr<QProcess>> m_started;
};
