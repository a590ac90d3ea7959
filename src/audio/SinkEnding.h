#pragma once

#include <QVersionNumber>

#include <optional>

/// How a QAudioSink ends a sound, which differs by Qt version.
struct SinkEnding
{
    /// The silence in seconds to play behind a token, so that nothing of the token is lost. It
    /// belongs to no figure: not to the token's duration, nor to its plots.
    double trailingSilence;
    /// Whether the sink is idle as soon as it has read its source, with up to a buffer unplayed
    /// that stop() throws away.
    bool idleBeforePlayed;
};

/// The ending of the sinks of the Qt version @p qt.
SinkEnding sinkEnding(const QVersionNumber &qt);

/// Tells from the free space of a sink's buffer when a token has been heard whole, once the sink
/// has read all of it and of the silence behind it. All sizes are in bytes.
///
/// The sound server takes the buffer's content in blocks. When it has taken the block with the
/// token's last sample, that block is still to be heard, up to where the silence begins.
class BufferDrain
{
public:
    BufferDrain() = default;
    /// @p bufferSize is the size of the sink's buffer, @p silenceSize that of the silence.
    BufferDrain(qint64 bufferSize, qint64 silenceSize);

    /// Takes the buffer's free space as it is now. Returns how much of the token has still to be
    /// heard once the server has taken all of it, nothing as long as it has not.
    std::optional<qint64> unheard(qint64 bytesFree);

private:
    qint64 freeWhenTaken = 0; ///< free space when the token has left the buffer
    qint64 lastFree = -1;
    qint64 lastBlock = 0;
};
