// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBuffer>

#include <memory>

class QAudioFormat;
class QAudioSink;

/// A stream of silence on the default output. While it exists, the sound server stays awake and at
/// the period that requestServerPeriod() asks for.
///
/// A server that changes its period at each token loses some of the sound: with PipeWire 1.6 the
/// first 43 ms of each token were missing in a recording, whatever the version of Qt the times of
/// sounds before and after a change differ by up to 60 ms, and an output that has to wake up first
/// begins late. The stream is not fed beyond its first moment: the server fills in silence.
class SilentStream
{
public:
    explicit SilentStream(const QAudioFormat &format);

    /// Ends the stream, during which pending events may be processed.
    ~SilentStream();
    SilentStream(const SilentStream &) = delete;
    SilentStream &operator=(const SilentStream &) = delete;

private:
    QBuffer m_silence;
    std::unique_ptr<QAudioSink> m_sink; ///< reads m_silence
};
