#include "audio/StreamProgress.h"

#include <algorithm>

namespace {

/// PipeWire asks for 1024 samples at a time as long as its period is not longer than that, so a
/// longer block tells the period, and this one does not.
constexpr qint64 ordinaryBlock = 1024;

/// The delay for a period that is not known, 12 ms. Measured against the recorded monitor, a token
/// has been heard 5 ms after the server has taken it when the period is 256 samples, and 20 ms
/// after when it is 1024.
constexpr qint64 ordinaryPeriod = 576;

} // namespace

qint64 StreamProgress::leadingSilence(qint64 nSamples) const
{
    const qint64 block = std::min(m_block, ordinaryBlock);
    return (block - nSamples % block) % block;
}

void StreamProgress::start(qint64 tokenEnd)
{
    m_blockSeen = false;
    m_taken = 0;
    m_tokenEnd = tokenEnd;
}

std::optional<qint64> StreamProgress::unheard(qint64 taken)
{
    if (taken > m_taken) {
        // Two blocks between two looks are no longer block: the smallest is right.
        const qint64 block = taken - m_taken;
        m_block = m_blockSeen ? std::min(m_block, block) : block;
        m_blockSeen = true;
        m_taken = taken;
    }
    if (taken < m_tokenEnd)
        return std::nullopt;
    const qint64 period = m_block > ordinaryBlock ? m_block : ordinaryPeriod;
    return std::max<qint64>(period - (taken - m_tokenEnd), 0);
}
