// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/StreamProgress.h"

#include <algorithm>
#include <ratio>

using namespace std::chrono_literals;

namespace {

/// PipeWire asks for 1024 samples at a time at every period up to that length: a longer block shows
/// the period, this one does not. PulseAudio asks for less.
constexpr qint64 ordinaryBlock = 1024;

/// Before this position the blocks of a stream can be smaller than the others.
constexpr qint64 settledAt = 4096;

/// The delay that is assumed for a period that is not known, 12 ms: for PipeWire where it does not
/// do what requestServerPeriod() asks. Measured against a recording of the monitor, a token is
/// heard 5 ms after the server has taken it at a period of 256 samples, and 20 ms after at 1024.
constexpr qint64 ordinaryPeriod = 576;

/// Steps seen within this time count as one: the server may be in the middle of taking a block when
/// a look is made.
constexpr StreamProgress::Time sameTake = 3ms;

constexpr StreamProgress::Time durationOf(qint64 nSamples)
{
    using Samples = std::chrono::duration<qint64, std::ratio<1, 48000>>;
    return std::chrono::duration_cast<StreamProgress::Time>(Samples(nSamples));
}

} // namespace

qint64 StreamProgress::leadingSilence(qint64 nSamples) const
{
    return (m_block - nSamples % m_block) % m_block;
}

void StreamProgress::start(qint64 tokenEnd, Time now)
{
    m_steps.clear();
    m_tokenEnd = tokenEnd;
    m_taken = 0;
    m_lastLook = now;
    m_firstTakenAt = now;
    m_lastTakenAt = now;
    m_lastTake.reset();
    m_serverDelay = {};
    m_longestBlindness = {};
    m_tokenHeardAt.reset();
}

void StreamProgress::look(Time now, qint64 taken, qint64 played)
{
    if (m_tokenHeardAt)
        return;
    m_longestBlindness = std::max(m_longestBlindness, now - m_lastLook);
    if (taken > m_taken)
        takeTo(taken, now);
    if (taken >= m_tokenEnd && !m_steps.isEmpty()) {
        if (taken >= settledAt)
            m_block = std::min(medianStep(), ordinaryBlock);
        // At the look before this one the last sample had not been taken, so it was heard later.
        const Time byPeriod = now + delay() - durationOf(taken - m_tokenEnd);
        const Time byAccount = now + durationOf(m_tokenEnd - played);
        m_tokenHeardAt = std::max({byPeriod, byAccount, m_lastLook});
    }
    m_lastLook = now;
}

void StreamProgress::takeTo(qint64 taken, Time now)
{
    const qint64 step = taken - m_taken;
    m_steps.insert(std::upper_bound(m_steps.begin(), m_steps.end(), step), step);

    if (m_taken == 0)
        m_firstTakenAt = now;
    m_lastTakenAt = now;
    if (m_lastTake && now - m_lastTake->at <= sameTake) {
        m_lastTake->end = taken;
    } else {
        if (m_lastTake && m_lastTake->begin >= settledAt) {
            const Time due = m_lastTake->at + durationOf(m_lastTake->end - m_lastTake->begin);
            m_serverDelay = std::max(m_serverDelay, m_lastLook - due);
        }
        m_lastTake = {now, m_taken, taken};
    }
    m_taken = taken;
}

StreamProgress::Time StreamProgress::block() const
{
    return durationOf(medianStep());
}

/// How long after the server takes a sample it is heard, by the size of the blocks.
StreamProgress::Time StreamProgress::delay() const
{
    const qint64 median = medianStep();
    if (median > ordinaryBlock)
        return durationOf(median);
    return m_block == ordinaryBlock ? durationOf(ordinaryPeriod) : Time{};
}

/// A look sometimes sees one block in two steps or, when it is late, two blocks in one. A few of
/// those do not change the median.
qint64 StreamProgress::medianStep() const
{
    return m_steps.isEmpty() ? 0 : m_steps.at((m_steps.size() - 1) / 2);
}
