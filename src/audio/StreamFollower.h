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
        Following, ///< the sound server takes samples, or was asked to less than longestStall ago
        Stalled,   ///< it has taken none for longestStall; it may still go on
        Stopped,   ///< the stream has stopped by itself: its token's end will not be heard
    };

    /// What can be read of a stream at any time, in samples.
    struct Reading
    {
        qint64 taken = 0;     ///< what the server has taken from the sink's buffer
        qint64 played = 0;    ///< what the server says to have played
        bool stopped = false; ///< the sink has stopped; the other two then tell nothing
    };

    using Reader = std::function<Reading()>;
    using Clock = std::function<Time()>;

    /// How long the server may take no samples before the operator is told: longer than one takes
    /// to wake an output up. Qt 6.11 does not tell that the server has died while a token plays.
    static constexpr std::chrono::milliseconds longestStall{5000};

    /// All times will be those of @p clock, which must never go back; without one, the monotonic
    /// clock's.
    explicit StreamFollower(QObject *parent = nullptr, Clock clock = {});

    Time now() const { return m_clock(); }

    State state() const { return m_state; }

    /// What is known of the stream that is followed, or was last.
    const StreamProgress &progress() const { return m_progress; }

    /// A stream has been started whose token ends at the position @p tokenEnd in samples. It is
    /// read by @p reader until the token has been heard, the stream stops, or release().
    void follow(qint64 tokenEnd, Reader reader);

    /// Looks at the stream now: between two looks of the timer's, when something has happened to
    /// it.
    void look();

    /// Forgets the stream; nothing more is signalled of it.
    void release();

signals:
    /// The token has been heard, at most a millisecond ago as far as the program was not held up.
    void tokenHeard();

    /// The server takes no more samples: the state is Stalled or Stopped now, and was Following.
    void stalled();

private:
    void interrupt(State state);

    Clock m_clock;
    Reader m_reader;
    QTimer m_nextLook{this};
    StreamProgress m_progress;
    State m_state = State::Idle;
};
