// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/Progress.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 firstShown = 1000; ///< ms; a shorter command shows no bar
constexpr qint64 interval = 100;    ///< ms between two bars
constexpr int barWidth = 40;

volatile std::sig_atomic_t stopped = 0;

void stop(int)
{
    stopped = 1;
}

} // namespace

QString progressBar(qsizetype done, qsizetype all, int width)
{
    const double share =
        all > 0 ? std::clamp(static_cast<double>(done) / static_cast<double>(all), 0.0, 1.0) : 0.0;
    const int filled = static_cast<int>(share * width);
    return u"[%1] %2 %"_s.arg(QString(filled, u'#').leftJustified(width))
        .arg(static_cast<int>(share * 100), 3);
}

TerminalProgress::TerminalProgress()
    : m_errors(stderr)
    , m_isTerminal(isatty(STDERR_FILENO) != 0)
{
    stopped = 0;
    std::signal(SIGINT, stop);
    std::signal(SIGTERM, stop);
    m_time.start();
}

TerminalProgress::~TerminalProgress()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    if (m_shownAt > 0)
        m_errors << "\r\x1b[K" << Qt::flush; // to the start of the line, and erase it
}

bool TerminalProgress::operator()(qsizetype done, qsizetype all)
{
    const qint64 now = m_time.elapsed();
    if (m_isTerminal && now >= firstShown && now - m_shownAt >= interval) {
        m_errors << '\r' << progressBar(done, all, barWidth) << Qt::flush;
        m_shownAt = now;
    }
    return !isStopped();
}

bool TerminalProgress::isStopped()
{
    return stopped != 0;
}
