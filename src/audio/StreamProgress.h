#pragma once

#include <QtGlobal>

#include <optional>

/// Follows how the sound server takes streams from a sink's buffer, and tells when the token in
/// each has been heard. All lengths and positions are numbers of samples at 48 kHz.
///
/// The server asks for samples block by block, and how much it has taken is known exactly only when
/// it has just asked. A token is therefore preceded by as much silence as makes it end with a
/// block. What has been taken is then heard one period of the server later.
class StreamProgress
{
public:
    /// The silence to play before a token of @p nSamples: less than a block.
    qint64 leadingSilence(qint64 nSamples) const;

    /// A stream starts whose token ends at the position @p tokenEnd.
    void start(qint64 tokenEnd);

    /// Takes how much of the stream the server has @p taken by now; to be called about every
    /// millisecond. Returns how much of the token has still to be heard once the server has taken
    /// all of it, nothing as long as it has not.
    std::optional<qint64> unheard(qint64 taken);

private:
    qint64 m_block = 1024; ///< the smallest seen in a stream; at first that of PipeWire
    bool m_blockSeen = false;
    qint64 m_taken = 0;
    qint64 m_tokenEnd = 0;
};
