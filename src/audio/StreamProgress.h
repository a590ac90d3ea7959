// SPDX-License-Identifier: GPL-3.0-or-later
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
/// each has been heard. Lengths and positions are numbers of samples at 48 kHz, times those of a
/// clock that never goes back.
///
/// The server asks for samples block by block, and how much it has taken is known exactly only when
/// it has just asked. A token is therefore preceded by as much silence as makes it end with a
/// block. What has been taken is heard one period of the server later; where a sound card adds more
/// to that, the server's own account of what has been played knows it. PulseAudio has no period,
/// and is taken at its word.
class StreamProgress
{
public:
    using Time = std::chrono::nanoseconds;

    /// The silence to play before a token of @p nSamples: less than a block.
    qint64 leadingSilence(qint64 nSamples) const;

    /// A stream starts at @p now whose token ends at the position @p tokenEnd.
    void start(qint64 tokenEnd, Time now);

    /// Takes how much of the stream the server has @p taken by @p now, and how much it says to have
    /// @p played; to be called about every millisecond until the token's end is known. After that
    /// nothing changes any more.
    void look(Time now, qint64 taken, qint64 played);

    /// When the token has been heard: at most one period of the server ahead, or in the past when
    /// the look that saw it came late. Nothing as long as the server has not taken all of it.
    std::optional<Time> tokenHeardAt() const { return m_tokenHeardAt; }

    /// How much of the stream had been taken at the last look.
    qint64 taken() const { return m_taken; }

    /// When looks saw the server take the first and the last samples so far; the start of the
    /// stream as long as it has taken none.
    Time firstTakenAt() const { return m_firstTakenAt; }
    Time lastTakenAt() const { return m_lastTakenAt; }

    /// How long the server plays what it takes at a time.
    Time block() const;

    /// How late the server was, at the worst, to take its next block. It is what the looks prove:
    /// what may have happened between two of them does not count.
    Time serverDelay() const { return m_serverDelay; }

    /// The longest time between two looks. A delay of the server's that is shorter may have gone
    /// unseen.
    Time longestBlindness() const { return m_longestBlindness; }

private:
    /// A moment at which the server took samples, and their positions.
    struct Take
    {
        Time at;
        qint64 begin;
        qint64 end;
    };

    void takeTo(qint64 taken, Time now);
    qint64 medianStep() const;
    Time delay() const;

    qint64 m_block = 1024; ///< what the server asks for at a time; at first PipeWire's
    qint64 m_tokenEnd = 0;
    qint64 m_taken = 0;
    QList<qint64> m_steps; ///< what it has taken of this stream between two looks, in order of size
    std::optional<Take> m_lastTake;
    Time m_lastLook{};
    Time m_firstTakenAt{};
    Time m_lastTakenAt{};
    Time m_serverDelay{};
    Time m_longestBlindness{};
    std::optional<Time> m_tokenHeardAt;
};
