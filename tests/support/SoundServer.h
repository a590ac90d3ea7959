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

    /// Kills what the server consists of without giving it a chance to say goodbye; false when
    /// there is nothing to kill.
    bool kill();

    /// Lets it stand still, or go on.
    bool pause(bool paused);

    /// Starts it anew, with the virtual output "out" as the default.
    bool start();

    bool addOutput(const QString &name);
    bool setDefaultOutput(const QString &name);
    bool suspendOutput(const QString &name, bool suspended);
    bool isSuspended(const QString &name) const;

    /// Lets other programs' streams, and those of this one that ask for nothing, play by periods of
    /// @p nSamples.
    bool setPeriod(int nSamples);

    /// How many streams that play ask for a period of 2048 samples.
    int nStreamsWithPeriod() const;

    /// How many connections to the server this process has.
    int nConnections() const;

private:
    std::vector<std::unique_ptr<QProcess>> m_started;
};
