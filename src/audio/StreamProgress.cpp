#include "audio/StreamProgress.h"

#include <algorithm>

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
    m_steps.clear();
    m_taken = 0;
    m_tokenEnd = tokenEnd;
}

std::optional<qint64> StreamProgress::unheard(qint64 taken, qint64 played)
{
    if (taken > m_taken) {
        m_steps.append(taken - m_taken);
        if (m_taken >= settledAt)
            m_block = std::min(taken - m_taken, ordinaryBlock);
        m_taken = taken;
    }
    if (taken < m_tokenEnd || m_steps.isEmpty())
        return std::nullopt;
    // Now and then a look sees one block in two steps, or, late, two blocks in one. The median is
    // that of the others.
    const auto median = m_steps.begin() + (m_steps.size() - 1) / 2;
    std::nth_element(m_steps.begin(), median, m_steps.end());
    const qint64 period = *median > ordinaryBlock ? *median : ordinaryPeriod;
    return std::max({period - (taken - m_tokenEnd), m_tokenEnd - played, qint64{0}});
}
