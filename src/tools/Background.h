// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/Progress.h"

#include <QObject>
#include <QThread>

#include <atomic>
#include <functional>
#include <memory>

/// Runs a long function in a thread of its own, so that the window stays usable meanwhile. What the
/// function writes may be read after finished().
class Background : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    /// Stops the work and waits for it.
    ~Background() override;
    Q_DISABLE_COPY_MOVE(Background)

    bool isRunning() const { return m_thread != nullptr; }

    /// Starts @p work, which is to call the function that it is given after each step. Must not be
    /// called while work is running.
    void start(const std::function<void(const ProgressFunction &)> &work);

    /// Asks the work to stop; finished() follows.
    void stop() { m_stopped = true; }

signals:
    /// In per cent.
    void progressed(int share);
    void finished();

private:
    std::unique_ptr<QThread> m_thread;
    std::atomic<bool> m_stopped = false;
};
