// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstring>
#include <vector>

/// What an output plays, recorded by a process of its own, which nothing that the test does delays.
class Recording
{
public:
    /// Records the virtual output @p sink.
    explicit Recording(const QString &sink = "out");

    /// Records by @p program, which writes to its standard output until it is ended.
    Recording(const QString &program, const QStringList &arguments);

    ~Recording();

    /// Waits until sound data arrive: what is played before that is not recorded.
    bool isRunning() const;

    /// All that has been recorded, @p settle ms after now: the monitor is late by its latency.
    std::vector<float> samples(int settle = 300) const { return items<float>(settle); }

    /// The same of a program that writes @p Item by Item.
    template<typename Item>
    std::vector<Item> items(int settle) const
    {
        const QByteArray written = bytes(settle);
        std::vector<Item> all(static_cast<size_t>(written.size()) / sizeof(Item));
        std::memcpy(all.data(), written.constData(), all.size() * sizeof(Item));
        return all;
    }

private:
    QString path() const { return m_folder.filePath("recording"); }
    QByteArray bytes(int settle) const;

    QTemporaryDir m_folder;
    QProcess m_process;
};
