#include "audio/StreamProgress.h"

#include <algorithm>
#include <limits>

namespace {

/// PipeWire asks for 1024 samples at a time as long as its period is not longer than that: a longer
/// block tells the period, this one does not.
constexpr qint64 ordinaryBlock = 1024;

/// The first blocks of a stream can be smaller than all others.
constexpr qint64 settledAt = 4096;

/// The delay for a period that is not known, 12 ms. Measured against the recorded monitor, a token
/// has been heard 5 ms after the server has taken it when the period is 256 samples, and 20 ms
/// after when it is 1024.
constexpr qint64 ordinaryPeriod = 576;

} // namespace

qint64 StreamProgress::leadingSilence(qint64 nSamples) const
{
    return (m_block - nSamples % m_block) % m_block;
}

void StreamProgress::start(qint64 tokenEnd)
{
    m_leastOnce = std::numeric_limits<qint64>::max();
    m_taken = 0;
    m_tokenEnd = tokenEnd;
}

std::optional<qint64> StreamProgress::unheard(qint64 taken, qint64 played)
{
    if (taken > m_taken) {
        // Two blocks between two looks are no longer block: the smallest is right.
        m_leastOnce = std::min(m_leastOnce, taken - m_taken);
        if (m_taken >= settledAt)
            m_block = std::min(taken - m_taken, ordinaryBlock);
        m_taken = taken;
    }
    if (taken < m_tokenEnd)
        return std::nullopt;
    const qint64 period = m_leastOnce > ordinaryBlock ? m_leastOnce : ordinaryPeriod;
    return std::max({period - (taken - m_tokenEnd), m_tokenEnd - played, qint64{0}});
}
