#pragma once

#include <QList>

#include <chrono>
#include <optional>

/// The silence to play behind a token. It belongs to no figure: not to the token's duration, nor to
/// its plots.
///
/// It keeps all that a sink does at the end of its source away from the token, since that differs
/// by Qt version and loses sound in each. Measured against a recording, PipeWire at the period it
/// chooses by itself:
/// - 6.4.2 is idle when the source has been read, and stop() discards up to a buffer: 56 to 64 % of
///   a token of 250 ms were heard.
/// - 6.8.2 plays the last partial block after a gap, and never ended a token of 20 ms.
/// - 6.11.2 loses the last partial period, of which 12 ms of silence save one that is shorter.
///
/// With half a second of silence all three play every token whole, and StreamProgress tells its end
/// in all three to the same few milliseconds; the silence is then discarded. It is so long that a
/// stream does not run dry when the program is held up for a moment at the token's end.
constexpr std::chrono::microseconds trailingSilence = std::chrono::milliseconds(500);

/// Follows how the sound server takes streams from a sink's buffer, and tells when the token in
/// each has been heard. All lengths and positions are numbers of samples at 48 kHz.
///
/// The server asks for samples block by block, and how much it has taken is known exactly only when
/// it has just asked. A token is therefore preceded by as much silence as makes it end with a
/// block. What has been taken is heard one period of the server later; where a sound card adds more
/// to that, the server's own account of what has been played knows it.
class StreamProgress
{
public:
    /// The silence to play before a token of @p nSamples: less than a block.
    qint64 leadingSilence(qint64 nSamples) const;

    /// A stream starts whose token ends at the position @p tokenEnd.
    void start(qint64 tokenEnd);

    /// Takes how much of the stream the server has @p taken by now, and how much it says to have
    /// @p played; to be called about every millisecond. Returns how long the token has still to be
    /// heard once the server has taken all of it, nothing as long as it has not.
    std::optional<qint64> unheard(qint64 taken, qint64 played);

    /// How much of the stream had been taken at the last look.
    qint64 taken() const { return m_taken; }

private:
    qint64 m_block = 1024; ///< what the server asks for at a time; at first PipeWire's
    QList<qint64> m_steps; ///< what it has taken of this stream between two looks, in any order
    qint64 m_taken = 0;
    qint64 m_tokenEnd = 0;
};
