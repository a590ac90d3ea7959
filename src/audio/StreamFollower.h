// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/StreamProgress.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

/// Follows the stream of one token at a time, from its start until the token has been heard, by
/// looking at it every millisecond.
class StreamFollower : public QObject
{
    Q_OBJECT

public:
    using Time = StreamProgress::Time;

    enum class State {
        Idle,      ///< there is no stream, or its token has been heard
        Following, ///< the stream was started or last taken from less than longestStall ago
        Stalled,   ///< the server has taken nothing for longestStall; it may still continue
        Stopped,   ///< the stream has stopped by itself: its token's end will not be heard
    };

    /// What can be read of a stream at any time, in samples.
    struct Reading
    {
        qint64 taken = 0;     ///< what the server has taken from the sink's buffer
        qint64 played = 0;    ///< what the server says it has played
        bool stopped = false; ///< the sink has stopped; the other two then mean nothing
    };

    using Reader = std::function<Reading()>;
    using Clock = std::function<Time()>;

    /// After this time without a sample taken the stream counts as stalled. It is longer than any
    /// server takes to wake up an output. This is needed because Qt 6.11 does not report that the
    /// server has died while a token plays.
    static constexpr std::chrono::milliseconds longestStall{5000};

    /// All times are those of @p clock, which must never go back; without one, those of the
    /// monotonic clock.
    explicit StreamFollower(QObject *parent = nullptr, Clock clock = {});

    Time now() const { return m_clock(); }

    State state() const { return m_state; }

    /// What is known of the stream that is being followed, or of the last one.
    const StreamProgress &progress() const { return m_progress; }

    /// Follows a stream that has just been started, whose token ends at the position @p tokenEnd in
    /// samples. Reads it by @p reader until the token has been heard, the stream has stopped, or
    /// release() is called.
    void follow(qint64 tokenEnd, Reader reader);

    /// Looks at the stream now. To be called when something has happened to it, without waiting for
    /// the timer's next look.
    void look();

    /// Forgets the stream; nothing more is signalled about it.
    void release();

signals:
    /// The token has been heard: at most a millisecond ago, unless the program was held up.
    void tokenHeard();

    /// The server takes no more samples: the state was Following, and is now Stalled or Stopped.
    void stalled();

private:
    void interrupt(State state);

    Clock m_clock;
    Reader m_reader;
    QTimer m_nextLook{this};
    StreamProgress m_progress;
    State m_state = State::Idle;
};
