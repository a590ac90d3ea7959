// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Background.h"

#include <algorithm>

Background::~Background()
{
    if (m_thread == nullptr)
        return;
    m_stopped = true;
    m_thread->wait();
}

void Background::start(const std::function<void(const ProgressFunction &)> &work)
{
    Q_ASSERT(!isRunning());
    m_stopped = false;
    m_thread.reset(QThread::create([this, work] {
        int shown = -1;
        work([this, &shown](qsizetype done, qsizetype all) {
            const int share = static_cast<int>(100 * done / std::max<qsizetype>(all, 1));
            if (share != shown)
                emit progressed(share);
            shown = share;
            return !m_stopped;
        });
    }));
    connect(m_thread.get(), &QThread::finished, this, [this] {
        m_thread->wait();
        m_thread.reset();
        emit finished();
    });
    m_thread->start();
}
