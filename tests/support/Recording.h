// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <vector>

/// What a virtual output plays.
class Recording
{
public:
    explicit Recording(const QString &sink = "out");
    ~Recording();

    /// Waits until sound data arrive: what is played before that is not recorded.
    bool isRunning();

    /// All that has been recorded, @p settle ms after now: the monitor is late by its latency.
    std::vector<float> samples(int settle = 300);

private:
    QProcess parec;
    QByteArray recorded;
};
