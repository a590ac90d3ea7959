// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include <chrono>
#include <optional>

/// The silence to play after a token. It counts neither in the token's duration nor in its plots.
///
/// What a sink does at the end of its source differs by Qt version, and each version loses some
/// sound; the silence keeps that away from the token. Measured against a recording, with PipeWire
/// at the period that it chooses itself:
/// - 6.4.2 is idle when the source has been read, and stop() discards up to a buffer: 56 to 64 % of
///   a token of 250 ms were heard.
/// - 6.8.2 plays the last partial block after a gap, and never ended a token of 20 ms.
/// - 6.11.2 loses the last partial period; 12 ms of silence are enough only if that is shorter.
///
/// With half a second of silence all three play every token whole, and StreamProgress finds its end
/// equally well, to a few milliseconds; what is left of the silence is then discarded. The silence
/// is so long that a stream does not run out of samples when the program is held up for a moment at
/// the token's end.
constexpr std::chrono::microseconds trailingSilence = std::chrono::milliseconds(500);

/// Watches how the sound server takes streams from a sink's buffer, and computes when the token in
/// each has been heard. Lengths and positions are numbers of samples at 48 kHz; times are those of
/// a clock that never goes back.
///
/// The server asks for samples block by block, and how much it has taken is known exactly only when
/// it has just asked. A token is therefore preceded by enough silence to make it end with a block.
/// A sample is heard one period of the server after the server has taken it. If a sound card adds
/// more delay, the server's own account of what it has played includes that. PulseAudio has no
/// period; only its account is used.
class StreamProgress
{
public:
    using Time = std::chrono::nanoseconds;

    /// The silence to play before a token of @p nSamples: less than a block.
    qint64 leadingSilence(qint64 nSamples) const;

    /// Starts to watch a stream that was started at @p now and whose token ends at @p tokenEnd.
    void start(qint64 tokenEnd, Time now);

    /// Notes that by @p now the server has taken @p taken samples of the stream and says that it
    /// has played @p played. To be called about every millisecond until the token's end is known;
    /// later calls change nothing.
    void look(Time now, qint64 taken, qint64 played);

    /// When the token is heard. That may lie in the future, normally by one period of the server at
    /// most, or in the past if the look that saw its end taken was late. No value before the server
    /// has taken all of it.
    std::optional<Time> tokenHeardAt() const { return m_tokenHeardAt; }

    /// How much of the stream had been taken at the last look.
    qint64 taken() const { return m_taken; }

    /// When a look saw that the server had taken the first and the latest samples; the start of the
    /// stream before the server has taken any.
    Time firstTakenAt() const { return m_firstTakenAt; }
    Time lastTakenAt() const { return m_lastTakenAt; }

    /// The duration of what the server takes at a time.
    Time block() const;

    /// How late the server was, at worst, in taking its next block, as far as the looks prove it:
    /// what may have happened between two of them does not count.
    Time serverDelay() const { return m_serverDelay; }

    /// The longest time between two looks. A shorter delay of the server may have gone unseen.
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
