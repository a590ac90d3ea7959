// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <vector>

/// What an output plays, recorded by a process of its own, which nothing that the test does delays.
class Recording
{
public:
    /// Records the virtual output @p sink.
    explicit Recording(const QString &sink = "out");

    ~Recording();

    /// Waits until sound data arrive: what is played before that is not recorded.
    bool isRunning() const;

    /// All that has been recorded, @p settle ms after now: the monitor is late by its latency.
    std::vector<float> samples(int settle = 300) const;

private:
    QString path() const { return m_folder.filePath("recording"); }

    QTemporaryDir m_folder;
    QProcess m_process;
};
