#pragma once

#include <QVersionNumber>

/// How a QAudioSink ends a sound, which differs by Qt version.
struct SinkEnding
{
    /// The silence in seconds to play behind a token, so that nothing of the token is lost. It
    /// belongs to no figure: not to the token's duration, nor to its plots.
    double trailingSilence;
    /// Whether the sink is idle as soon as it has read its source, with up to a buffer unplayed
    /// that stop() throws away. Its idle state tells nothing then; StreamProgress does.
    bool idleBeforePlayed;
};

/// The ending of the sinks of the Qt version @p qt.
SinkEnding sinkEnding(const QVersionNumber &qt);
